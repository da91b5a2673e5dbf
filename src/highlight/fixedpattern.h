#ifndef FIXEDPATTERN_H
#define FIXEDPATTERN_H

#include <QString>
#include <QVector>

// A regular expression (QRegExp syntax) that is a fixed sequence of single
// characters, character classes and word-boundary tests, such as "a.b",
// "\b[{()}]\b" or "(p|q)". Its matches all have the same length, so the
// leftmost one is the match whatever rule chooses among alternatives, and
// it can be found by comparing characters instead of running an engine.
class FixedPattern
{
public:
    explicit FixedPattern(const QString &pattern);

    // False when the pattern is not such a sequence.
    bool isValid() const { return valid; }
    int length() const { return matchLength; }
    // Whether a match starts at position.
    bool matchesAt(const QString &text, int position) const;
    // The characters a match can begin with, when there are at most limit
    // of them; otherwise an empty list.
    QVector<QChar> firstChars(int limit) const;

private:
    struct Range
    {
        ushort first;
        ushort last;
    };
    struct Step
    {
        enum Kind { Chars, Boundary, NotBoundary } kind = Chars;
        QVector<Range> ranges;
        bool negated = false;
        bool matches(QChar ch) const;
    };

    bool readSequence(QVector<Step> *steps);
    bool readItem(QVector<Step> *steps);
    bool readClass(Step *step);
    bool atEnd() const { return position >= pattern.size(); }
    QChar next() { return pattern.at(position++); }

    const QString pattern;
    int position = 0;
    QVector<Step> steps;
    int matchLength = 0;
    bool valid = false;
};

#endif // FIXEDPATTERN_H
