#ifndef PATTERNSTART_H
#define PATTERNSTART_H

#include <QBitArray>
#include <QString>

class ParsedPattern;

// Where a match of a regular expression (QRegExp syntax) can begin in a
// text, worked out from the pattern alone: the characters that can begin a
// non-empty match, whether a match must begin at a word boundary, and where
// a pattern that can match the empty string certainly does. A search can
// then begin at the first place that fits, or be skipped. Where the pattern
// is beyond this simple reading, every position counts as a possible start.
class PatternStart
{
public:
    explicit PatternStart(const QString &pattern);
    explicit PatternStart(const ParsedPattern &pattern);

    // QRegExp's word characters, which decide where \b holds.
    static bool isWordChar(QChar ch)
    {
        const ushort code = ch.unicode();
        if (code < 0x80) {
            return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z')
                || (code >= '0' && code <= '9') || code == '_';
        }
        return isOtherWordChar(ch);
    }
    static bool isWordBoundary(const QString &text, int position)
    {
        const bool before = position > 0 && isWordChar(text.at(position - 1));
        const bool after = position < text.size() && isWordChar(text.at(position));
        return before != after;
    }

    // The first position at or after from where a non-empty match may
    // begin, or -1 when the leftmost match there is none or empty.
    int indexIn(const QString &text, int from) const;

private:
    static bool isOtherWordChar(QChar ch);

    enum class Kind { Unknown, NonEmpty, EmptyAtStart, EmptyAtBoundary };

    Kind kind = Kind::Unknown;
    bool startsAtBoundary = false;
    QBitArray startChars; // by UTF-16 code unit
};

#endif // PATTERNSTART_H
