#include "progdelete.h"
#include "ui_progdelete.h"

#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPointer>

ProgDelete::ProgDelete(QWidget *parent, QString name, QString dir)
    : QDialog(parent)
    , ui(new Ui::ProgDelete)
{
    ui->setupUi(this);
    progName = name;
    dirWatcher.addPath(dir);
    ui->nameLabel->setText(name);
    connect(&dirWatcher, &QFileSystemWatcher::directoryChanged, this, &ProgDelete::fillBoxes);
    // The caller shows the dialog and forgets it.
    connect(this, &QDialog::finished, this, &QObject::deleteLater);
    fillBoxes(dir);
}

ProgDelete::~ProgDelete()
{
    delete ui;
}

// The program's files, one check box each, in the order they are shown.
QList<ProgDelete::FileBox> ProgDelete::fileBoxes() const
{
    return {
        { ui->sourceBox, ".zu" },
        { ui->stringsBox, ".st" },
        { ui->varnamesBox, ".vn" },
        { ui->execBox, ".cp" },
    };
}

QString ProgDelete::programFile(const char *extension) const
{
    return QDir(progDir).filePath(progName + QLatin1String(extension));
}

// Check marks are left alone: a file that reappears keeps the user's choice.
void ProgDelete::fillBoxes(QString dir)
{
    progDir = dir;
    for (const FileBox &file : fileBoxes())
        file.box->setEnabled(QFile::exists(programFile(file.extension)));
}

// A file that is already gone is passed over; one that cannot be removed is
// reported, and the others are still removed.
void ProgDelete::on_buttonBox_accepted()
{
    // The dialog is already closed and may go while a box is open: keep
    // what the loop needs.
    QStringList checked;
    for (const FileBox &file : fileBoxes()) {
        if (file.box->isChecked())
            checked << programFile(file.extension);
    }
    const QPointer<QWidget> owner = parentWidget();
    for (const QString &path : qAsConst(checked)) {
        QFile program(path);
        if (!program.remove() && program.exists()) {
            QMessageBox::critical(owner, tr("Ошибка удаления файла"),
                                  path + QLatin1Char('\n') + program.errorString(), QMessageBox::Ok);
        }
    }
}
