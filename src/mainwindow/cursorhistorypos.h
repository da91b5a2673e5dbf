#ifndef CURSORHISTORYPOS_H
#define CURSORHISTORYPOS_H

#include <QString>

// One remembered cursor place: the program and the character position.
struct CursorHistoryPos
{
    QString name;
    int position = 0;
};

#endif // CURSORHISTORYPOS_H
