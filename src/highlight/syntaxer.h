#ifndef SYNTAXER_H
#define SYNTAXER_H

#include <QRegExp>
#include <QSharedPointer>
#include <QSyntaxHighlighter>

#include "syntaxrules.h"

// Colours a program line by line with a set of rules (see syntaxrules.h),
// which the highlighters of several documents may share. On the document
// of an editor that is its parent, it colours the lines as the editor
// shows them (see viewcolouring.h); elsewhere, the whole document.
class Syntaxer : public QSyntaxHighlighter
{
public:
    using HighRule = SyntaxRules::HighRule;

    // Longer lines are left uncoloured: their matches and the layout of
    // their colours would cost seconds on every keystroke in a line of
    // megabytes.
    static constexpr int longestColouredLine = 10000;

    Syntaxer(QTextDocument *document, const QSharedPointer<SyntaxRules> &rules, QObject *parent = nullptr);
    // With rules of its own.
    Syntaxer(QTextDocument *document, const QStringList &operations, const QStringList &types,
             QObject *parent = nullptr);

    const QVector<HighRule> &highRules() const { return rules->highRules(); }

protected:
    void highlightBlock(const QString &text) override;

private:
    void highlightBackticks(const QString &text);

    QSharedPointer<SyntaxRules> rules;
    QRegExp backtick;
};

#endif // SYNTAXER_H
