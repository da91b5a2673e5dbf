#ifndef REFERENCESYNTAXER_H
#define REFERENCESYNTAXER_H

#include <QRegExp>
#include <QStringList>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QVector>

class QTextDocument;

// The highlighter written rule by rule, with nothing made faster: every
// rule's pattern runs over every line short enough to colour, in rule
// order, then the backtick pass. The tests and the benchmark hold the
// editor's highlighter to it.
class ReferenceSyntaxer : public QSyntaxHighlighter
{
public:
    struct Rule
    {
        QRegExp pattern;
        QTextCharFormat format;
    };

    ReferenceSyntaxer(QTextDocument *document, const QStringList &operations,
                      const QStringList &types);

    const QVector<Rule> &rules() const { return highRules; }

protected:
    void highlightBlock(const QString &text) override;

private:
    QVector<Rule> highRules;
    QRegExp backtick;
    QTextCharFormat operationFormat;
    QTextCharFormat typeFormat;
    QTextCharFormat numberFormat;
    QTextCharFormat stringFormat;
    QTextCharFormat bracketFormat;
    QTextCharFormat commentFormat;
    QTextCharFormat defaultFormat;
};

#endif // REFERENCESYNTAXER_H
