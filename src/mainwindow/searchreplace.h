#ifndef SEARCHREPLACE_H
#define SEARCHREPLACE_H

#include <QDialog>

namespace Ui {
class SearchReplace;
}

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QPushButton;
class QRadioButton;

// The modeless search and replace panel. It has no behaviour of its own:
// the main window reads its options and reacts to its buttons.
class SearchReplace : public QDialog
{
    Q_OBJECT

public:
    explicit SearchReplace(QWidget *parent = nullptr);
    ~SearchReplace() override;

    QComboBox *searchFor() const;
    QComboBox *replaceTo() const;
    QPushButton *searchNext() const;
    QPushButton *replaceIt() const;
    QPushButton *replaceAll() const;
    QCheckBox *ignorecase() const;
    QCheckBox *wholeword() const;
    QRadioButton *inprogram() const;
    QRadioButton *entireproject() const;
    QDialogButtonBox *buttonBox() const;

private:
    Ui::SearchReplace *ui;
};

#endif // SEARCHREPLACE_H
