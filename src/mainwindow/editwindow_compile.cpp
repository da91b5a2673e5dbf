// The host's tables and tool tips, compile requests and the console.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "codepage.h"

#include <QTextCodec>

// Runs on whatever thread the host answers from, while run() waits; the
// lists are only appended to, so a second answer doubles them.
void EditWindow::tablesAnswer(ARRAY *operations, ARRAY *types)
{
    const auto *operation = static_cast<const OperationRecord *>(operations->first);
    const auto *operationsEnd = static_cast<const OperationRecord *>(operations->end);
    for (; operation < operationsEnd; ++operation) {
        operList << QString::fromLatin1(operation->name);
        if (operation->secondName)
            operList << windows1251()->toUnicode(operation->secondName);
    }

    const auto *type = static_cast<const TypeRecord *>(types->first);
    const auto *typesEnd = static_cast<const TypeRecord *>(types->end);
    for (; type < typesEnd; ++type) {
        typeList << windows1251()->toUnicode(type->name);
        if (type->secondName)
            typeList << windows1251()->toUnicode(type->secondName);
    }

    waitCond.wakeAll();
}

QString EditWindow::getOperToolTip(QString name)
{
    QMutexLocker locker(&mutex);
    emit operToolTipRequest(name);
    waitCond.wait(&mutex, 10);
    return toolTipText;
}

void EditWindow::operToolTipAnswer(QString text)
{
    toolTipText = text;
    waitCond.wakeOne();
}

void EditWindow::addConsoleErrMsg(uint)
{
}

void EditWindow::parseMessage(QString)
{
}

void EditWindow::setMaxConsoleLines(unsigned int n)
{
    ui->consoleEdit->document()->setMaximumBlockCount(int(n));
}

void EditWindow::on_pushButton_clicked()
{
    ui->consoleEdit->clear();
}

void EditWindow::on_compileProgramButton_clicked()
{
}

void EditWindow::on_debugProjButton_clicked()
{
}
