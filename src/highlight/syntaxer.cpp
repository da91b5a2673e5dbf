#include "syntaxer.h"

#include <QPlainTextEdit>

#include "viewcolouring.h"

Syntaxer::Syntaxer(QTextDocument *document, const QSharedPointer<SyntaxRules> &rules, QObject *parent)
    : QSyntaxHighlighter(parent)
    , rules(rules)
    , backtick(QStringLiteral("`"))
{
    setDocument(document);
    auto *editor = qobject_cast<QPlainTextEdit *>(parent);
    if (document && editor && editor->document() == document)
        new ViewColouring(this, editor);
}

Syntaxer::Syntaxer(QTextDocument *document, const QStringList &operations, const QStringList &types,
                   QObject *parent)
    : Syntaxer(document, QSharedPointer<SyntaxRules>::create(operations, types), parent)
{
}

void Syntaxer::highlightBlock(const QString &text)
{
    // An uncoloured line ends a comment that runs over lines.
    if (text.size() > longestColouredLine) {
        setCurrentBlockState(0);
        return;
    }
    // Whole runs of one rule's format are set at once.
    const QVector<int> &ruleOfChar = rules->rulesOfChars(text);
    const QVector<HighRule> &highRules = rules->highRules();
    for (int start = 0; start < text.size();) {
        const int rule = ruleOfChar.at(start);
        int end = start + 1;
        while (end < text.size() && ruleOfChar.at(end) == rule)
            ++end;
        if (rule >= 0)
            setFormat(start, end - start, highRules.at(rule).format);
        start = end;
    }

    highlightBackticks(text);
}

// Each backtick is grey on its own: the closing search starts at the
// opening backtick itself and finds it again.
void Syntaxer::highlightBackticks(const QString &text)
{
    setCurrentBlockState(0);
    int start = 0;
    if (previousBlockState() != 1) {
        // Most lines have no backtick: no need to run the expression.
        if (!text.contains(QLatin1Char('`')))
            return;
        start = backtick.indexIn(text);
        if (start < 0)
            return;
    }
    while (backtick.matchedLength() != 0) {
        const int end = backtick.indexIn(text, start);
        int length;
        if (end >= 0 && backtick.matchedLength() > 0) {
            length = end - start + 1;
        } else {
            setCurrentBlockState(1);
            length = text.size() - start;
        }
        setFormat(start, length, rules->commentFormat());
        start = backtick.indexIn(text, start + length);
        if (start < 0)
            break;
    }
}
