// The history of cursor places across the open programs.

#include "editwindow.h"

#include "zusourcecode.h"

#include <QtGlobal>

void EditWindow::storeCursorToHistory(QString name, int position)
{
    // Typing moves the cursor a little at a time: only a jump away from the
    // place last stepped to is worth a place of its own.
    if (historyPos >= 0) {
        const CursorHistoryPos &current = cursorHistory.at(historyPos);
        if (current.name == name && qAbs(current.position - position) <= 9)
            return;
    }
    // Greater as well as equal: the length may have been lowered since.
    while (maxPosHistoryLength > 0 && cursorHistory.size() >= maxPosHistoryLength) {
        cursorHistory.removeFirst();
        historyPos = qMax(historyPos - 1, -1);
    }
    // After the current place, keeping the places ahead of it.
    ++historyPos;
    cursorHistory.insert(historyPos, CursorHistoryPos { name, position });
}

// The limit is the end of the document in which the user stepped: a rough
// guard against places beyond a document's end after text was deleted.
// Its tab is made current only for a place that passes it.
bool EditWindow::historyPlaceUsable(int index, int limit)
{
    const CursorHistoryPos &place = cursorHistory.at(index);
    return place.position <= limit && alreadyOpen(place.name);
}

// A place that cannot be gone to any more (its program was closed) is
// dropped as the walk meets it; the history never reopens a program.
void EditWindow::cursorPrevPosition(int limit)
{
    while (historyPos > 0) {
        --historyPos;
        if (historyPlaceUsable(historyPos, limit)) {
            restorePos();
            return;
        }
        cursorHistory.removeAt(historyPos);
    }
}

void EditWindow::cursorNextPosition(int limit)
{
    while (historyPos < cursorHistory.size() - 1) {
        if (historyPlaceUsable(historyPos + 1, limit)) {
            ++historyPos;
            restorePos();
            return;
        }
        cursorHistory.removeAt(historyPos + 1);
    }
}

void EditWindow::restorePos()
{
    if (ZuSourceCode *editor = currentEditor())
        editor->restoreCursorPosition(cursorHistory.at(historyPos).position);
}
