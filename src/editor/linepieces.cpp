#include "linepieces.h"

#include <QSignalBlocker>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace LinePieces {

namespace {

const int continuesProperty = QTextFormat::UserProperty + 1;

bool isBlank(QChar ch)
{
    return ch == QLatin1Char(' ') || ch == QLatin1Char('\t');
}

// Where the piece that begins at start ends: after the last blank of its
// last tenth, or else at its full length.
int pieceEnd(const QString &text, int start)
{
    const int end = start + pieceLength;
    for (int i = end - 1; i >= end - pieceLength / 10; --i) {
        if (isBlank(text.at(i)))
            return i + 1;
    }
    return end;
}

} // namespace

QString cut(const QString &text, QVector<int> *continuing)
{
    continuing->clear();
    QString result;
    int lineNumber = 0;
    int start = 0;
    while (start <= text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        if (end < 0)
            end = text.size();
        if (end - start > longLine) {
            if (result.isNull()) {
                result.reserve(text.size() + text.size() / pieceLength + 1);
                result += text.leftRef(start);
            }
            while (end - start > pieceLength) {
                const int cut = pieceEnd(text, start);
                result += text.midRef(start, cut - start);
                result += QLatin1Char('\n');
                continuing->append(++lineNumber);
                start = cut;
            }
        }
        if (!result.isNull())
            result += text.midRef(start, end - start + 1);
        start = end + 1;
        ++lineNumber;
    }
    return result.isNull() ? text : result;
}

void mark(QTextDocument *document, const QVector<int> &continuing)
{
    if (continuing.isEmpty())
        return;
    const QSignalBlocker blocker(document);
    const bool wasModified = document->isModified();
    const bool undoing = document->isUndoRedoEnabled();
    document->setUndoRedoEnabled(false);
    QTextBlockFormat format;
    format.setProperty(continuesProperty, true);
    QTextCursor cursor(document);
    for (int number : continuing) {
        cursor.setPosition(document->findBlockByNumber(number).position());
        cursor.mergeBlockFormat(format);
    }
    document->setUndoRedoEnabled(undoing);
    document->setModified(wasModified);
}

bool continuesLine(const QTextBlock &block)
{
    return block.blockFormat().boolProperty(continuesProperty);
}

QTextBlockFormat withoutMark(QTextBlockFormat format)
{
    format.clearProperty(continuesProperty);
    return format;
}

QTextBlock lineStart(const QTextBlock &block)
{
    QTextBlock start = block;
    while (start.isValid() && continuesLine(start))
        start = start.previous();
    return start.isValid() ? start : block;
}

int lineNumber(const QTextBlock &block)
{
    int number = 0;
    for (QTextBlock b = block.document()->firstBlock(); b.isValid(); b = b.next()) {
        if (!continuesLine(b))
            ++number;
        if (b == block)
            break;
    }
    return number;
}

QTextBlock findLine(const QTextDocument *document, int line)
{
    int number = 0;
    for (QTextBlock block = document->firstBlock(); block.isValid(); block = block.next()) {
        if (!continuesLine(block) && ++number == line)
            return block;
    }
    return QTextBlock();
}

int ProgramLine::place(int position) const
{
    const int piecesBefore = first.document()->findBlock(position).blockNumber() - first.blockNumber();
    return position - first.position() - piecesBefore;
}

int ProgramLine::startPosition(int place) const
{
    const auto breaksPassed = std::upper_bound(breaks.cbegin(), breaks.cend(), place) - breaks.cbegin();
    return first.position() + place + int(breaksPassed);
}

int ProgramLine::endPosition(int place) const
{
    const auto breaksPassed = std::lower_bound(breaks.cbegin(), breaks.cend(), place) - breaks.cbegin();
    return first.position() + place + int(breaksPassed);
}

ProgramLine programLine(const QTextBlock &block)
{
    ProgramLine line;
    line.first = lineStart(block);
    line.last = line.first;
    line.text = line.first.text();
    for (QTextBlock next = line.first.next(); next.isValid() && continuesLine(next); next = next.next()) {
        line.breaks.append(line.text.size());
        line.text += next.text();
        line.last = next;
    }
    return line;
}

QString fileText(const QTextDocument *document, int start, int end)
{
    QString text;
    for (QTextBlock block = document->findBlock(start); block.isValid() && block.position() <= end;
         block = block.next()) {
        const int from = qMax(start, block.position()) - block.position();
        const int to = qMin(end, block.position() + block.length() - 1) - block.position();
        if (block.position() > start && !continuesLine(block))
            text += QLatin1Char('\n');
        text += block.text().midRef(from, to - from);
    }
    // Shift+Enter breaks a line inside a block; the file knows only lines.
    text.replace(QChar::LineSeparator, QLatin1Char('\n'));
    return text;
}

} // namespace LinePieces
