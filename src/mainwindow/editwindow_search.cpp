// Search and replace in the current program or across the current project.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "searchreplace.h"

#include <QCheckBox>
#include <QComboBox>
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
}

void EditWindow::replaceRequested()
{
}

void EditWindow::replaceAllRequested()
{
}
