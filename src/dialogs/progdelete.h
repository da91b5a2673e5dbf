#ifndef PROGDELETE_H
#define PROGDELETE_H

#include <QDialog>
#include <QFileSystemWatcher>
#include <QList>

namespace Ui {
class ProgDelete;
}

class QCheckBox;

// Lets the user pick which of a program's files to delete. The programs
// directory is watched while the dialog is open, so each check box is
// enabled only while its file exists. The dialog deletes itself on closing.
class ProgDelete : public QDialog
{
    Q_OBJECT

public:
    ProgDelete(QWidget *parent, QString name, QString dir);
    ~ProgDelete() override;

public slots:
    void fillBoxes(QString dir);

private slots:
    void on_buttonBox_accepted();

private:
    struct FileBox
    {
        QCheckBox *box;
        const char *extension;
    };
    QList<FileBox> fileBoxes() const;
    QString programFile(const char *extension) const;

    Ui::ProgDelete *ui;
    QFileSystemWatcher dirWatcher;
    QString progName;
    QString progDir;
};

#endif // PROGDELETE_H
