#include "compileoptions.h"

#include <QAbstractButton>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTextStream>
#include <QTimer>
#include <QWidget>

#include <limits>

#include "pluginhost.h"
#include "zuchecker.h"

namespace {

// A bare name is the program of that name, or the project when there is
// only a project.
QString checkedFile(const QString &directory, const QString &name)
{
    if (name.endsWith(QLatin1String(".zu")) || name.endsWith(QLatin1String(".zup")))
        return name;
    const QDir dir(directory);
    const QString program = name + QStringLiteral(".zu");
    const QString project = name + QStringLiteral(".zup");
    return !QFileInfo::exists(dir.filePath(program)) && QFileInfo::exists(dir.filePath(project))
            ? project : program;
}

} // namespace

CompileOptions::CompileOptions()
    : m_compilerOption(QStringLiteral("compiler"),
            QStringLiteral("Compile with <command>, given the file name last, in the programs "
                           "directory; without it the built-in checker answers."),
            QStringLiteral("command"))
    , m_timeLimitOption(QStringLiteral("compile-timeout"),
            QStringLiteral("Stop a compiler still running after <sec> seconds (default 30)."),
            QStringLiteral("sec"))
    , m_checkOption(QStringLiteral("check"),
            QStringLiteral("Check the program or project <name> with the built-in checker, print "
                           "its message and exit: 0 ready to run, 1 an error, 2 unreadable."),
            QStringLiteral("name"))
    , m_compileOption(QStringLiteral("compile"),
            QStringLiteral("Press the compile button once the named programs are open (once for "
                           "each --compile), and quit when the answers have reached the editor."))
    , m_reportOption(QStringLiteral("report"),
            QStringLiteral("At exit, write what the window shows to <file> as JSON."),
            QStringLiteral("file"))
{
}

void CompileOptions::addTo(QCommandLineParser &parser) const
{
    parser.addOptions({m_compilerOption, m_timeLimitOption, m_checkOption, m_compileOption,
                       m_reportOption});
}

bool CompileOptions::read(const QCommandLineParser &parser)
{
    if (parser.isSet(m_compilerOption)) {
        m_command = QProcess::splitCommand(parser.value(m_compilerOption));
        if (m_command.isEmpty()) {
            qWarning("zuhost: --compiler needs a command");
            return false;
        }
        // A path, unlike a name looked up in PATH, is relative to where
        // zuhost was started, as the other files of the command line are.
        if (m_command.first().contains(QLatin1Char('/')))
            m_command.first() = QFileInfo(m_command.first()).absoluteFilePath();
    }
    if (parser.isSet(m_timeLimitOption)) {
        bool ok = false;
        m_timeLimit = parser.value(m_timeLimitOption).toInt(&ok);
        // The limit's milliseconds must fit a timer's interval.
        if (!ok || m_timeLimit <= 0 || m_timeLimit > std::numeric_limits<int>::max() / 1000) {
            qWarning("zuhost: --compile-timeout needs a number of seconds");
            return false;
        }
    }
    m_checkName = parser.value(m_checkOption);
    m_presses = parser.optionNames().count(m_compileOption.names().first());
    m_reportPath = parser.isSet(m_reportOption)
            ? QFileInfo(parser.value(m_reportOption)).absoluteFilePath() : QString();
    return true;
}

bool CompileOptions::checkOnly() const
{
    return !m_checkName.isEmpty();
}

int CompileOptions::check(const Vocabulary &vocabulary, const QString &directory) const
{
    const ZuChecker::Result result = ZuChecker(vocabulary)
            .checkFile(directory, checkedFile(directory, m_checkName));
    QTextStream(stdout) << result.message;
    switch (result.verdict) {
    case ZuChecker::ReadyToRun:
        return 0;
    case ZuChecker::FoundError:
        return 1;
    case ZuChecker::Unreadable:
        break;
    }
    return 2;
}

void CompileOptions::apply(PluginHost &host)
{
    host.compiler().setCommand(m_command);
    host.compiler().setTimeLimit(m_timeLimit);
    if (!m_reportPath.isEmpty()) {
        QObject::connect(&host.compiler(), &CompilerRunner::messageReady, &host,
                         [this](const QString &message) { m_report.addCompilerMessage(message); });
        QObject::connect(&host, &PluginHost::finishing, &host, [this, &host] {
            if (!m_report.write(host.window(), m_reportPath))
                qWarning("zuhost: cannot write the report to %s", qPrintable(m_reportPath));
        });
    }
    if (m_presses > 0)
        QTimer::singleShot(0, &host, [this, &host] { pressCompile(host); });
}

// Each press asks at once; the answers come one by one, and once the last
// has reached the editor the host finishes.
void CompileOptions::pressCompile(PluginHost &host)
{
    auto *button = host.window()->findChild<QAbstractButton *>(QStringLiteral("compileProgramButton"));
    for (int i = 0; button && i < m_presses; ++i)
        button->click();
    if (host.compiler().isIdle()) {
        qWarning("zuhost: --compile: the editor asked for no compile; is a program open?");
        host.finish(1);
        return;
    }
    QObject::connect(&host.compiler(), &CompilerRunner::messageReady, &host, [&host] {
        if (host.compiler().isIdle())
            host.finish();
    }, Qt::QueuedConnection);
}
