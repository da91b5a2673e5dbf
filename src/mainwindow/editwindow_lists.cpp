// The program and project lists of the programs directory.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "progdelete.h"
#include "programname.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QToolTip>

static const char programExtension[] = ".zu";
static const char projectExtension[] = ".zup";

QString EditWindow::placeholderName()
{
    return tr("Задайте имя");
}

QStringList EditWindow::namesOnDisk(const char *ext)
{
    const QString extension = QString::fromLatin1(ext);
    const QFileInfoList entries = QDir(QString()).entryInfoList(
        { QLatin1Char('*') + extension }, QDir::Files | QDir::NoSymLinks, QDir::Name);
    QStringList names;
    for (const QFileInfo &entry : entries) {
        // The filter ignores case, the cut does not: "A.ZU" keeps its name.
        const QString fileName = entry.fileName();
        names << fileName.left(fileName.lastIndexOf(extension));
    }
    return names;
}

QStringList EditWindow::listTexts(const QListWidget *list)
{
    QStringList texts;
    texts.reserve(list->count());
    for (int row = 0; row < list->count(); ++row)
        texts << list->item(row)->text();
    return texts;
}

void EditWindow::fillProgramsList(QListWidget *list, const char *ext)
{
    refill(list, namesOnDisk(ext));
}

void EditWindow::refill(QListWidget *list, const QStringList &names)
{
    listedNames.insert(list, names);
    const QString remembered = list->currentItem() ? list->currentItem()->text() : QString();
    list->clear();
    disconnect(list, &QListWidget::itemChanged, this, &EditWindow::progRenamed);
    for (const QString &name : names) {
        auto *item = new QListWidgetItem(name, list);
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled);
    }
    connect(list, &QListWidget::itemChanged, this, &EditWindow::progRenamed);

    if (list->count() > 0) {
        list->setCurrentRow(0);
        const QList<QListWidgetItem *> found = list->findItems(remembered, Qt::MatchExactly);
        if (!found.isEmpty())
            list->setCurrentItem(found.first());
    }
}

// The watcher names the directory; other callers pass nothing and always
// get fresh lists. Saving a file through a temporary one changes the
// directory but not the names: on such a notification a list that shows
// what it last read stays as it is, selections and all.
void EditWindow::dirChanged(QString s)
{
    const std::pair<QListWidget *, const char *> lists[] = {
        { ui->programsList, programExtension },
        { ui->projectsList, projectExtension },
    };
    for (const auto &list : lists) {
        const QStringList names = namesOnDisk(list.second);
        if (s.isEmpty() || names != listedNames.value(list.first) || names != listTexts(list.first))
            refill(list.first, names);
    }
}

void EditWindow::setProgramsDir(const QString &dir)
{
    if (enterProgramsDir(dir))
        programsDir = dir;
}

void EditWindow::newSettingsProgramsDir(QString hostDir, QString dir)
{
    hostDirArg = hostDir;
    if (!enterProgramsDir(dir))
        return;
    programsDir = dir;
    emit changeVariant(QStringLiteral("programsDir"), QVariant(dir), false, true);
}

// The watch is on a directory, not on the name ".": it must move with the
// current directory. A directory that cannot be entered leaves everything
// as it was; the user hears of it once, not at every exchange of settings
// that still names it.
bool EditWindow::enterProgramsDir(const QString &dir)
{
    if (!QDir::setCurrent(dir)) {
        if (dir != unenterableDir) {
            unenterableDir = dir;
            QMessageBox::critical(this, tr("ВНИМАНИЕ!"),
                                  tr("Каталог программ «%1» не найден или недоступен.\n"
                                     "Программы остаются в каталоге «%2».")
                                      .arg(dir, QDir::toNativeSeparators(QDir::currentPath())),
                                  QMessageBox::Ok);
        }
        return false;
    }
    unenterableDir.clear();
    const QStringList watched = dirWatcher.directories();
    if (!watched.isEmpty())
        dirWatcher.removePaths(watched);
    dirWatcher.addPath(QDir::currentPath());
    dirChanged(QString());
    return true;
}

void EditWindow::curProgChanged(int row)
{
    ui->newProgButton->setEnabled(true);
    const QList<QPushButton *> programButtons { ui->editButton, ui->delProgButton, ui->renameButton };
    if (row >= 0) {
        QListWidgetItem *current = ui->programsList->currentItem();
        curProgName = current ? current->text() : QString();
    }
    if (row < 0 || curProgName == placeholderName()) {
        for (QPushButton *button : programButtons)
            button->setEnabled(false);
        ui->addprjButton->setEnabled(false);
        return;
    }

    ui->addprjButton->setEnabled(ui->currProjBox->isEnabled());
    // An open program may be neither renamed nor deleted; selecting it
    // brings its tab to the front.
    const bool open = alreadyOpen(curProgName);
    for (QPushButton *button : programButtons)
        button->setEnabled(!open);

    if (!ui->currentProjectList->findItems(curProgName, Qt::MatchExactly).isEmpty())
        ui->addprjButton->setEnabled(false);
}

QListWidget *EditWindow::currentList(QObject *sender) const
{
    if (sender == ui->newProgButton || sender == ui->editButton || sender == ui->delProgButton
        || sender == ui->programsList)
        return ui->programsList;
    if (sender == ui->newprjButton || sender == ui->delprjButton || sender == ui->projectsList)
        return ui->projectsList;
    if (sender == ui->newProgPrjButton || sender == ui->editProgPrjButton
        || sender == ui->removeProgPrjButton || sender == ui->currentProjectList)
        return ui->currentProjectList;
    return nullptr;
}

void EditWindow::editName(QListWidgetItem *item)
{
    QListWidget *list = item->listWidget();
    list->setFocus(Qt::OtherFocusReason);
    list->setCurrentItem(item);
    // The item may have been current already while another list's item
    // was the last made current: the rename's old name is this one.
    curProgName = item->text();
    list->editItem(item);
}

QListWidgetItem *EditWindow::newItemInList(QListWidget *list, QString name)
{
    const QList<QListWidgetItem *> found = list->findItems(name, Qt::MatchExactly);
    if (!found.isEmpty())
        return found.first();

    auto *item = new QListWidgetItem(name, list);
    disconnect(list, &QListWidget::itemChanged, this, &EditWindow::progRenamed);
    item->setFlags(item->flags() | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled);
    connect(list, &QListWidget::itemChanged, this, &EditWindow::progRenamed);
    return item;
}

void EditWindow::on_newProgButton_clicked()
{
    QListWidget *list = currentList(sender());
    if (!list)
        return;
    newItemMode = true;
    editName(newItemInList(list, placeholderName()));
}

// The unnamed new item goes when its editor closes, named or not: a named
// one comes back through the directory watcher.
void EditWindow::nameEditClosed(QWidget *, QAbstractItemDelegate::EndEditHint)
{
    auto *list = qobject_cast<QListWidget *>(sender() ? sender()->parent() : nullptr);
    if (!list)
        return;
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->text() == placeholderName())
            delete list->takeItem(row);
    }
}

void EditWindow::on_renameButton_clicked()
{
    if (QListWidgetItem *item = ui->programsList->currentItem())
        editName(item);
}

void EditWindow::on_programsList_itemActivated(QListWidgetItem *item)
{
    if (!alreadyOpen(item->text()))
        on_editButton_clicked();
}

void EditWindow::progRenamed(QListWidgetItem *item)
{
    QListWidget *list = item->listWidget();
    const bool project = list == ui->projectsList;
    const char *ext = project ? projectExtension : programExtension;
    const QString name = item->text();
    const QString target = name + QLatin1String(ext);

    if (!acceptName(name, ext)) {
        rejectName(item);
        return;
    }

    if (QFile::exists(target)) {
        QMessageBox::critical(this, tr("ВНИМАНИЕ!"),
                              (project ? tr("Проект") : tr("Программа")) + tr(" с именем ") + name
                                  + tr(" уже существует.\nНеобходимо создавать с другим именем."),
                              QMessageBox::Ok);
        if (list != ui->currentProjectList)
            fillProgramsList(list, ext);
        return;
    }

    if (!newItemMode) {
        if (name == curProgName)
            return;
        QFile file(curProgName + QLatin1String(ext));
        if (!file.rename(target)) {
            fileError(tr("Ошибка переименования файла"),
                      file.fileName() + QStringLiteral(" → ") + target, file.errorString());
            rejectName(item);
            return;
        }
        if (ui->selectorTabs->currentIndex() == 2)
            dropCurrProjList();
        return;
    }

    if (name == placeholderName()) {
        newItemMode = false;
        return;
    }
    if (!createEmptyFile(target)) {
        rejectName(item);
        return;
    }
    newItemMode = false;
    if (list == ui->currentProjectList)
        dropCurrProjList();
    if (project) {
        enableProgProj();
        ui->selectorTabs->setCurrentIndex(0);
        QToolTip::showText(QPoint(0, 0), tr("Выберите программы и включите в новый проект"), ui->programsList);
    }
}

// A name a person gave: a bad one is refused with a box that says why.
bool EditWindow::acceptName(const QString &name, const char *extension)
{
    const QString problem = nameProblem(name, extension);
    if (problem.isEmpty())
        return true;
    QMessageBox::critical(this, tr("ВНИМАНИЕ!"), refusedNameText(name, problem), QMessageBox::Ok);
    return false;
}

void EditWindow::fileError(const QString &title, const QString &what, const QString &why)
{
    QMessageBox::critical(this, title, what + QLatin1Char('\n') + why, QMessageBox::Ok);
}

// Makes the empty file of a new program or project; a file that is already
// there is left as it is.
bool EditWindow::createEmptyFile(const QString &fileName)
{
    QFile file(fileName);
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || QFileInfo(fileName).isFile())
        return true;
    fileError(tr("Ошибка создания файла"), fileName, file.errorString());
    return false;
}

// A name that would leave the directory fails like a failed create or
// rename: nothing is written and the list shows what is on disk.
void EditWindow::rejectName(QListWidgetItem *item)
{
    QListWidget *list = item->listWidget();
    const QSignalBlocker blocker(list);
    if (newItemMode) {
        newItemMode = false;
        delete list->takeItem(list->row(item));
        // The blocked signals would have shown the project now current.
        if (list == ui->projectsList)
            curProjChanged(list->currentRow());
    } else {
        item->setText(curProgName);
    }
}

void EditWindow::on_delProgButton_clicked()
{
    QListWidget *list = currentList(sender());
    QListWidgetItem *item = list ? list->currentItem() : nullptr;
    if (!item)
        return;

    if (list == ui->projectsList) {
        // The list may be read again while the question is open: keep the
        // name, not the item.
        const QString name = item->text();
        const QMessageBox::StandardButton answer = QMessageBox::question(
            this, tr("ВНИМАНИЕ!"),
            tr("При удалении проекта не удаляются программы входящие в него.\n"
               "Программы следует удалять по-отдельности.Восстановление удаленного проекта "
               "возможно средствами операционной системы\n\nУдалить проект ")
                + name + QStringLiteral(" ?"),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::NoButton);
        if (answer != QMessageBox::Yes)
            return;
        // The box lets go of the project before its file goes.
        const bool current = ui->currProjBox->title() == name;
        if (current)
            disableProgProj();
        QFile file(name + QLatin1String(projectExtension));
        if (!file.remove()) {
            fileError(tr("Ошибка удаления файла"), file.fileName(), file.errorString());
            if (current)
                curProjChanged(ui->projectsList->currentRow());
        }
        return;
    }

    auto *dialog = new ProgDelete(this, item->text(), programsDir);
    dialog->setVisible(true);
}

// Not every file system keeps a birth time; the time the file's entry last
// changed stands in for it then.
static QDateTime creationTime(const QFileInfo &file)
{
    const QDateTime born = file.birthTime();
    return born.isValid() ? born : file.metadataChangeTime();
}

void EditWindow::onItemEntered(QListWidgetItem *item)
{
    QListWidget *list = item->listWidget();
    const char *ext = list == ui->projectsList ? projectExtension : programExtension;
    const QFileInfoList found = QDir(QString()).entryInfoList(
        { item->text() + QLatin1String(ext) }, QDir::NoFilter, QDir::NoSort);
    if (found.isEmpty())
        return;

    const QFileInfo &file = found.first();
    const QStringList lines {
        file.absoluteFilePath(),
        tr("Владелец:\t") + file.owner(),
        tr("Изменен:\t") + file.lastModified().toString(Qt::TextDate),
        tr("Прочитан:\t") + file.lastRead().toString(Qt::TextDate),
        tr("Создан:\t") + creationTime(file).toString(Qt::TextDate),
    };
    const QRect rect = list->visualItemRect(item);
    QToolTip::showText(list->mapToGlobal(QPoint(rect.left(), rect.bottom())), lines.join(QLatin1Char('\n')));
}
