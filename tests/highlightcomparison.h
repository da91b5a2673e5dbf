#ifndef HIGHLIGHTCOMPARISON_H
#define HIGHLIGHTCOMPARISON_H

#include <QString>
#include <QStringList>

class QTextBlock;
class QTextDocument;

// The colours of a highlighted block, one letter per character: R red bold,
// B blue normal, G dark green normal, M magenta bold, C grey normal; '.' for
// an uncoloured character and '?' for anything else (a wrong weight, an
// extra property).
QString colourMap(const QTextBlock &block);

// Empty when both documents hold the same lines with the same format ranges
// and block states; otherwise how many lines differ and the first of them.
QString firstDifference(const QTextDocument *actual, const QTextDocument *expected);

// How many lines of the document have formats: a check that a run
// coloured it.
int colouredLines(const QTextDocument *document);

// Empty when the editor's highlighter colours the lines as the reference
// does; otherwise the names and the first line that differs.
QString differenceFromReference(const QStringList &lines, const QStringList &operations,
                                const QStringList &types);

#endif // HIGHLIGHTCOMPARISON_H
