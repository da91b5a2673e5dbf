// Search and replace in the current program or across the current project.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "searchreplace.h"
#include "zusourcecode.h"

#include <QCheckBox>
#include <QComboBox>
#include <QMessageBox>
#include <QRadioButton>

// Puts the text being used at the top of its history unless an item holds
// exactly that text already, and returns the history first to last.
static QStringList rememberText(QComboBox *box)
{
    const QString text = box->currentText();
    if (box->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
        box->insertItem(0, text);
    QStringList items;
    items.reserve(box->count());
    for (int i = 0; i < box->count(); ++i)
        items << box->itemText(i);
    return items;
}

void EditWindow::storeSearchSettings()
{
    emit changeVariant(QStringLiteral("inprogram"), search->inprogram()->isChecked(), false, true);
    emit changeVariant(QStringLiteral("entireproject"), search->entireproject()->isChecked(), false, true);
    emit changeVariant(QStringLiteral("ignorecase"), search->ignorecase()->isChecked(), false, true);
    emit changeVariant(QStringLiteral("wholeword"), search->wholeword()->isChecked(), false, true);
    emit changeVariant(QStringLiteral("searchFor"), rememberText(search->searchFor()), false, true);
    emit changeVariant(QStringLiteral("replaceTo"), rememberText(search->replaceTo()), false, true);
}

void EditWindow::on_seacrhButton_toggled(bool checked)
{
    search->setVisible(checked);
}

// The panel was closed by its own button: the search button must follow
// without hiding the panel a second time.
void EditWindow::hideSearch()
{
    const QSignalBlocker blocker(ui->seacrhButton);
    ui->seacrhButton->setChecked(false);
    storeSearchSettings();
}

void EditWindow::searchRequested()
{
    storeSearchSettings();
    searchAndReplace(false, false);
}

void EditWindow::replaceRequested()
{
    storeSearchSettings();
    searchAndReplace(true, false);
}

void EditWindow::replaceAllRequested()
{
    storeSearchSettings();
    searchAndReplace(true, true);
}

void EditWindow::searchAndReplace(bool replace, bool all)
{
    int handled = 0;
    if (search->entireproject()->isChecked()) {
        if (!all) {
            searchProjectOnce(replace);
            return;
        }
        handled = searchAllInProject(replace);
    } else {
        ZuSourceCode *editor = currentEditor();
        if (!editor)
            return;
        handled = searchEditor(editor, replace, all);
    }
    if (replace && all)
        QMessageBox::warning(this, tr("Внимание!"),
                             tr("Найдено и заменено ") + QString::number(handled) + tr(" фрагментов"),
                             QMessageBox::Ok);
}

// The panel's options are read for each editor anew.
int EditWindow::searchEditor(ZuSourceCode *editor, bool replace, bool all)
{
    return editor->searchAndReplace(search->searchFor()->currentText(), search->replaceTo()->currentText(), replace,
                                    search->ignorecase()->isChecked(), search->wholeword()->isChecked(), all);
}

// One occurrence: from the cursor to the end of the current program, then
// each program after it in the project, from its start, round to the one
// before it. The current program's text above the cursor is not searched.
void EditWindow::searchProjectOnce(bool replace)
{
    ZuSourceCode *editor = currentEditor();
    if (!editor)
        return;
    if (searchEditor(editor, replace, false))
        return;
    const QStringList programs = listTexts(ui->currentProjectList);
    const int start = programs.indexOf(currTabName());
    // A program outside the project has no place in it to go round from.
    for (int step = 1; start >= 0 && step < programs.size(); ++step) {
        const QString &name = programs.at((start + step) % programs.size());
        editor = bringForward(name);
        // A program whose tab could not be opened is passed over.
        if (!editor)
            continue;
        editor->moveCursor(QTextCursor::Start);
        if (searchEditor(editor, replace, false))
            return;
    }
    QMessageBox::warning(this, tr("Внимание!"), tr("Искомая строка не найдена ни в одной из программ проекта"),
                         QMessageBox::Ok);
}

// Every program of the project, each opened first and gone through from its
// start, as often as the project lists it; other programs are left alone.
// The last one gone through stays current. Returns the occurrences handled.
int EditWindow::searchAllInProject(bool replace)
{
    on_editAllPrjButton_clicked();
    int handled = 0;
    for (int tab = 0; tab < ui->tabWidget->count(); ++tab) {
        const QString name = ui->tabWidget->tabText(tab);
        const int listed = ui->currentProjectList->findItems(name, Qt::MatchExactly).size();
        for (int i = 0; i < listed; ++i) {
            findOpenTab(name);
            handled += searchEditor(editorAt(tab), replace, true);
        }
    }
    return handled;
}
