// The editor tabs and the programs open in them.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "zusourcecode.h"

#include <QFile>
#include <QHBoxLayout>

ZuSourceCode *EditWindow::editorAt(int index) const
{
    QWidget *page = ui->tabWidget->widget(index);
    return page ? page->findChild<ZuSourceCode *>() : nullptr;
}

ZuSourceCode *EditWindow::currentEditor() const
{
    return editorAt(ui->tabWidget->currentIndex());
}

QWidget *EditWindow::addTextTab(QString name)
{
    auto *page = new QWidget;
    auto *layout = new QHBoxLayout(page);
    auto *editor = new ZuSourceCode(page, name, this, programsDir);
    layout->addWidget(editor);
    ui->tabWidget->addTab(page, name);
    curProgChanged(0);
    ui->tabWidget->setCurrentWidget(page);
    ui->seacrhButton->setChecked(false);
    ui->seacrhButton->setEnabled(true);
    emit changeVariant(QStringLiteral("openedlist"), getOpenedList(), false, true);
    return page;
}

bool EditWindow::findOpenTab(QString name)
{
    for (int i = 0; i < ui->tabWidget->count(); ++i) {
        if (ui->tabWidget->tabText(i) == name) {
            ui->tabWidget->setCurrentIndex(i);
            if (ZuSourceCode *editor = currentEditor())
                editor->setFocus(Qt::OtherFocusReason);
            tabChanged(i);
            return true;
        }
    }
    return false;
}

void EditWindow::openProgsList(QStringList names)
{
    for (const QString &name : names)
        addTextTab(name);
}

void EditWindow::tabChanged(int index)
{
    if (index < 0)
        return;
    ZuSourceCode *editor = currentEditor();
    if (!editor)
        return;

    for (QPushButton *button : { ui->saveProgramButton, ui->saveAsProgramButton, ui->undoButton, ui->redoButton })
        button->disconnect(SIGNAL(clicked()));
    connect(ui->saveProgramButton, SIGNAL(clicked()), editor, SLOT(toSave()));
    connect(ui->saveAsProgramButton, SIGNAL(clicked()), editor, SLOT(toSaveAs()));
    connect(ui->undoButton, SIGNAL(clicked()), editor, SLOT(undo()));
    connect(ui->redoButton, SIGNAL(clicked()), editor, SLOT(redo()));
    setEditButtons(editor->isChanged(), editor->isChanged(), editor->isUndoAvailable(),
                   editor->isRedoAvailable(), editor->isCompileEnabled());
    emit changeVariant(QStringLiteral("openedtab"), currTabName(), false, true);
}

void EditWindow::tabChanged(QWidget *page)
{
    tabChanged(ui->tabWidget->indexOf(page));
}

void EditWindow::tabClose(int index)
{
    ZuSourceCode *editor = editorAt(index);
    if (!editor || editor->canClose(false)) {
        // The page is only taken out of the tab widget.
        ui->tabWidget->removeTab(index);
        if (ui->tabWidget->count() == 0) {
            setEditButtons(0, 0, 0, 0, 0);
            ui->seacrhButton->setChecked(false);
            ui->seacrhButton->setEnabled(false);
        }
        curProgChanged(0);
    }
    emit changeVariant(QStringLiteral("openedlist"), getOpenedList(), false, true);
}

void EditWindow::tabClose(QString name)
{
    if (findOpenTab(name))
        tabClose(ui->tabWidget->currentIndex());
}

void EditWindow::setEditTabName(QString name)
{
    const int index = ui->tabWidget->currentIndex();
    if (index < 0)
        return;
    ui->tabWidget->setTabText(index, name);
    // The editor saves, reloads and reports under its object name.
    if (ZuSourceCode *editor = currentEditor())
        editor->setObjectName(name);
}

QString EditWindow::currTabName() const
{
    return ui->tabWidget->tabText(ui->tabWidget->currentIndex());
}

QStringList EditWindow::getOpenedList() const
{
    QStringList names;
    for (int i = 0; i < ui->tabWidget->count(); ++i)
        names << ui->tabWidget->tabText(i);
    return names;
}

void EditWindow::switchOrLoad(QString)
{
}

// The host's menu asks for a program by name.
void EditWindow::addProgListAndEdit(QString name)
{
    setVisible(true);
    activateWindow();
    if (QFile::exists(name + QStringLiteral(".zu")) && !findOpenTab(name))
        addTextTab(name);
}

void EditWindow::saveFileIfChanged(QString)
{
}

bool EditWindow::canExit()
{
    for (int i = 0; i < ui->tabWidget->count(); ++i) {
        ZuSourceCode *editor = editorAt(i);
        if (editor && !editor->canClose(false))
            return false;
    }
    return true;
}

void EditWindow::on_editButton_clicked()
{
}
