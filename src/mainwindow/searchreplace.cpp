#include "searchreplace.h"
#include "ui_searchreplace.h"

SearchReplace::SearchReplace(QWidget *parent)
    : QDialog(parent)
    , ui(new Ui::SearchReplace)
{
    ui->setupUi(this);
}

SearchReplace::~SearchReplace()
{
    delete ui;
}

QComboBox *SearchReplace::searchFor() const { return ui->searchFor; }
QComboBox *SearchReplace::replaceTo() const { return ui->replaceTo; }
QPushButton *SearchReplace::searchNext() const { return ui->searchNext; }
QPushButton *SearchReplace::replaceIt() const { return ui->replaceIt; }
QPushButton *SearchReplace::replaceAll() const { return ui->replaceAll; }
QCheckBox *SearchReplace::ignorecase() const { return ui->ignorecase; }
QCheckBox *SearchReplace::wholeword() const { return ui->wholeword; }
QRadioButton *SearchReplace::inprogram() const { return ui->inprogram; }
QRadioButton *SearchReplace::entireproject() const { return ui->entireproject; }
QDialogButtonBox *SearchReplace::buttonBox() const { return ui->buttonBox; }
