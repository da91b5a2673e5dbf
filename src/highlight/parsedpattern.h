#ifndef PARSEDPATTERN_H
#define PARSEDPATTERN_H

#include <QString>
#include <QVector>

// A regular expression (QRegExp syntax) read into its parts once, for the
// highlighter's questions about it: where a match can begin (PatternStart)
// and whether it is a simple sequence of characters (SimplePattern). The
// reading covers characters, classes, ".", the class escapes, \b, \B, ^, $,
// groups, alternatives and quantifiers; a pattern with anything else, such
// as a back reference or a look-ahead, is not valid here.
class ParsedPattern
{
public:
    struct Range
    {
        ushort first;
        ushort last;
    };
    struct Item
    {
        enum Kind {
            Chars,       // a character, or a class of ranges
            AnyChar,     // .
            ClassEscape, // \d \D \s \S \w \W
            Boundary,    // \b
            NotBoundary, // \B
            LineAnchor,  // ^ $
            Group        // ( ) or (?: )
        };
        // What the quantifiers after the item make of it: a lone '*' or
        // '+', or anything else, including more than one quantifier.
        enum Repeat { Once, Star, Plus, OtherRepeat };

        explicit Item(Kind kind = Chars) : kind(kind) { }

        Kind kind;
        QVector<Range> ranges;     // Chars
        bool negated = false;      // Chars: a class such as [^a]
        bool escapedBlank = false; // Chars: "\ " or a class holding one
        int group = 0;             // Group: its index for alternatives()
        Repeat repeat = Once;
        bool optional = false;     // a quantifier lets the item be absent
    };
    using Sequence = QVector<Item>;
    using Alternatives = QVector<Sequence>;

    explicit ParsedPattern(const QString &pattern);

    // False when the pattern has parts beyond this reading.
    bool isValid() const { return valid; }
    // The alternatives of a group; group 0 is the whole pattern.
    const Alternatives &alternatives(int group = 0) const { return groups.at(group); }

private:
    int readAlternatives();
    Sequence readSequence();
    Item readAtom();
    Item readGroup();
    Item readClass();
    Item readEscape();
    void readQuantifiers(Item *item);
    bool readCount(Item *item);
    Item fail();
    bool atEnd() const { return position >= pattern.size(); }
    QChar peek() const { return pattern.at(position); }
    QChar next() { return pattern.at(position++); }

    const QString pattern;
    int position = 0;
    bool failed = false;
    bool valid = false;
    QVector<Alternatives> groups;
};

#endif // PARSEDPATTERN_H
