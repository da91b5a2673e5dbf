// The history of cursor places across the open programs.

#include "editwindow.h"

void EditWindow::storeCursorToHistory(QString, int)
{
}

void EditWindow::cursorPrevPosition(int)
{
}

void EditWindow::cursorNextPosition(int)
{
}
