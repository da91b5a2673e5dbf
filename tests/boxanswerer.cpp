#include "boxanswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QInputDialog>
#include <QtTest>

BoxAnswerer::BoxAnswerer(QMessageBox::StandardButton answer, Options options, const QString &inputText)
    : answer(answer)
    , options(options)
    , inputText(inputText)
{
    if (options & RecordWhenShown)
        qApp->installEventFilter(this);
    QObject::connect(&timer, &QTimer::timeout, [this] { poll(); });
    timer.start(10);
}

BoxAnswerer::~BoxAnswerer()
{
    if (options & RecordWhenShown)
        qApp->removeEventFilter(this);
}

QStringList BoxAnswerer::texts() const
{
    QStringList all;
    for (const ShownBox &box : shown)
        all << box.text;
    return all;
}

bool BoxAnswerer::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        auto *box = qobject_cast<QMessageBox *>(watched);
        if (box && !seen.contains(box)) {
            seen << box;
            record(box);
        }
    }
    return false;
}

void BoxAnswerer::poll()
{
    QWidget *modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible() || modal == answered)
        return;
    if (auto *box = qobject_cast<QMessageBox *>(modal)) {
        if (answerWhen && !answerWhen())
            return;
        answered = box;
        if (!(options & RecordWhenShown))
            record(box);
        QAbstractButton *button = box->button(answer);
        if (!button && !box->buttons().isEmpty())
            button = box->buttons().first();
        if (button)
            QTest::mouseClick(button, Qt::LeftButton);
        else
            box->close();
    } else if (auto *input = qobject_cast<QInputDialog *>(modal)) {
        if (!(options & AcceptInputs))
            return;
        answered = input;
        ++inputs;
        input->setTextValue(inputText);
        input->accept();
    }
}

void BoxAnswerer::record(QMessageBox *box)
{
    ShownBox record;
    record.title = box->windowTitle();
    record.text = box->text();
    record.icon = box->icon();
    record.buttons = box->standardButtons();
    if (snapshot)
        record.snapshot = snapshot();
    shown << record;
}
