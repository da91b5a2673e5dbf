#ifndef BOXANSWERER_H
#define BOXANSWERER_H

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <functional>

// What a message box showed, and what the window looked like then (when a
// snapshot was asked for).
struct ShownBox
{
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QStringList snapshot;
};

// Answers every message box that becomes the active modal widget, from a
// timer, with the chosen button (or, lacking it, the box's first one), and
// remembers what each box showed. Other modal dialogs are left alone unless
// text inputs are to be answered too.
class BoxAnswerer : public QObject
{
public:
    enum Option {
        NoOptions = 0,
        // Record a box when it is shown, before its event loop runs, rather
        // than when it is answered.
        RecordWhenShown = 0x1,
        // Accept a text input dialog with the given text.
        AcceptInputs = 0x2,
    };
    Q_DECLARE_FLAGS(Options, Option)

    explicit BoxAnswerer(QMessageBox::StandardButton answer, Options options = NoOptions,
                         const QString &inputText = QString());
    ~BoxAnswerer() override;

    // The texts of the boxes shown, in order.
    QStringList texts() const;

    QMessageBox::StandardButton answer;
    // Taken when a box is recorded.
    std::function<QStringList()> snapshot;
    // A box is answered only once this holds (when set).
    std::function<bool()> answerWhen;
    QVector<ShownBox> shown;
    // How many text inputs were accepted.
    int inputs = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void poll();
    void record(QMessageBox *box);

    Options options;
    QString inputText;
    QList<QPointer<QMessageBox>> seen;
    QPointer<QWidget> answered;
    QTimer timer;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(BoxAnswerer::Options)

#endif // BOXANSWERER_H
