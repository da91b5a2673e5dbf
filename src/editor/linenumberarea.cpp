#include "linenumberarea.h"

#include "linepieces.h"
#include "zusourcecode.h"

#include <QPainter>
#include <QTextBlock>

LineNumberArea::LineNumberArea(ZuSourceCode *editor)
    : QWidget(editor)
    , editor(editor)
{
}

QSize LineNumberArea::sizeHint() const
{
    return QSize(editor->lineNumberAreaWidth(), 0);
}

void LineNumberArea::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::lightGray);

    QTextBlock block = editor->firstVisibleBlock();
    int number = editor->lineNumber(block);
    int top = int(editor->blockBoundingGeometry(block).translated(editor->contentOffset()).top());
    int bottom = top + int(editor->blockBoundingRect(block).height());
    const int width = editor->lineNumberAreaWidth();
    const int lineHeight = editor->fontMetrics().height();

    painter.setPen(Qt::black);
    // The further pieces of a long line have no number of their own.
    bool continues = LinePieces::continuesLine(block);
    while (block.isValid() && top <= event->rect().bottom()) {
        if (block.isVisible() && bottom >= event->rect().top() && !continues)
            painter.drawText(0, top, width, lineHeight, Qt::AlignRight, QString::number(number));
        block = block.next();
        top = bottom;
        bottom = top + int(editor->blockBoundingRect(block).height());
        continues = LinePieces::continuesLine(block);
        if (!continues)
            ++number;
    }
}
