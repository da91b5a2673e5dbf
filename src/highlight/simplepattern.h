#ifndef SIMPLEPATTERN_H
#define SIMPLEPATTERN_H

#include <QString>
#include <QVector>

// A regular expression (QRegExp syntax) that is a sequence of single
// characters, character classes and word-boundary tests with at most one
// repeated character or class in it, such as "a.b", "\b[{()}]\b", "(p|q)",
// "\b(x+)\b", "\".*\"" or "``[^\n]*". At a given start such a pattern has
// one longest match, which is the match whatever rule an engine uses to
// choose among alternatives, so it can be found by comparing characters.
class SimplePattern
{
public:
    explicit SimplePattern(const QString &pattern);

    // False when the pattern is not such a sequence.
    bool isValid() const { return valid; }
    // The length of the shortest match.
    int minimumLength() const { return shortest; }
    // The length of the match that starts at position, or -1.
    int matchAt(const QString &text, int position) const;
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
        bool repeated = false; // any number of times, none included
        bool matches(QChar ch) const;
    };

    bool readSequence(QVector<Step> *steps);
    bool readItem(QVector<Step> *steps);
    bool readClass(Step *step);
    bool readRepetition(QVector<Step> *items);
    bool stepsMatch(const QString &text, int first, int last, int *at) const;
    bool atEnd() const { return position >= pattern.size(); }
    QChar next() { return pattern.at(position++); }

    const QString pattern;
    int position = 0;
    QVector<Step> steps;
    int repeatedStep = -1;
    int repetitions = 0;
    int shortest = 0;
    bool valid = false;
};

#endif // SIMPLEPATTERN_H
