// How zuhost ends on SIGTERM and SIGINT: as closing its window does, minus
// the questions. As a process, and inside a PluginHost that runs the real
// module in this process, where a program can be edited and left unsaved.

#include <QtTest>

#include <QDir>
#include <QPlainTextEdit>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <csignal>

#include "pluginhost.h"
#include "settingsstore.h"
#include "testsupport.h"
#include "unixsignalwatcher.h"

namespace {

// Starts the child with SIGTERM and SIGINT blocked: a signal sent as soon
// as it runs waits until zuhost watches for it, however late that is.
class BlockedSignalsProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGTERM);
        sigaddset(&blocked, SIGINT);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    }
};

void verifyStoppedWithWindowOpen(const QString &settingsFile)
{
    QSettings settings(settingsFile, QSettings::IniFormat);
    QCOMPARE(settings.status(), QSettings::NoError);
    QVERIFY(!settings.value(QStringLiteral("MainWinState/value")).toByteArray().isEmpty());
    QCOMPARE(settings.value(QStringLiteral("MainWinOpen/value")).toBool(), true);
}

const QByteArray lostChanges("zuhost: changes not saved are lost in: ");

} // namespace

class TestHostStop : public QObject
{
    Q_OBJECT

private slots:
    void signalEndsHostAndStoresSettings_data();
    void signalEndsHostAndStoresSettings();
    void signalNamesEditedProgramAndLeavesItUnsaved();
};

void TestHostStop::signalEndsHostAndStoresSettings_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("SIGTERM") << int(SIGTERM);
    QTest::newRow("SIGINT") << int(SIGINT);
}

void TestHostStop::signalEndsHostAndStoresSettings()
{
    QFETCH(int, signalNumber);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString settingsFile = dir.filePath(QStringLiteral("host.ini"));

    BlockedSignalsProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(ZU_HOST_PATH),
                  {QStringLiteral("--module"), QStringLiteral(ZU_MODULE_PATH),
                   QStringLiteral("--settings"), settingsFile,
                   QStringLiteral("--dir"), dir.path()});
    QVERIFY(process.waitForStarted(20000));
    QCOMPARE(::kill(pid_t(process.processId()), signalNumber), 0);

    const bool finished = process.waitForFinished(20000);
    if (!finished) {
        process.kill();
        process.waitForFinished(5000);
    }
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(finished, errors.constData());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QVERIFY2(!errors.contains(lostChanges), errors.constData());
    verifyStoppedWithWindowOpen(settingsFile);
}

void TestHostStop::signalNamesEditedProgramAndLeavesItUnsaved()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString program = dir.filePath(QStringLiteral("hello.zu"));
    QVERIFY(QFile::copy(QStringLiteral(ZU_EXAMPLES_DIR "/programs/hello.zu"), program));
    const QByteArray saved = fileBytes(program);
    const QString settingsFile = dir.filePath(QStringLiteral("host.ini"));
    // The window enters the programs directory.
    const QString startDir = QDir::currentPath();
    const auto goBack = qScopeGuard([&startDir] { QDir::setCurrent(startDir); });

    SettingsStore store(settingsFile);
    store.setValue(QStringLiteral("programsDir"), dir.path());
    PluginHost host(&store);
    QVERIFY2(host.load(QStringLiteral(ZU_MODULE_PATH)), qPrintable(host.errorString()));
    UnixSignalWatcher watcher({SIGTERM});
    connect(&watcher, &UnixSignalWatcher::received, &host, &PluginHost::terminate);
    host.start();
    host.openPrograms({QStringLiteral("hello")});
    QVERIFY(QTest::qWaitForWindowExposed(host.window()));

    QTRY_VERIFY(host.window()->findChild<QPlainTextEdit *>(QStringLiteral("hello")));
    auto *editor = host.window()->findChild<QPlainTextEdit *>(QStringLiteral("hello"));
    QCOMPARE(host.unsavedPrograms(), QStringList());
    QTest::keyClicks(editor, QStringLiteral("edited "));
    QCOMPARE(host.unsavedPrograms(), QStringList{QStringLiteral("hello")});

    // The signal comes while the event loop runs, as it does in zuhost;
    // finishing ends the loop with 0, the time limit with 1.
    QTest::ignoreMessage(QtWarningMsg, (lostChanges + "hello").constData());
    QTimer::singleShot(0, [] { std::raise(SIGTERM); });
    QTimer limit;
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, &limit, [] { QCoreApplication::exit(1); });
    limit.start(20000);
    QCOMPARE(QCoreApplication::exec(), 0);

    QCOMPARE(fileBytes(program), saved);
    verifyStoppedWithWindowOpen(settingsFile);
}

QTEST_MAIN(TestHostStop)

#include "tst_hoststop.moc"
