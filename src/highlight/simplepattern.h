#ifndef SIMPLEPATTERN_H
#define SIMPLEPATTERN_H

#include <QString>
#include <QVector>

#include "parsedpattern.h"

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
    explicit SimplePattern(const ParsedPattern &pattern);

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
    struct Step
    {
        enum Kind { Chars, Boundary, NotBoundary } kind = Chars;
        QVector<ParsedPattern::Range> ranges;
        bool negated = false;
        bool repeated = false; // any number of times, none included
        bool matches(QChar ch) const;
    };

    static bool addSequence(const ParsedPattern &pattern, const ParsedPattern::Sequence &sequence,
                            QVector<Step> *steps);
    static bool addAlternatives(const ParsedPattern &pattern, int group, QVector<Step> *steps);
    static bool addItem(const ParsedPattern &pattern, const ParsedPattern::Item &item,
                        QVector<Step> *steps);
    bool stepsMatch(const QString &text, int first, int last, int *at) const;

    QVector<Step> steps;
    int repeatedStep = -1;
    int shortest = 0;
    bool valid = false;
};

#endif // SIMPLEPATTERN_H
