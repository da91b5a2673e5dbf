#ifndef VIEWCOLOURING_H
#define VIEWCOLOURING_H

#include <QObject>

class QPlainTextEdit;
class QSyntaxHighlighter;
class QTextBlock;

// Drives a highlighter on an editor's document so that the editor's lines
// are coloured as they are shown, instead of the whole document at once.
//
// QSyntaxHighlighter colours a newly set document in one pass and every
// change at once, however large: opening a program of megabytes freezes
// the window for seconds, and every line it colours keeps a text layout
// that the editor alone would make only for the lines it shows, which
// doubles the memory of a big program. Here a small change is still
// coloured at once, as the highlighter would; the lines of a larger one,
// and of a new text, wait uncoloured until a paint of the editor is about
// to show them. A line's colours depend on its own text alone, so a line
// coloured late gets exactly the colours of a whole-document pass.
//
// A block's state tells them apart: the highlighter leaves 0 on a block it
// has coloured, and -1 marks one that waits.
//
// Lines shown once and scrolled away would keep their colours, and with
// them a text layout richer than a plain editor's: paging through two
// programs of 5 MiB would take two thirds more memory than plain editors
// do. Past a number of coloured lines, the lines out of view give their
// colours up and wait again, which also frees their layouts.
class ViewColouring : public QObject
{
public:
    ViewColouring(QSyntaxHighlighter *highlighter, QPlainTextEdit *editor);

    // Lines of a change up to this many are coloured at once.
    static constexpr int immediateBlocks = 100;
    // Past this many coloured lines, those out of view wait again.
    static constexpr int keptBlocks = 2000;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void documentChanged(int from, int removed, int added);
    void colourShownBlocks();
    void uncolourAllBut(const QTextBlock &first, const QTextBlock &last);
    static void markWaiting(QTextBlock first, const QTextBlock &last);
    static void uncolour(QTextBlock &block);
    void colour(QTextBlock first, const QTextBlock &last);

    QSyntaxHighlighter *highlighter;
    QPlainTextEdit *editor;
    // The blocks coloured since the last count and those it kept: at least
    // the blocks coloured now, and a count is cheap, so none is subtracted.
    int colouredBlocks = 0;
};

#endif // VIEWCOLOURING_H
