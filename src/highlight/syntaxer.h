#ifndef SYNTAXER_H
#define SYNTAXER_H

#include <QBitArray>
#include <QHash>
#include <QRegExp>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QVector>

#include "simplepattern.h"
#include "patternstart.h"

// Colours a program line by line: the host's operation and type names,
// numbers, strings, brackets and comments, each by a rule applied in order.
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
class Syntaxer : public QSyntaxHighlighter
{
public:
    struct HighRule
    {
        QRegExp pattern;
        QTextCharFormat format;
    };

    // Longer lines are left uncoloured: their matches and the layout of
    // their colours would cost seconds on every keystroke in a line of
    // megabytes.
    static constexpr int longestColouredLine = 10000;

    Syntaxer(QTextDocument *document, const QStringList &operations, const QStringList &types,
             QObject *parent = nullptr);

    const QVector<HighRule> &highRules() const { return rules; }

protected:
    void highlightBlock(const QString &text) override;

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

    void addMatcher(int rule, const QString &name, bool wholeWord);
    void addPatternRule(int rule);
    void addSimpleRule(int rule, const SimplePattern &pattern);
    void matchWords(const QString &text, QVector<Match> &matches) const;
    void matchPlainAndSimple(const QString &text, QVector<Match> &matches);
    void matchLiteralsAt(const QString &text, int position, QVector<Match> &matches);
    void matchSimpleRulesAt(const QString &text, int position, const QVector<int> &candidates,
                           QVector<Match> &matches);
    void matchPatterns(const QString &text, QVector<Match> &matches) const;
    void highlightBackticks(const QString &text);

    QVector<HighRule> rules;
    QRegExp backtick;
    QTextCharFormat operationFormat;
    QTextCharFormat blackFormat;
    QTextCharFormat typeFormat;
    QTextCharFormat numberFormat;
    QTextCharFormat stringFormat;
    QTextCharFormat bracketFormat;
    QTextCharFormat magentaFormat;
    QTextCharFormat commentFormat;
    QTextCharFormat defaultFormat;

    QHash<QString, QVector<int>> wordRules;          // whole word -> its rules
    QVector<LiteralRule> literals;
    QHash<quint32, QVector<int>> literalsByPrefix;   // first two characters -> literals
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
    QVector<SimpleRule> simpleRules;                 // rules of simple patterns
    QHash<ushort, QVector<int>> simpleByFirstChar;   // first character -> simple rules
    QVector<int> unindexedSimpleRules;               // simple rules that may start anywhere
    QVector<int> simpleResume;                       // per simple rule: where its search goes on
    QVector<PatternRule> patternRules;               // rules that run their pattern
    QBitArray firstChars;                            // by character: starts a literal or simple rule
    QBitArray simpleFirstChars;                      // by character: starts a simple rule
    QBitArray singleCharLiterals;                    // by character: a literal of its own
    QBitArray literalPairs;                          // by hashed prefix key: may start a literal
    QVector<int> literalResume;                      // per literal: where its search goes on
    QVector<Match> lineMatches;
    QVector<int> ruleOfChar;
};

#endif // SYNTAXER_H
