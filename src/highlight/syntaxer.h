#ifndef SYNTAXER_H
#define SYNTAXER_H

#include <QHash>
#include <QRegExp>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QVector>

class ZuSourceCode;

// Colours a program line by line: the host's operation and type names,
// numbers, strings, brackets and comments, each by a rule applied in order.
//
// One rule per name would make every line pay for hundreds of patterns, so
// name rules that are plain text are found by cheaper means: names made of
// word characters through one hash look-up per word of the line, other
// plain names through the first character of each occurrence. Only names
// with pattern characters and the fixed rules run their patterns on every
// line. The matches are applied in rule order, so the colours are exactly
// those of running every rule's pattern in turn.
class Syntaxer : public QSyntaxHighlighter
{
public:
    struct HighRule
    {
        QRegExp pattern;
        QTextCharFormat format;
    };

    Syntaxer(ZuSourceCode *editor, QStringList *operations, QStringList *types);

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
    void matchWords(const QString &text, QVector<Match> &matches) const;
    void matchLiterals(const QString &text, QVector<Match> &matches);
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
    QHash<ushort, QVector<int>> literalsByFirstChar; // first character -> literals
    QVector<int> patternRules;                       // rules that run their pattern
    QVector<int> literalResume;                      // per literal: where its search goes on
    QVector<Match> lineMatches;
};

#endif // SYNTAXER_H
