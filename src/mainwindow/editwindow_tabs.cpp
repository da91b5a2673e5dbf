// The editor tabs and the programs open in them.

#include "editwindow.h"
#include "ui_editwindow.h"

void EditWindow::tabChanged(int)
{
}

void EditWindow::tabChanged(QWidget *)
{
}

void EditWindow::tabClose(int)
{
}

void EditWindow::tabClose(QString)
{
}

void EditWindow::switchOrLoad(QString)
{
}

void EditWindow::addProgListAndEdit(QString)
{
}

void EditWindow::saveFileIfChanged(QString)
{
}

// Every open program is asked whether it may close; no tab can be open
// before programs open in tabs, so nothing refuses yet.
bool EditWindow::canExit()
{
    return true;
}

void EditWindow::on_editButton_clicked()
{
}

bool EditWindow::findOpenTab(QString)
{
    return false;
}

void EditWindow::openProgsList(QStringList)
{
}
