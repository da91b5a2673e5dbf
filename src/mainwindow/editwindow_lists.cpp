// The program and project lists of the programs directory.

#include "editwindow.h"
#include "ui_editwindow.h"

void EditWindow::dirChanged(QString)
{
}

void EditWindow::curProgChanged(int)
{
}

void EditWindow::progRenamed(QListWidgetItem *)
{
}

void EditWindow::nameEditClosed(QWidget *, QAbstractItemDelegate::EndEditHint)
{
}

void EditWindow::newSettingsProgramsDir(QString, QString)
{
}

void EditWindow::on_newProgButton_clicked()
{
}

void EditWindow::on_delProgButton_clicked()
{
}

void EditWindow::on_renameButton_clicked()
{
}

void EditWindow::on_programsList_itemActivated(QListWidgetItem *)
{
}

void EditWindow::onItemEntered(QListWidgetItem *)
{
}
