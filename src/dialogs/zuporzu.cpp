#include "zuporzu.h"
#include "ui_zuporzu.h"

zuporzu::zuporzu(QString name, QWidget *parent)
    : QDialog(parent)
    , ui(new Ui::zuporzu)
    , name(name)
{
    ui->setupUi(this);
    // The caller shows the dialog and forgets it.
    connect(this, &QDialog::finished, this, &QObject::deleteLater);
}

zuporzu::~zuporzu()
{
    delete ui;
}

// The radio buttons are exclusive, so the first one alone tells the choice.
void zuporzu::on_buttonBox_accepted()
{
    emit zupselected(ui->radioButton->isChecked(), name);
}
