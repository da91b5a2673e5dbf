// Projects: the current project's programs and its file.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "codepage.h"
#include "filewrite.h"
#include "projectfile.h"
#include "zusourcecode.h"

#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QSaveFile>

void EditWindow::projectFileError(const QFileDevice &file)
{
    QMessageBox::critical(this, tr("ВНИМАНИЕ!"),
                          tr("Ошибка при открытии файла проекта!") + QLatin1Char('\n') + file.fileName()
                              + QLatin1Char('\n') + file.errorString(),
                          QMessageBox::Ok);
}

void EditWindow::OpenPrj(bool skip)
{
    QListWidgetItem *project = ui->projectsList->currentItem();
    if (skip || !project)
        return;
    ui->currentProjectList->clear();

    QFile file(project->text() + QStringLiteral(".zup"));
    if (!file.open(QIODevice::ReadOnly)) {
        projectFileError(file);
        return;
    }
    ui->currentProjectList->addItems(ProjectFile::fromBytes(file.readAll()).programs);
    ui->currentProjectList->setCurrentItem(nullptr);
    enableProgProj();
}

// The new file replaces the project only once it is complete; a name the
// code page cannot hold would come back as another name, so nothing is
// written then. What the project's file holds after its list stays there,
// as the file holds it now.
bool EditWindow::writeProject(const QString &project, const QStringList &programs)
{
    ProjectFile contents;
    QFile old(project + QStringLiteral(".zup"));
    if (old.open(QIODevice::ReadOnly))
        contents = ProjectFile::fromBytes(old.readAll());
    contents.programs = programs;
    const QString text = contents.listText();
    QByteArray list;
    if (!toWindows1251(text, &list)) {
        QMessageBox::critical(this, tr("Ошибка записи файла"),
                              project + QStringLiteral(".zup\n") + unencodableMessage(text, firstUnencodable(text))
                                  + tr("\nПроект не сохранён."),
                              QMessageBox::Ok);
        return false;
    }

    QSaveFile file(project + QStringLiteral(".zup"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        projectFileError(file);
        return false;
    }
    if (writeAndCommit(file, list + contents.rest))
        return true;
    QMessageBox::critical(this, tr("Ошибка записи файла"),
                          file.fileName() + QLatin1Char('\n') + file.errorString(), QMessageBox::Ok);
    file.cancelWriting();
    return false;
}

// A change the file did not take is undone on the screen too.
void EditWindow::dropCurrProjList()
{
    if (!writeProject(ui->currProjBox->title(), listTexts(ui->currentProjectList)))
        OpenPrj(false);
    enableWholeProjectButtons();
}

void EditWindow::curProjChanged(int row)
{
    ui->newprjButton->setEnabled(true);
    ui->renamePrjButton->setEnabled(true);
    ui->debugProjButton->setEnabled(false);
    ui->editAllPrjButton->setEnabled(false);

    QListWidgetItem *project = row < 0 ? nullptr : ui->projectsList->currentItem();
    if (project)
        curProgName = project->text();
    if (!project || curProgName == placeholderName()) {
        ui->delprjButton->setEnabled(false);
        ui->renamePrjButton->setEnabled(false);
        disableProgProj();
        return;
    }

    ui->delprjButton->setEnabled(true);
    OpenPrj(false);
    enableWholeProjectButtons();
}

// A project whose programs are all missing or empty cannot be opened or
// compiled as a whole.
void EditWindow::enableWholeProjectButtons()
{
    bool anyProgram = false;
    for (int i = 0; i < ui->currentProjectList->count() && !anyProgram; ++i) {
        // A hand-edited line may hold a NUL, which names no file.
        const QString name = ui->currentProjectList->item(i)->text();
        if (name.contains(QChar::Null))
            continue;
        const QFileInfo program(name + QStringLiteral(".zu"));
        anyProgram = program.exists() && program.size() > 0;
    }
    ui->debugProjButton->setEnabled(anyProgram);
    ui->editAllPrjButton->setEnabled(anyProgram);
}

void EditWindow::curProgPrjChanged(int row)
{
    ui->newProgPrjButton->setEnabled(true);
    const QList<QPushButton *> buttons { ui->editProgPrjButton, ui->downInPrjButton, ui->upInPrjButton,
                                         ui->removeProgPrjButton };
    QListWidgetItem *item = row < 0 ? nullptr : ui->currentProjectList->item(row);
    if (!item || item->text() == placeholderName()) {
        for (QPushButton *button : buttons)
            button->setEnabled(false);
        return;
    }
    curProgName = item->text();

    ui->editProgPrjButton->setEnabled(true);
    ui->upInPrjButton->setEnabled(row > 0);
    ui->downInPrjButton->setEnabled(row < ui->currentProjectList->count() - 1);
    ui->removeProgPrjButton->setEnabled(true);
    // An open program is neither opened again nor taken out of the project.
    if (getOpenedList().contains(item->text())) {
        ui->editProgPrjButton->setEnabled(false);
        ui->removeProgPrjButton->setEnabled(false);
    }
}

bool EditWindow::selectProjByName(QString name)
{
    ui->selectorTabs->setCurrentWidget(ui->projectsTab);
    const QList<QListWidgetItem *> found = ui->projectsList->findItems(name, Qt::MatchExactly);
    if (found.isEmpty())
        return false;
    ui->projectsList->setCurrentItem(found.first());
    return true;
}

bool EditWindow::isProgInProj(QString name) const
{
    return !ui->currentProjectList->findItems(name, Qt::MatchExactly).isEmpty();
}

void EditWindow::saveChangedInProj()
{
    const int current = ui->tabWidget->currentIndex();
    for (int tab = 0; tab < ui->tabWidget->count(); ++tab) {
        ZuSourceCode *editor = editorAt(tab);
        if (!editor || !editor->isChanged() || tab == current)
            continue;
        // A program listed twice is still written once.
        if (isProgInProj(ui->tabWidget->tabText(tab)))
            editor->toSave();
    }
}

void EditWindow::on_addprjButton_clicked()
{
    if (QListWidgetItem *program = ui->programsList->currentItem()) {
        ui->currentProjectList->addItem(program->text());
        dropCurrProjList();
    }
}

void EditWindow::on_removeProgPrjButton_clicked()
{
    QListWidget *list = ui->currentProjectList;
    if (!list->currentItem())
        return;
    const QString name = list->currentItem()->text();
    const int row = list->currentRow();
    const QMessageBox::StandardButton answer = QMessageBox::question(
        this, tr("ВНИМАНИЕ!"),
        tr("Программа будет удалена только из списка текущего проекта.\n"
           "Программа сохранена на постоянном носителе и может быть включена в проект снова.\n\n"
           "Удалить программу ")
            + name + tr(" из проекта?"),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::NoButton);
    if (answer != QMessageBox::Yes)
        return;

    // The list may have been read again while the question was open.
    QListWidgetItem *item = list->item(row);
    if (!item || item->text() != name) {
        const QList<QListWidgetItem *> found = list->findItems(name, Qt::MatchExactly);
        if (found.isEmpty())
            return;
        item = found.first();
    }
    delete list->takeItem(list->row(item));
    if (list->count() > 0) {
        if (list->currentRow() != 0)
            list->setCurrentRow(0);
        else
            curProgPrjChanged(0);
    }
    dropCurrProjList();
}

void EditWindow::moveInProject(int step)
{
    QListWidget *list = ui->currentProjectList;
    const int row = list->currentRow();
    const int target = row + step;
    if (row < 0 || target < 0 || target >= list->count())
        return;
    list->insertItem(target, list->takeItem(row));
    dropCurrProjList();
    list->setCurrentRow(target);
}

void EditWindow::on_upInPrjButton_clicked()
{
    moveInProject(-1);
}

void EditWindow::on_downInPrjButton_clicked()
{
    moveInProject(1);
}

void EditWindow::on_editAllPrjButton_clicked()
{
    openPrograms(listTexts(ui->currentProjectList));
}

void EditWindow::on_projectsList_itemActivated(QListWidgetItem *)
{
    on_editAllPrjButton_clicked();
}

void EditWindow::on_currentProjectList_itemActivated(QListWidgetItem *item)
{
    if (!alreadyOpen(item->text()))
        on_editButton_clicked();
}

void EditWindow::on_renamePrjButton_clicked()
{
    if (QListWidgetItem *project = ui->projectsList->currentItem())
        editName(project);
}

// A new project starts with the program of its name. Files already there
// are left as they are.
void EditWindow::zupselected(bool project, QString name)
{
    if (project && !acceptName(name, ".zup"))
        return;
    if (project) {
        if (!QFile::exists(name + QStringLiteral(".zup")))
            writeProject(name, { name });
        dirChanged(QString());
        selectProjByName(name);
    }
    if (!createEmptyFile(name + QStringLiteral(".zu")))
        return;
    if (!findOpenTab(name))
        addTextTab(name);
    if (!project) {
        ui->selectorTabs->setCurrentWidget(ui->programsTab);
        const QList<QListWidgetItem *> found = ui->programsList->findItems(name, Qt::MatchExactly);
        if (!found.isEmpty())
            ui->programsList->setCurrentItem(found.first());
    }
}

void EditWindow::saveEntireProject()
{
    if (isProgInProj(currTabName()))
        saveCurrentProg();
    saveChangedInProj();
    dropCurrProjList();
}
