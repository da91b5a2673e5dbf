#include "referencesyntaxer.h"

#include <QBrush>
#include <QFont>

#include "syntaxer.h"

namespace {

QTextCharFormat referenceFormat(Qt::GlobalColor colour, int weight)
{
    QTextCharFormat format;
    format.setForeground(QBrush(colour));
    format.setFontWeight(weight);
    return format;
}

} // namespace

ReferenceSyntaxer::ReferenceSyntaxer(QTextDocument *document, const QStringList &operations,
                                     const QStringList &types)
    : QSyntaxHighlighter(document)
    , operationFormat(referenceFormat(Qt::red, QFont::Bold))
    , typeFormat(referenceFormat(Qt::blue, QFont::Normal))
    , numberFormat(referenceFormat(Qt::blue, QFont::Normal))
    , stringFormat(referenceFormat(Qt::darkGreen, QFont::Normal))
    , bracketFormat(referenceFormat(Qt::magenta, QFont::Bold))
    , commentFormat(referenceFormat(Qt::gray, QFont::Normal))
{
    const QRegExp noBoundaries(QStringLiteral("([%|&|=|_|/|<|>|~|'])"));
    Rule rule;
    for (const QString &name : operations) {
        if (name.contains(noBoundaries))
            rule.pattern = QRegExp(QStringLiteral("(") + name + QStringLiteral(")"));
        else
            rule.pattern = QRegExp(QStringLiteral("\\b(") + name + QStringLiteral(")\\b"));
        rule.format = operationFormat;
        highRules.append(rule);
    }
    for (const QString &name : types) {
        rule.pattern = QRegExp(QStringLiteral("\\b(") + name + QStringLiteral(")\\b"));
        rule.format = typeFormat;
        highRules.append(rule);
    }
    // The last rule once more; with no names at all, a rule that is empty.
    highRules.append(rule);

    rule.pattern = QRegExp(QStringLiteral(
        "\\b[-+]?(?:\\b[0-9]+(?:\\.[0-9]*)?|\\.[0-9]+\\b)(?:[eE][-+]?[0-9]+\\b)?\\b"));
    rule.format = numberFormat;
    highRules.append(rule);

    rule.pattern = QRegExp(QStringLiteral("\".*\""));
    rule.format = stringFormat;
    highRules.append(rule);

    rule.pattern = QRegExp(QStringLiteral("\\b[{()}]\\b"));
    rule.format = bracketFormat;
    highRules.append(rule);

    rule.pattern = QRegExp(QStringLiteral("``[^\n]*"));
    rule.format = commentFormat;
    highRules.append(rule);

    backtick = QRegExp(QStringLiteral("`"));
}

void ReferenceSyntaxer::highlightBlock(const QString &text)
{
    // Long lines stay uncoloured, as in the editor.
    if (text.size() > Syntaxer::longestColouredLine) {
        setCurrentBlockState(0);
        return;
    }
    for (const Rule &rule : qAsConst(highRules)) {
        int index = rule.pattern.indexIn(text);
        while (index >= 0) {
            const int length = rule.pattern.matchedLength();
            if (length == 0)
                break;
            setFormat(index, length, rule.format);
            index = rule.pattern.indexIn(text, index + length);
        }
    }
    setCurrentBlockState(0);

    int start = 0;
    if (previousBlockState() != 1) {
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
            length = text.length() - start;
        }
        setFormat(start, length, commentFormat);
        start = backtick.indexIn(text, start + length);
        if (start < 0)
            break;
    }
}
