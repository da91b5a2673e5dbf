#ifndef ZUPORZU_H
#define ZUPORZU_H

#include <QDialog>

namespace Ui {
class zuporzu;
}

// Asks what to create under a name that is neither a program nor a project
// yet. It only reports the choice; the receiver of zupselected() creates it.
class zuporzu : public QDialog
{
    Q_OBJECT

public:
    zuporzu(QString name, QWidget *parent);
    ~zuporzu() override;

signals:
    void zupselected(bool isProject, QString name);

private slots:
    void on_buttonBox_accepted();

private:
    Ui::zuporzu *ui;
    QString name;
};

#endif // ZUPORZU_H
