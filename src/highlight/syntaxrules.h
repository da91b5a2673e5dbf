#ifndef SYNTAXRULES_H
#define SYNTAXRULES_H

#include <QBitArray>
#include <QHash>
#include <QRegExp>
#include <QStringList>
#include <QTextCharFormat>
#include <QVector>

#include "simplepattern.h"
#include "patternstart.h"

// The colouring rules made from the host's operation and type names, with
// numbers, strings, brackets and comments, each applied in order; built
// once and shared by the highlighters of all open programs.
//
// One rule per name would make every line pay for hundreds of patterns, so
// name rules that are plain text are found by cheaper means: names made of
// word characters through one hash look-up per word of the line, other
// plain names through the first character of each occurrence. Only names
// with pattern characters and the fixed rules need their patterns: simple
// ones are compared character by character (SimplePattern), the others run
// from where a match can begin. The matches are applied in rule
// order, so the colours are exactly those of running every rule's pattern
// in turn.
//
// The rules never change once built. Matching a line uses working space
// kept here for the next line, so lines are matched one at a time, on the
// thread that built the rules.
class SyntaxRules
{
public:
    struct HighRule
    {
        QRegExp pattern;
        QTextCharFormat format;
    };

    SyntaxRules(const QStringList &operations, const QStringList &types);
    SyntaxRules(const SyntaxRules &) = delete;
    SyntaxRules &operator=(const SyntaxRules &) = delete;

    const QVector<HighRule> &highRules() const { return rules; }
    const QTextCharFormat &commentFormat() const { return comment; }
    // By character of the line: the last rule that matched it, or -1. Valid
    // until the next line is matched.
    const QVector<int> &rulesOfChars(const QString &text);

private:
    // A name rule whose pattern is plain text, with or without word
    // boundaries around it.
    struct LiteralRule
    {
        int rule;
        QString text;
        bool wholeWord;
    };
    struct Match
    {
        int rule;
        int start;
        int length;
    };
    struct PatternRule
    {
        int rule;
        PatternStart start;
    };
    struct SimpleRule
    {
        int rule;
        SimplePattern pattern;
    };

    void addMatcher(int rule, const QString &name, bool wholeWord);
    void addPatternRule(int rule);
    void addSimpleRule(int rule, const SimplePattern &pattern);
    void matchWords(const QString &text, QVector<Match> &matches) const;
    void matchPlainAndSimple(const QString &text, QVector<Match> &matches);
    void matchLiteralsAt(const QString &text, int position, QVector<Match> &matches);
    void matchSimpleRulesAt(const QString &text, int position, const QVector<int> &candidates,
                           QVector<Match> &matches);
    void matchPatterns(const QString &text, QVector<Match> &matches) const;

    QVector<HighRule> rules;
    QTextCharFormat comment;

    QHash<QString, QVector<int>> wordRules;          // whole word -> its rules
    QVector<LiteralRule> literals;
    QHash<quint32, QVector<int>> literalsByPrefix;   // first two characters -> literals
    QVector<SimpleRule> simpleRules;                 // rules of simple patterns
    QHash<ushort, QVector<int>> simpleByFirstChar;   // first character -> simple rules
    QVector<int> unindexedSimpleRules;               // simple rules that may start anywhere
    QVector<PatternRule> patternRules;               // rules that run their pattern
    // What a character may begin, one byte of CharRole flags per UTF-16
    // code unit: most characters of a line begin nothing, and one look-up
    // says so.
    enum CharRole : quint8 { StartsLiteral = 1, StartsSimpleRule = 2, IsLiteral = 4 };
    QVector<quint8> charRoles;
    QBitArray literalPairs;                          // by hashed prefix key: may start a literal
    QBitArray wordShapes;                            // by hashed word shape: may be a whole-word name

    // Working space of the line being matched.
    QVector<int> simpleResume;                       // per simple rule: where its search goes on
    QVector<int> literalResume;                      // per literal: where its search goes on
    QVector<Match> lineMatches;
    QVector<int> ruleOfChar;
};

#endif // SYNTAXRULES_H
