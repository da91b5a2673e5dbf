#include "compilerrunner.h"

#include <QDir>
#include <QTextCodec>

#include <cerrno>

#include "messagewriter.h"
#include "zuchecker.h"

namespace {

// QProcess names the call that failed and gives Qt's text for its errno
// ("execvp: No such file or directory"); the text leads back to the number.
// Should that ever fail, the compiler could at least not be executed.
int startErrorNumber(const QString &errorString)
{
    const QString reason = errorString.section(QStringLiteral(": "), 1);
    for (int number = 1; number < 256; ++number) {
        if (qt_error_string(number) == reason)
            return number;
    }
    return ENOEXEC;
}

// The host's own texts are windows-1251, while a compiler on Linux is
// likely to write UTF-8: output that is valid UTF-8 is taken as UTF-8
// (windows-1251 letters hardly ever are), anything else as windows-1251.
QString decodeOutput(const QByteArray &output)
{
    QTextCodec::ConverterState state;
    const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(output.constData(), output.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return QTextCodec::codecForName("windows-1251")->toUnicode(output);
}

} // namespace

CompilerRunner::CompilerRunner(const Vocabulary &vocabulary, QObject *parent)
    : QObject(parent)
    , m_vocabulary(vocabulary)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &CompilerRunner::stopCompiler);
}

void CompilerRunner::setCommand(const QStringList &command)
{
    m_command = command;
}

void CompilerRunner::setTimeLimit(int seconds)
{
    m_timeLimit = seconds;
}

bool CompilerRunner::isIdle() const
{
    return !m_busy && m_requests.isEmpty();
}

void CompilerRunner::compile(const QString &fileName)
{
    m_requests.enqueue({fileName, QDir::currentPath()});
    QMetaObject::invokeMethod(this, &CompilerRunner::startNext, Qt::QueuedConnection);
}

void CompilerRunner::startNext()
{
    if (m_busy || m_requests.isEmpty())
        return;
    m_busy = true;
    m_current = m_requests.dequeue();
    if (m_command.isEmpty())
        answer(ZuChecker(m_vocabulary).checkFile(m_current.directory, m_current.fileName).message);
    else
        startCompiler();
}

// The compiler reads nothing from the host, and its diagnostics on standard
// error go where the host's go.
void CompilerRunner::startCompiler()
{
    m_stopped = false;
    m_process = new QProcess(this);
    m_process->setWorkingDirectory(m_current.directory);
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
            this, &CompilerRunner::compilerFinished);
    connect(m_process, &QProcess::errorOccurred, this, &CompilerRunner::compilerFailed);
    // Before the start, which may already report a failure.
    m_deadline.start(m_timeLimit * 1000);
    m_process->start(m_command.first(), m_command.mid(1) << m_current.fileName);
}

void CompilerRunner::compilerFinished()
{
    m_deadline.stop();
    if (m_stopped) {
        answer(MessageWriter::systemError(QStringLiteral("compiling"), ETIMEDOUT,
                QStringLiteral("%1 (the compiler was stopped after %2 s)")
                        .arg(m_current.fileName, QString::number(m_timeLimit))));
    } else {
        answer(decodeOutput(m_process->readAllStandardOutput()));
    }
}

// A compiler that started and crashed or was killed still finishes; only
// one that never started ends here.
void CompilerRunner::compilerFailed(QProcess::ProcessError error)
{
    if (error != QProcess::FailedToStart)
        return;
    m_deadline.stop();
    answer(MessageWriter::systemError(QStringLiteral("starting the compiler"),
            startErrorNumber(m_process->errorString()),
            QStringLiteral("%1 (to compile %2)").arg(m_command.first(), m_current.fileName)));
}

void CompilerRunner::stopCompiler()
{
    m_stopped = true;
    m_process->kill();
}

void CompilerRunner::answer(const QString &message)
{
    if (m_process)
        m_process->deleteLater();
    m_busy = false;
    emit messageReady(message);
    QMetaObject::invokeMethod(this, &CompilerRunner::startNext, Qt::QueuedConnection);
}
