// The editor tabs and the programs open in them.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "programname.h"
#include "syntaxer.h"
#include "zuporzu.h"
#include "zusourcecode.h"

#include <QCompleter>
#include <QStringListModel>

#include <QFile>
#include <QHBoxLayout>
#include <QMessageBox>

#include <utility>

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
    // A program is open in one tab at most: two would edit one file, and
    // the last save would win.
    if (findOpenTab(name))
        return ui->tabWidget->currentWidget();
    if (!acceptName(name, ".zu"))
        return nullptr;
    // The page is the tab widget's from the start: the editor loads its
    // file as it is made, and a box about that opens over this window.
    auto *page = new QWidget(ui->tabWidget);
    auto *layout = new QHBoxLayout(page);
    auto *editor = new ZuSourceCode(page, name, this, programsDir);
    // Each program keeps its highlighter and colours, so that a tab switch
    // colours nothing again; the rules are made once for all of them. One
    // completer serves whichever tab is current.
    if (!syntaxRules)
        syntaxRules = QSharedPointer<SyntaxRules>::create(operList, typeList);
    new Syntaxer(editor->document(), syntaxRules, editor);
    if (!completer) {
        completer = new QCompleter(this);
        QStringList names = operList + typeList;
        names.removeDuplicates();
        completer->setModel(new QStringListModel(names, completer));
        completer->setCaseSensitivity(Qt::CaseSensitive);
        completer->setWrapAround(false);
        completer->setCompletionMode(QCompleter::PopupCompletion);
        changeCompleter(editor);
    }
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

bool EditWindow::alreadyOpen(QString name)
{
    for (int i = 0; i < ui->tabWidget->count(); ++i) {
        if (ui->tabWidget->tabText(i) == name) {
            ui->tabWidget->setCurrentIndex(i);
            return true;
        }
    }
    return false;
}

void EditWindow::openProgsList(QStringList names)
{
    openPrograms(names);
}

namespace {

// A heading with the count, then the first lines of a list that may be
// thousands long.
QString boxSection(const QString &heading, const QStringList &lines)
{
    const int shown = 20;
    QString text = heading.arg(lines.size()) + QLatin1Char('\n')
                   + lines.mid(0, shown).join(QLatin1Char('\n'));
    if (lines.size() > shown)
        text += EditWindow::tr("\nи ещё %1").arg(lines.size() - shown);
    return text;
}

} // namespace

// Names no person typed just now (remembered ones, a project's lines) open
// together, with one box at most, however many there are: it names the
// bad names and the programs whose files cannot be read, and none of them
// gets a tab.
void EditWindow::openPrograms(const QStringList &names)
{
    QStringList badNames;
    openingSeveral = true;
    for (const QString &name : names) {
        if (!nameProblem(name, ".zu").isEmpty()) {
            badNames << name;
            continue;
        }
        if (alreadyOpen(name))
            continue;
        QFile file(name + QStringLiteral(".zu"));
        if (file.open(QIODevice::ReadOnly))
            addTextTab(name);
        else
            loadFailures << LoadFailure { tr("Ошибка открытия файла"), name, file.errorString() };
    }
    openingSeveral = false;
    const QList<LoadFailure> failures = std::exchange(loadFailures, {});

    if (badNames.isEmpty() && failures.size() == 1) {
        fileError(failures.first().title, failures.first().name, failures.first().why);
        return;
    }
    QStringList sections;
    if (!badNames.isEmpty())
        sections << boxSection(tr("Недопустимые имена программ пропущены (%1):"), badNames);
    if (!failures.isEmpty()) {
        QStringList lines;
        for (const LoadFailure &failure : failures)
            lines << failure.name + QStringLiteral(": ") + failure.why;
        sections << boxSection(tr("Не удалось прочитать программы (%1):"), lines);
    }
    if (!sections.isEmpty())
        QMessageBox::critical(this, tr("ВНИМАНИЕ!"), sections.join(QStringLiteral("\n\n")), QMessageBox::Ok);
}

void EditWindow::loadFailed(const QString &title, const QString &name, const QString &why)
{
    ++loadFailureCount;
    if (openingSeveral)
        loadFailures << LoadFailure { title, name, why };
    else
        fileError(title, name, why);
}

void EditWindow::tabChanged(int index)
{
    if (index < 0)
        return;
    ZuSourceCode *editor = currentEditor();
    if (!editor)
        return;

    changeCompleter(editor);
    for (QPushButton *button : { ui->saveProgramButton, ui->saveAsProgramButton, ui->undoButton, ui->redoButton })
        disconnect(button, &QPushButton::clicked, nullptr, nullptr);
    connect(ui->saveProgramButton, &QPushButton::clicked, editor, &ZuSourceCode::toSave);
    connect(ui->saveAsProgramButton, &QPushButton::clicked, editor, &ZuSourceCode::toSaveAs);
    connect(ui->undoButton, &QPushButton::clicked, editor, &QPlainTextEdit::undo);
    connect(ui->redoButton, &QPushButton::clicked, editor, &QPlainTextEdit::redo);
    setEditButtons(editor->isChanged(), editor->isChanged(), editor->isUndoAvailable(),
                   editor->isRedoAvailable(), editor->isCompileEnabled());
    emit changeVariant(QStringLiteral("openedtab"), currTabName(), false, true);
}

void EditWindow::changeCompleter(ZuSourceCode *editor)
{
    if (!completer)
        return;
    // Only the current editor inserts what the popup offers.
    const auto activated = qOverload<const QString &>(&QCompleter::activated);
    disconnect(completer, activated, nullptr, nullptr);
    completer->setWidget(editor);
    connect(completer, activated, editor, &ZuSourceCode::insertCompleter);
}

void EditWindow::tabChanged(QWidget *page)
{
    tabChanged(ui->tabWidget->indexOf(page));
}

void EditWindow::tabClose(int index)
{
    ZuSourceCode *editor = editorAt(index);
    if (!editor || editor->canClose(false)) {
        QWidget *page = ui->tabWidget->widget(index);
        ui->tabWidget->removeTab(index);
        // A closed program is no longer watched or kept in memory. The
        // request may come from the editor's own slot, so the page goes
        // once control is back in the event loop.
        if (editor)
            editor->stopWatching();
        if (page)
            page->deleteLater();
        if (ui->tabWidget->count() == 0) {
            setEditButtons(0, 0, 0, 0, 0);
            syntaxRules.reset();
            delete completer;
            completer = nullptr;
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

// Goes to the program's tab, or opens it if the project or the program
// list knows it.
void EditWindow::switchOrLoad(QString name)
{
    if (findOpenTab(name))
        return;
    for (QListWidget *list : { ui->currentProjectList, ui->programsList }) {
        if (!list->findItems(name, Qt::MatchExactly).isEmpty()) {
            addTextTab(name);
            return;
        }
    }
}

// The program's editor once its tab is current, opened if need be; null
// when the tab did not come forward (no such program, or a bad name), or
// came forward empty because its file could not be read, after the box
// that says so.
ZuSourceCode *EditWindow::bringForward(const QString &name)
{
    const int failures = loadFailureCount;
    switchOrLoad(name);
    if (loadFailureCount != failures)
        return nullptr;
    return currTabName() == name ? currentEditor() : nullptr;
}

// The host's menu asks for a program or project by name; a name with no
// file yet becomes one after the user says which.
void EditWindow::addProgListAndEdit(QString name)
{
    if (!acceptName(name, ".zu"))
        return;
    setVisible(true);
    activateWindow();
    newItemInList(ui->programsList, name);
    if (QFile::exists(name + QStringLiteral(".zup"))) {
        selectProjByName(name);
        on_editAllPrjButton_clicked();
    } else if (QFile::exists(name + QStringLiteral(".zu"))) {
        if (!findOpenTab(name))
            addTextTab(name);
    } else {
        auto *dialog = new zuporzu(name, this);
        connect(dialog, &zuporzu::zupselected, this, &EditWindow::zupselected);
        dialog->setVisible(true);
    }
}

// The host saves what it is about to run, when the user wants that.
void EditWindow::saveFileIfChanged(QString name)
{
    if (!autoSaveOnExec)
        return;
    // The host asks on every run: a bad name is refused once.
    if (!nameProblem(name, ".zu").isEmpty()) {
        if (!refusedHostNames.contains(name)) {
            refusedHostNames.insert(name);
            acceptName(name, ".zu");
        }
        return;
    }
    if (selectProjByName(name))
        saveEntireProject();
    else if (findOpenTab(name))
        saveCurrentProg();
}

void EditWindow::saveCurrentProg()
{
    ZuSourceCode *editor = currentEditor();
    if (editor && editor->isChanged())
        editor->toSave();
}

// What compiling the current program takes: the whole current project,
// when the program is one of it.
void EditWindow::saveChangedProgOrProj()
{
    if (isProgInProj(currTabName()))
        saveChangedInProj();
    saveCurrentProg();
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
    QListWidget *list = currentList(sender());
    if (QListWidgetItem *item = list ? list->currentItem() : nullptr)
        addTextTab(item->text());
}
