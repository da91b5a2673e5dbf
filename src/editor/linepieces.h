#ifndef LINEPIECES_H
#define LINEPIECES_H

#include <QString>
#include <QTextBlock>
#include <QTextBlockFormat>
#include <QVector>

class QTextDocument;

// Qt lays a whole block out again on every change in it, which for a line
// of megabytes takes seconds per keystroke. The editor therefore shows a
// very long line in pieces: blocks whose format marks that they go on the
// line of the block before them. Qt keeps a block's format through edits
// and restores it on undo; a new line the user makes gets a format without
// the mark, and the file gets the pieces of a line joined again.
namespace LinePieces {

// Lines longer than this are shown in pieces,
constexpr int longLine = 10000;
// of at most this many characters each, cut after a blank near the end
// where there is one, so that words stay whole.
constexpr int pieceLength = 500;

// The text with every long line cut into pieces by line feeds; continuing
// gets the numbers of the lines of the result that go on the line before.
QString cut(const QString &text, QVector<int> *continuing);
// Marks these blocks as pieces going on the line before, outside the undo
// history and without a change of the modified state.
void mark(QTextDocument *document, const QVector<int> &continuing);

bool continuesLine(const QTextBlock &block);
// The format for a block that starts a line of its own.
QTextBlockFormat withoutMark(QTextBlockFormat format);
// The first piece of the line the block belongs to.
QTextBlock lineStart(const QTextBlock &block);
// The number of the line the block belongs to, counting from 1.
int lineNumber(const QTextBlock &block);
// The first piece of line number `line`, or an invalid block past the end.
QTextBlock findLine(const QTextDocument *document, int line);

// A program line as one text, and the way from a place in that text back
// to the document: the search finds words across piece breaks.
struct ProgramLine
{
    QTextBlock first;
    QTextBlock last;
    QString text;
    QVector<int> breaks; // the places in text where the pieces after the first begin

    // The place in text of a document position inside the line.
    int place(int position) const;
    // The document position of a place. A break is both the end of one
    // piece and the start of the next: what starts there starts in the next
    // piece, what ends there ends in the piece before.
    int startPosition(int place) const;
    int endPosition(int place) const;
};

// The program line the block belongs to.
ProgramLine programLine(const QTextBlock &block);

// The text from start to end as the file holds it: lines joined by line
// feeds, pieces joined by nothing.
QString fileText(const QTextDocument *document, int start, int end);

} // namespace LinePieces

#endif // LINEPIECES_H
