#include "viewcolouring.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPlainTextEdit>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace {

// The last block a change touches, as the highlighter reckons it.
QTextBlock lastChangedBlock(const QTextDocument *document, int from, int removed, int added)
{
    const QTextBlock last = document->findBlock(from + added + (removed > 0 ? 1 : 0));
    return last.isValid() ? last : document->lastBlock();
}

} // namespace

ViewColouring::ViewColouring(QSyntaxHighlighter *highlighter, QPlainTextEdit *editor)
    : QObject(highlighter)
    , highlighter(highlighter)
    , editor(editor)
{
    QTextDocument *document = highlighter->document();
    // The highlighter hears of the document's changes through here.
    if (!disconnect(document, SIGNAL(contentsChange(int, int, int)), highlighter,
                    SLOT(_q_reformatBlocks(int, int, int))))
        qWarning("ViewColouring: the highlighter's own change handling could not be replaced");
    connect(document, &QTextDocument::contentsChange, this, &ViewColouring::documentChanged);
    // Setting the document has posted a call for a whole-document pass,
    // which comes as the one posted event the new highlighter has. The
    // request it leaves behind keeps the highlighter deaf to changes, but
    // it hears them from here now, and rehighlightBlock() works regardless.
    QCoreApplication::removePostedEvents(highlighter, QEvent::MetaCall);
    markWaiting(document->firstBlock(), document->lastBlock());

    editor->viewport()->installEventFilter(this);
    editor->viewport()->update();
}

bool ViewColouring::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint && watched == editor->viewport())
        colourShownBlocks();
    return QObject::eventFilter(watched, event);
}

void ViewColouring::documentChanged(int from, int removed, int added)
{
    const QTextDocument *document = highlighter->document();
    const QTextBlock first = document->findBlock(from);
    if (!first.isValid())
        return;
    const QTextBlock last = lastChangedBlock(document, from, removed, added);
    if (last.blockNumber() - first.blockNumber() >= immediateBlocks) {
        markWaiting(first, last);
        return;
    }
    colour(first, last);
}

// Colours from the first block in view to the last, each one that waits.
// Its new layout makes the editor paint it again, in colour this time when
// this paint comes too early for it.
void ViewColouring::colourShownBlocks()
{
    const QRect area = editor->viewport()->rect();
    const QTextBlock last = editor->cursorForPosition(area.bottomRight()).block();
    const QTextBlock first = editor->cursorForPosition(area.topLeft()).block();
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        if (block.userState() == -1)
            colour(block, block);
        if (block == last)
            break;
    }
    if (colouredBlocks > keptBlocks)
        uncolourAllBut(first, last);
}

// One pass over the document, which counts the blocks it keeps coloured.
void ViewColouring::uncolourAllBut(const QTextBlock &first, const QTextBlock &last)
{
    bool shown = false;
    int kept = 0;
    for (QTextBlock block = highlighter->document()->firstBlock(); block.isValid(); block = block.next()) {
        shown = shown || block == first;
        if (block.userState() != -1) {
            if (shown)
                ++kept;
            else
                uncolour(block);
        }
        if (block == last)
            shown = false;
    }
    colouredBlocks = kept;
}

// A waiting block loses the colours it had: they belong to its old text.
// Only a coloured block has a layout to clear; asking others for theirs
// would make one.
void ViewColouring::markWaiting(QTextBlock first, const QTextBlock &last)
{
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        if (block.userState() != -1)
            uncolour(block);
        if (block == last)
            break;
    }
}

void ViewColouring::uncolour(QTextBlock &block)
{
    block.layout()->clearFormats();
    block.setUserState(-1);
}

// The highlighter goes on to the next block when a block's state changes,
// which would colour every waiting block below: the state each block will
// have anyway, set first, stops it there.
void ViewColouring::colour(QTextBlock first, const QTextBlock &last)
{
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        if (block.userState() == -1)
            ++colouredBlocks;
        block.setUserState(0);
        highlighter->rehighlightBlock(block);
        if (block == last)
            break;
    }
}
