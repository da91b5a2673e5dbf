#include <QDir>
#include <QFile>
#include <QImage>
#include <QLibraryInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include "testsupport.h"

// Runs the development host as a process against the real module.
class TestZuHost : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void runKeepsSettings();
    void settingsSurviveRestart();
    void untakableSettingsLockExitsWithError();
    void refusesWhatIsNotAPlugin_data();
    void refusesWhatIsNotAPlugin();
    void dirWinsOverStoredProgramsDir();
    void screenshotWritesPng();
    void runsOnTheSampleVocabulary();
    void reportsMalformedVocabularyLines();
    void refusesMissingVocabulary();
    void badCommandLine_data();
    void badCommandLine();
    void versionPrintsProjectVersion();
    void helpNamesBuildTreeDefaults();

private:
    using Run = ProcessRun;

    // Runs zuhost on the offscreen platform until it exits by itself.
    static Run runHost(const QStringList &arguments);
    // The real module, a settings file and a programs directory.
    static QStringList hostArguments(const QString &settingsFile, const QString &programsDir);
    static void copyExamplePrograms(const QString &toDir);
    static QStringList unpairedSockets(const QByteArray &errors);

    QTemporaryDir m_dir;
};

void TestZuHost::initTestCase()
{
    QVERIFY(QFile::exists(QStringLiteral(ZU_HOST_PATH)));
    QVERIFY(QFile::exists(QStringLiteral(ZU_MODULE_PATH)));
    QVERIFY(m_dir.isValid());
}

TestZuHost::Run TestZuHost::runHost(const QStringList &arguments)
{
    return runProcess(QStringLiteral(ZU_HOST_PATH), arguments);
}

QStringList TestZuHost::hostArguments(const QString &settingsFile, const QString &programsDir)
{
    return {QStringLiteral("--module"), QStringLiteral(ZU_MODULE_PATH),
            QStringLiteral("--settings"), settingsFile,
            QStringLiteral("--dir"), programsDir};
}

void TestZuHost::copyExamplePrograms(const QString &toDir)
{
    const QDir examples(QStringLiteral(ZU_EXAMPLES_DIR "/programs"));
    const QStringList names = examples.entryList(QDir::Files);
    for (const QString &name : names)
        QFile::copy(examples.filePath(name), QDir(toDir).filePath(name));
}

QStringList TestZuHost::unpairedSockets(const QByteArray &errors)
{
    static const QByteArray prefix("zuhost: no host socket for ");
    QStringList names;
    const QList<QByteArray> lines = errors.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(prefix))
            names << QString::fromLatin1(line.mid(prefix.size()));
    }
    return names;
}

void TestZuHost::runKeepsSettings()
{
    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    copyExamplePrograms(programs.path());
    const QString settingsFile = m_dir.filePath(QStringLiteral("run.ini"));

    const Run run = runHost(hostArguments(settingsFile, programs.path())
                            << QStringLiteral("--quit-after") << QStringLiteral("300"));
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    // Every named socket has its host counterpart.
    QCOMPARE(unpairedSockets(run.errors), QStringList());

    QSettings settings(settingsFile, QSettings::IniFormat);
    QCOMPARE(settings.status(), QSettings::NoError);
    QCOMPARE(settings.value(QStringLiteral("MainWinState/type")).toInt(), int(QVariant::ByteArray));
    QVERIFY(!settings.value(QStringLiteral("MainWinState/value")).toByteArray().isEmpty());
    QCOMPARE(settings.value(QStringLiteral("MainWinOpen/type")).toInt(), int(QVariant::Bool));
    // The host showed the window, so it was open when stopped.
    QCOMPARE(settings.value(QStringLiteral("MainWinOpen/value")).toBool(), true);

    const QStringList groups = settings.childGroups();
    for (const char *key : {"inprogram", "entireproject", "ignorecase", "wholeword"}) {
        QVERIFY2(groups.contains(QLatin1String(key)), key);
        QCOMPARE(settings.value(QLatin1String(key) + QLatin1String("/type")).toInt(), int(QVariant::Bool));
    }
    for (const char *key : {"searchFor", "replaceTo"}) {
        QVERIFY2(groups.contains(QLatin1String(key)), key);
        QCOMPARE(settings.value(QLatin1String(key) + QLatin1String("/type")).toInt(), int(QVariant::StringList));
    }
}

void TestZuHost::settingsSurviveRestart()
{
    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    const QString settingsFile = m_dir.filePath(QStringLiteral("restart.ini"));
    const QStringList arguments = hostArguments(settingsFile, programs.path())
            << QStringLiteral("--quit-after") << QStringLiteral("0");

    const Run first = runHost(arguments);
    QVERIFY2(first.finished, first.errors.constData());
    QCOMPARE(first.exitCode, 0);
    QStringList keys;
    {
        QSettings settings(settingsFile, QSettings::IniFormat);
        keys = settings.value(QStringLiteral("keys")).toStringList();
        QCOMPARE(keys.size(), 15);
        QCOMPARE(settings.value(QStringLiteral("maxLines/value")).toInt(), 100);
        // Where the settings editor puts a value the user changed.
        settings.setValue(QStringLiteral("maxLines/value"), 200);
    }

    const Run second = runHost(arguments);
    QVERIFY2(second.finished, second.errors.constData());
    QCOMPARE(second.exitCode, 0);
    // The plug-in kept the host's value, and the list kept its order.
    QSettings settings(settingsFile, QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("keys")).toStringList(), keys);
    QCOMPARE(settings.value(QStringLiteral("maxLines/value")).toInt(), 200);
    QCOMPARE(settings.value(QStringLiteral("maxLines/step")).toInt(), 10);
}

// A directory where the lock file goes can never be taken as a lock.
void TestZuHost::untakableSettingsLockExitsWithError()
{
    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    const QString settingsFile = m_dir.filePath(QStringLiteral("locked.ini"));
    QVERIFY(QDir().mkdir(settingsFile + QStringLiteral(".lock")));

    const Run run = runHost(hostArguments(settingsFile, programs.path())
                            << QStringLiteral("--quit-after") << QStringLiteral("0"));
    QVERIFY2(run.finished, "zuhost waited for the settings lock");
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.contains("locked.ini.lock was not taken within 5000 ms"),
             run.errors.constData());
    QVERIFY(!QFile::exists(settingsFile));
}

void TestZuHost::refusesWhatIsNotAPlugin_data()
{
    QTest::addColumn<QString>("module");

    const QString textFile = m_dir.filePath(QStringLiteral("notaplugin.so"));
    QFile file(textFile);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("not a shared library\n");
    file.close();

    QTest::newRow("text file") << textFile;
    QTest::newRow("missing file") << m_dir.filePath(QStringLiteral("missing.so"));
    QTest::newRow("Qt plug-in of another interface")
            << QLibraryInfo::location(QLibraryInfo::PluginsPath)
                       + QStringLiteral("/platforms/libqminimal.so");
}

void TestZuHost::refusesWhatIsNotAPlugin()
{
    QFETCH(QString, module);
    if (QTest::currentDataTag() == QByteArray("Qt plug-in of another interface")
            && !QFile::exists(module))
        QSKIP("no minimal platform plug-in installed");

    const QString settingsFile = m_dir.filePath(QStringLiteral("refused.ini"));
    const Run run = runHost({QStringLiteral("--module"), module,
                             QStringLiteral("--settings"), settingsFile,
                             QStringLiteral("--quit-after"), QStringLiteral("0")});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.contains(module.toLocal8Bit()), run.errors.constData());
}

void TestZuHost::dirWinsOverStoredProgramsDir()
{
    QTemporaryDir earlier;
    QTemporaryDir programs;
    QVERIFY(earlier.isValid() && programs.isValid());
    copyExamplePrograms(programs.path());
    const QString settingsFile = m_dir.filePath(QStringLiteral("dir.ini"));

    const QStringList quick{QStringLiteral("--quit-after"), QStringLiteral("0")};
    const Run first = runHost(hostArguments(settingsFile, earlier.path()) << quick);
    QVERIFY2(first.finished, first.errors.constData());
    QCOMPARE(first.exitCode, 0);

    // "hello" exists only in the new directory, so the editor opens it in a
    // tab (and reports it as open) only if that directory is current.
    const Run second = runHost(hostArguments(settingsFile, programs.path())
                               << quick << QStringLiteral("hello"));
    QVERIFY2(second.finished, second.errors.constData());
    QCOMPARE(second.exitCode, 0);

    QSettings settings(settingsFile, QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("programsDir/value")).toString(),
             QFileInfo(programs.path()).canonicalFilePath());
    QCOMPARE(settings.value(QStringLiteral("openedlist/value")).toStringList(),
             QStringList{QStringLiteral("hello")});
}

void TestZuHost::screenshotWritesPng()
{
    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    copyExamplePrograms(programs.path());
    const QString settingsFile = m_dir.filePath(QStringLiteral("screenshot.ini"));
    const QString png = m_dir.filePath(QStringLiteral("editor.png"));

    const Run run = runHost(hostArguments(settingsFile, programs.path())
                            << QStringLiteral("--screenshot") << png);
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);

    QImage image;
    QVERIFY(image.load(png, "PNG"));
    QVERIFY2(image.width() > 500, qPrintable(QString::number(image.width())));
    QVERIFY2(image.height() > 300, qPrintable(QString::number(image.height())));
}

void TestZuHost::runsOnTheSampleVocabulary()
{
    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    const QString vocabulary = QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary");
    const Run run = runHost(hostArguments(m_dir.filePath(QStringLiteral("sample.ini")), programs.path())
                            << QStringLiteral("--vocabulary") << vocabulary
                            << QStringLiteral("--quit-after") << QStringLiteral("0"));
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(!run.errors.contains(vocabulary.toLocal8Bit()), run.errors.constData());
}

void TestZuHost::reportsMalformedVocabularyLines()
{
    const QString vocabulary = m_dir.filePath(QStringLiteral("malformed-vocabulary"));
    QFile file(vocabulary);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# a good line, a bad one, a good one\n"
               "operation print : Prints\n"
               "keyword while\n"
               "type int\n");
    file.close();

    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    const Run run = runHost(hostArguments(m_dir.filePath(QStringLiteral("malformed.ini")), programs.path())
                            << QStringLiteral("--vocabulary") << vocabulary
                            << QStringLiteral("--quit-after") << QStringLiteral("0"));
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.errors.contains((vocabulary + QStringLiteral(":3: ")).toLocal8Bit()),
             run.errors.constData());
    QVERIFY2(!run.errors.contains((vocabulary + QStringLiteral(":2: ")).toLocal8Bit()),
             run.errors.constData());
}

// Asked for by name, a vocabulary that is not there is a bad command line.
void TestZuHost::refusesMissingVocabulary()
{
    const QString vocabulary = m_dir.filePath(QStringLiteral("no-such-vocabulary"));
    const Run run = runHost({QStringLiteral("--module"), QStringLiteral(ZU_MODULE_PATH),
                             QStringLiteral("--settings"), m_dir.filePath(QStringLiteral("missing.ini")),
                             QStringLiteral("--vocabulary"), vocabulary,
                             QStringLiteral("--quit-after"), QStringLiteral("0")});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.contains(vocabulary.toLocal8Bit()), run.errors.constData());
}

void TestZuHost::badCommandLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--no-such-option")};
    QTest::newRow("time not a number")
            << QStringList{QStringLiteral("--quit-after"), QStringLiteral("soon")};
}

void TestZuHost::badCommandLine()
{
    QFETCH(QStringList, arguments);
    const Run run = runHost(arguments);
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 1);
    QVERIFY(!run.errors.isEmpty());
}

void TestZuHost::versionPrintsProjectVersion()
{
    const Run run = runHost({QStringLiteral("--version")});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output.trimmed(), QByteArray("zuhost " ZU_VERSION));
}

// Run from the build directory, zuhost takes the module beside itself and
// the source tree's sample vocabulary.
void TestZuHost::helpNamesBuildTreeDefaults()
{
    const Run run = runHost({QStringLiteral("--help")});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    const QString module = QFileInfo(QStringLiteral(ZU_MODULE_PATH)).canonicalFilePath();
    const QString vocabulary = QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary");
    QVERIFY2(helpNamesDefault(run.output, module), run.output.constData());
    QVERIFY2(helpNamesDefault(run.output, vocabulary), run.output.constData());
}

QTEST_GUILESS_MAIN(TestZuHost)

#include "tst_zuhost.moc"
