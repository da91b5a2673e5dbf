// The host's tables and tool tips, compile requests and the console.

#include "editwindow.h"
#include "ui_editwindow.h"

#include "codepage.h"
#include "compilermessage.h"
#include "errormessages.h"
#include "programname.h"
#include "zusourcecode.h"

#include <QDeadlineTimer>
#include <QMessageBox>
#include <QTextCursor>
#include <QTextCodec>
#include <QThread>
#include <QTime>

#include <cstring>
#include <utility>

namespace {

// Longer texts of the host are shown cut short: the console and a box lay
// out every line they hold, and a megabyte line would stall them. A file
// name is cut shorter, since a box lays out a long word slowly and no
// program name comes near that length.
const int loggedTextLimit = 10000;
const int shownNameLimit = 1000;

// Colours the line before the last line of the console (the last line of
// an entry, which ends with a line feed).
void colourLineBeforeEnd(QTextCursor cursor, Qt::GlobalColor colour)
{
    cursor.movePosition(QTextCursor::End);
    cursor.movePosition(QTextCursor::PreviousBlock);
    cursor.movePosition(QTextCursor::StartOfBlock);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    QTextCharFormat format;
    format.setForeground(QBrush(colour));
    cursor.mergeCharFormat(format);
}

} // namespace

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

// Only the newest entry's last line is red: the one before goes back to
// black, and the other lines of an entry keep the default colour.
void EditWindow::addConsoleErrMsg(const QString &text)
{
    QPlainTextEdit *console = ui->consoleEdit;
    QTextCursor cursor = console->textCursor();
    colourLineBeforeEnd(cursor, Qt::black);
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QTime::currentTime().toString(QStringLiteral("hh:mm:ss")) + QLatin1Char(' ') + text,
                      QTextCharFormat());
    colourLineBeforeEnd(cursor, Qt::red);
    cursor.movePosition(QTextCursor::End);
    console->setTextCursor(cursor);
    // The host may be busy compiling and not return to the event loop soon.
    console->viewport()->repaint();
}

// The texts are the compiler's, in its code page; code 0 is no error and
// gets no prefix.
void EditWindow::addConsoleErrMsg(uint code)
{
    const QString prefix = code == 0 ? QString() : tr("Ошибка: ");
    addConsoleErrMsg(prefix + windows1251()->toUnicode(errorMsg(code)) + QLatin1Char('\n'));
}

void EditWindow::parseMessage(QString text)
{
    const CompilerMessage message = CompilerMessage::parse(text);
    switch (message.kind) {
    case CompilerMessage::LocatedError:
        showCompileError(message);
        return;
    case CompilerMessage::SystemError:
        // The C library's text in the user's language, decoded as the
        // library wrote it.
        addConsoleErrMsg(tr("Системная ошибка! ") + QString::fromLocal8Bit(std::strerror(int(message.errorNumber)))
                         + tr(": ") + message.fileText.left(loggedTextLimit));
        emit compilerErrorFound(true);
        return;
    case CompilerMessage::Ready:
        addConsoleErrMsg(tr("Ошибки не обнаружены\n"));
        break;
    case CompilerMessage::Other:
        break;
    }
    emit compilerErrorFound(false);
}

// The error is marked only in the program the message names: a name that
// is no program of the programs directory opens nothing, and one whose
// tab does not come forward is reported as not found.
void EditWindow::showCompileError(const CompilerMessage &message)
{
    const QString name = message.programName();
    ZuSourceCode *editor = nameProblem(name, ".zu").isEmpty() ? bringForward(name) : nullptr;
    if (!editor) {
        QMessageBox::critical(this, tr("ВНИМАНИЕ!"),
                              tr("Не найден файл \n\n") + message.fileName.left(shownNameLimit)
                                  + tr("\n\nневозможно установить место ошибки."),
                              QMessageBox::Ok);
        return;
    }
    editor->setErrorPosition(message.line, message.column, message.code);
    addConsoleErrMsg(message.code);
    setVisible(true);
    activateWindow();
    emit compilerErrorFound(true);
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
