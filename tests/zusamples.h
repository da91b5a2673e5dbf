#ifndef ZUSAMPLES_H
#define ZUSAMPLES_H

#include <QRandomGenerator>
#include <QString>
#include <QStringList>

// Generated Zu-like programs and name lists, shared by the highlighter's
// tests and its benchmark. The same seed always gives the same sample.
struct ZuSample
{
    QStringList operations; // the first list: red bold names
    QStringList types;      // the second list: blue names
    QStringList lines;

    QString text() const { return lines.join(QLatin1Char('\n')) + QLatin1Char('\n'); }
};

// Operation and type names as a host's tables might hold them: mostly
// identifiers, with underscores, operator symbols, names that are patterns,
// Cyrillic names, a few duplicates and a few names in both lists.
ZuSample makeZuSample(quint32 seed, int lineCount = 10000, int operationCount = 1000,
                      int typeCount = 300);

// Program lines that use the given names often: alone, inside longer words
// and next to punctuation, among numbers, strings, comments, backticks and
// braces. Either list may be empty.
QStringList makeZuLines(QRandomGenerator &random, int count, const QStringList &operations,
                        const QStringList &types);
// Such lines until they, each with its line feed, fill `length` characters.
QStringList makeZuLinesFilling(QRandomGenerator &random, int length, const QStringList &operations,
                               const QStringList &types);

#endif // ZUSAMPLES_H
