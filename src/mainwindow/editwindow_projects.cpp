// Projects: the current project's programs and its file.

#include "editwindow.h"
#include "ui_editwindow.h"

void EditWindow::curProjChanged(int)
{
}

void EditWindow::curProgPrjChanged(int)
{
}

void EditWindow::zupselected(bool, QString)
{
}

void EditWindow::saveEntireProject()
{
}

void EditWindow::on_editAllPrjButton_clicked()
{
}

void EditWindow::on_downInPrjButton_clicked()
{
}

void EditWindow::on_upInPrjButton_clicked()
{
}

void EditWindow::on_addprjButton_clicked()
{
}

void EditWindow::on_removeProgPrjButton_clicked()
{
}

void EditWindow::on_renamePrjButton_clicked()
{
}

void EditWindow::on_projectsList_itemActivated(QListWidgetItem *)
{
}

void EditWindow::on_currentProjectList_itemActivated(QListWidgetItem *)
{
}
