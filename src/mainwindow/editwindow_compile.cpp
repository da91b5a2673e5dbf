// The host's tables and tool tips, compile requests and the console.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "codepage.h"

#include <QDeadlineTimer>
#include <QTextCodec>
#include <QThread>

#include <utility>

// The host may answer on any thread, and late: the names are handed over
// under the lock, and only the GUI thread, which the highlighter and the
// completer read them on, adds them to the lists. A second answer doubles
// the lists.
void EditWindow::tablesAnswer(ARRAY *operations, ARRAY *types)
{
    QStringList operationNames;
    const auto *operation = static_cast<const OperationRecord *>(operations->first);
    const auto *operationsEnd = static_cast<const OperationRecord *>(operations->end);
    for (; operation < operationsEnd; ++operation) {
        operationNames << QString::fromLatin1(operation->name);
        if (operation->secondName)
            operationNames << windows1251()->toUnicode(operation->secondName);
    }

    QStringList typeNames;
    const auto *type = static_cast<const TypeRecord *>(types->first);
    const auto *typesEnd = static_cast<const TypeRecord *>(types->end);
    for (; type < typesEnd; ++type) {
        typeNames << windows1251()->toUnicode(type->name);
        if (type->secondName)
            typeNames << windows1251()->toUnicode(type->secondName);
    }

    {
        QMutexLocker locker(&mutex);
        arrivedOperations << operationNames;
        arrivedTypes << typeNames;
        tablesArrived = true;
        waitCond.wakeAll();
    }
    if (QThread::currentThread() == thread())
        takeArrivedTables();
    else
        QMetaObject::invokeMethod(this, &EditWindow::takeArrivedTables, Qt::QueuedConnection);
}

void EditWindow::takeArrivedTables()
{
    QMutexLocker locker(&mutex);
    operList << std::exchange(arrivedOperations, {});
    typeList << std::exchange(arrivedTypes, {});
}

// The request goes out without the lock, so that a host answering from
// within it can take the lock in its answer slot; the flag keeps an answer
// that comes before the wait begins, which then does not wait at all.
void EditWindow::askHost(bool &answered, int timeout, const std::function<void()> &request)
{
    {
        QMutexLocker locker(&mutex);
        answered = false;
    }
    request();
    QMutexLocker locker(&mutex);
    const QDeadlineTimer deadline(timeout);
    while (!answered && waitCond.wait(&mutex, deadline)) {
    }
}

// Without an answer in time, the text stored last: an answer queued to
// this thread arrives only after the wait, for the next request.
QString EditWindow::getOperToolTip(QString name)
{
    askHost(toolTipArrived, 10, [this, &name] { emit operToolTipRequest(name); });
    QMutexLocker locker(&mutex);
    return toolTipText;
}

void EditWindow::operToolTipAnswer(QString text)
{
    QMutexLocker locker(&mutex);
    toolTipText = text;
    toolTipArrived = true;
    waitCond.wakeAll();
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

// The host resolves the bare file name against the programs directory it
// shares with the editor. A program of the current project is compiled
// with its whole project.
void EditWindow::on_compileProgramButton_clicked()
{
    const QString name = currTabName();
    saveChangedProgOrProj();
    if (isProgInProj(name))
        emit tryToCompile(ui->currProjBox->title() + QStringLiteral(".zup"));
    else
        emit tryToCompile(name + QStringLiteral(".zu"));
}

// The same request as compiling the project; what makes it a debugging
// session is up to the host.
void EditWindow::on_debugProjButton_clicked()
{
    saveEntireProject();
    emit tryToCompile(ui->currProjBox->title() + QStringLiteral(".zup"));
}
