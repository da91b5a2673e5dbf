// The installed tree: the build installed into a temporary prefix with
// `cmake --install`, and the installed zuhost run from there, as a user who
// installed it runs it.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include "testsupport.h"

class TestInstall : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void installsEachFileInItsPlace();
    void installedHostPrintsVersion();
    void installedHostNamesInstalledDefaults();
    void installedHostRunsTheInstalledModule();
    void movedTreeUsesItsOwnFiles();
    void installedHostWithoutModuleNamesWhereItLooked();

private:
    // Installs the build into the prefix; empty on success, else what
    // cmake said.
    static QString install(const QString &prefix);
    static QString installedHost(const QString &prefix);
    static QString installedModule(const QString &prefix);
    static QString installedVocabulary(const QString &prefix);
    // Runs the host installed under the prefix on a settings file and an
    // empty programs directory of the test's, until it quits by itself.
    ProcessRun runInstalledHost(const QString &prefix, const QString &settingsFile,
                                const QStringList &arguments = QStringList());

    QTemporaryDir m_dir;
    QString m_prefix;
};

QString TestInstall::install(const QString &prefix)
{
    QProcess cmake;
    cmake.setProcessChannelMode(QProcess::MergedChannels);
    cmake.start(QStringLiteral(ZU_CMAKE_COMMAND),
                {QStringLiteral("--install"), QStringLiteral(ZU_BUILD_DIR),
                 QStringLiteral("--prefix"), prefix});
    if (!cmake.waitForFinished(60000) || cmake.exitStatus() != QProcess::NormalExit
            || cmake.exitCode() != 0)
        return QStringLiteral("cmake --install failed: ") + QString::fromLocal8Bit(cmake.readAll());
    return QString();
}

QString TestInstall::installedHost(const QString &prefix)
{
    return prefix + QStringLiteral("/" ZU_INSTALL_BINDIR "/zuhost");
}

QString TestInstall::installedModule(const QString &prefix)
{
    return prefix + QStringLiteral("/" ZU_INSTALL_MODULEDIR "/")
            + QFileInfo(QStringLiteral(ZU_MODULE_PATH)).fileName();
}

QString TestInstall::installedVocabulary(const QString &prefix)
{
    return prefix + QStringLiteral("/" ZU_INSTALL_DATADIR "/vocabulary");
}

ProcessRun TestInstall::runInstalledHost(const QString &prefix, const QString &settingsFile,
                                         const QStringList &arguments)
{
    const QString programs = m_dir.filePath(QStringLiteral("programs"));
    QDir().mkpath(programs);
    return runProcess(installedHost(prefix),
                      QStringList{QStringLiteral("--settings"), settingsFile,
                                  QStringLiteral("--dir"), programs,
                                  QStringLiteral("--quit-after"), QStringLiteral("0")}
                              + arguments);
}

void TestInstall::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_prefix = m_dir.filePath(QStringLiteral("prefix"));
    const QString failure = install(m_prefix);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
}

void TestInstall::installsEachFileInItsPlace()
{
    const QFileInfo host(installedHost(m_prefix));
    QVERIFY2(host.isFile() && host.isExecutable(), qPrintable(host.filePath()));
    // Nothing of the build directory comes along beside the binary.
    QCOMPARE(QDir(host.path()).entryList(QDir::Files), QStringList{QStringLiteral("zuhost")});
    QVERIFY(QFileInfo(installedModule(m_prefix)).isFile());

    QVERIFY(QFileInfo(installedVocabulary(m_prefix)).isFile());
    const QDir examples(m_prefix + QStringLiteral("/" ZU_INSTALL_DATADIR "/examples"));
    QCOMPARE(examples.entryList(QDir::Files),
             QDir(QStringLiteral(ZU_EXAMPLES_DIR "/programs")).entryList(QDir::Files));

    const QString share = m_prefix + QStringLiteral("/" ZU_INSTALL_SHAREDIR);
    QSettings desktop(share + QStringLiteral("/applications/zuhost.desktop"), QSettings::IniFormat);
    QCOMPARE(desktop.status(), QSettings::NoError);
    QCOMPARE(desktop.value(QStringLiteral("Desktop Entry/Exec")).toString(), QStringLiteral("zuhost"));
    const QString icon = desktop.value(QStringLiteral("Desktop Entry/Icon")).toString();
    QVERIFY(QFileInfo(share + QStringLiteral("/icons/hicolor/scalable/apps/%1.svg").arg(icon)).isFile());
}

void TestInstall::installedHostPrintsVersion()
{
    const ProcessRun run = runProcess(installedHost(m_prefix), {QStringLiteral("--version")});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output.trimmed(), QByteArray("zuhost " ZU_VERSION));
}

void TestInstall::installedHostNamesInstalledDefaults()
{
    const ProcessRun run = runProcess(installedHost(m_prefix), {QStringLiteral("--help")});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    for (const QString &path : {installedModule(m_prefix), installedVocabulary(m_prefix)}) {
        const QString canonical = QFileInfo(path).canonicalFilePath();
        QVERIFY2(helpNamesDefault(run.output, canonical), run.output.constData());
    }
}

void TestInstall::installedHostRunsTheInstalledModule()
{
    const QString settingsFile = m_dir.filePath(QStringLiteral("installed.ini"));
    const ProcessRun run = runInstalledHost(m_prefix, settingsFile);
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(!run.errors.contains("no vocabulary"), run.errors.constData());
    // The plug-in ran and reported its window when stopped.
    QSettings settings(settingsFile, QSettings::IniFormat);
    QVERIFY(!settings.value(QStringLiteral("MainWinState/value")).toByteArray().isEmpty());
}

// A tree unpacked somewhere else (dpkg -x) reads the vocabulary it holds:
// the line spoiled here is reported with the moved file's name.
void TestInstall::movedTreeUsesItsOwnFiles()
{
    const QString staged = m_dir.filePath(QStringLiteral("staged"));
    const QString failure = install(staged);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    const QString moved = m_dir.filePath(QStringLiteral("moved"));
    QVERIFY(QDir().rename(staged, moved));

    const QString vocabulary = installedVocabulary(moved);
    const QByteArray sample = fileBytes(vocabulary);
    QVERIFY(!sample.isEmpty());
    QVERIFY(writeFile(vocabulary, sample + "keyword while\n"));
    const int spoiledLine = sample.count('\n') + 1;

    const ProcessRun run = runInstalledHost(moved, m_dir.filePath(QStringLiteral("moved.ini")));
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    const QString canonical = QFileInfo(vocabulary).canonicalFilePath();
    QVERIFY2(run.errors.contains(QStringLiteral("%1:%2: ").arg(canonical).arg(spoiledLine).toLocal8Bit()),
             run.errors.constData());
}

// Installed, the module is never looked for beside the binary or in the
// build directory: without the installed one zuhost refuses to run.
void TestInstall::installedHostWithoutModuleNamesWhereItLooked()
{
    const QString prefix = m_dir.filePath(QStringLiteral("no-module"));
    const QString failure = install(prefix);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    const QString module = installedModule(prefix);
    QVERIFY(QFile::remove(module));

    const ProcessRun run = runInstalledHost(prefix, m_dir.filePath(QStringLiteral("no-module.ini")));
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.contains(QFileInfo(prefix).canonicalFilePath().toLocal8Bit()),
             run.errors.constData());
}

QTEST_GUILESS_MAIN(TestInstall)

#include "tst_install.moc"
