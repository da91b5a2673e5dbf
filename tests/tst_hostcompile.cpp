#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

#include "hostprocess.h"
#include "testsupport.h"

// zuhost's compiling, run as a process: the built-in checker on its own
// with --check, and compile requests answered by compilers that the tests
// write as shell scripts.
class TestHostCompile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void checkVerdicts_data();
    void checkVerdicts();
    void builtInCheckerAnswersTheEditor();
    void compilerOutputIsTheMessage_data();
    void compilerOutputIsTheMessage();
    void compilerOutputDecoding_data();
    void compilerOutputDecoding();
    void slowCompilerIsStoppedAtTheTimeLimit();
    void compilerThatCannotStart_data();
    void compilerThatCannotStart();
    void requestsRunOneAfterAnother();
    void compileWithNothingOpenFails();
    void badCompileOptions_data();
    void badCompileOptions();

private:
    // Presses compile in the editor with the program open, once for each
    // press, and gives the messages the host sent the editor.
    void compile(const QStringList &options, QStringList *messages, int presses = 1,
                 const QString &program = QStringLiteral("hello"));

    QTemporaryDir m_dir;
    QString m_programs;
    QString m_vocabulary;
};

void TestHostCompile::initTestCase()
{
    QVERIFY(QFile::exists(QStringLiteral(ZU_HOST_PATH)));
    QVERIFY(QFile::exists(QStringLiteral(ZU_MODULE_PATH)));
    QVERIFY(m_dir.isValid());
    m_vocabulary = QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary");

    m_programs = m_dir.filePath(QStringLiteral("programs"));
    QVERIFY(QDir().mkdir(m_programs));
    const QDir examples(QStringLiteral(ZU_EXAMPLES_DIR "/programs"));
    const QStringList names = examples.entryList(QDir::Files);
    for (const QString &name : names)
        QVERIFY(QFile::copy(examples.filePath(name), QDir(m_programs).filePath(name)));
    QVERIFY(writeFile(QDir(m_programs).filePath(QStringLiteral("broken.zu")),
                      "`` a misspelt operation\nint x = 1;\nx = nosuch(x);\n"));
}

void TestHostCompile::compile(const QStringList &options, QStringList *messages, int presses,
                              const QString &program)
{
    static int runs = 0;
    const QString run = QString::number(++runs);
    const QString report = m_dir.filePath(QStringLiteral("report%1.json").arg(run));
    QStringList arguments = hostArguments(m_dir.filePath(QStringLiteral("compile%1.ini").arg(run)), m_programs)
            << QStringLiteral("--vocabulary") << m_vocabulary
            << QStringLiteral("--report") << report << options;
    for (int i = 0; i < presses; ++i)
        arguments << QStringLiteral("--compile");
    arguments << program;

    const HostRun result = runZuHost(arguments);
    QVERIFY2(result.finished, result.errors.constData());
    QCOMPARE(result.exitCode, 0);
    // The host's trace of each request the editor made.
    QCOMPARE(result.output.count("zuhost: compile " + program.toUtf8() + ".zu\n"), presses);
    const QJsonArray sent = readReport(report).value(QStringLiteral("messages")).toArray();
    for (const QJsonValue &message : sent)
        *messages << message.toString();
}

void TestHostCompile::checkVerdicts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("messageStart");

    const QString ready = QStringLiteral("\nProgram ready to run\n");
    QTest::newRow("program") << QStringLiteral("hello") << 0 << ready;
    QTest::newRow("program file") << QStringLiteral("thermo.zu") << 0 << ready;
    QTest::newRow("project file") << QStringLiteral("demo.zup") << 0 << ready;
    QTest::newRow("project by its name") << QStringLiteral("demo") << 0 << ready;
    QTest::newRow("program with an error") << QStringLiteral("broken") << 1
            << QStringLiteral("\nIn line #3 of file broken.zu\nCode 27\n");
    QTest::newRow("missing program") << QStringLiteral("missing") << 2
            << QStringLiteral("\nError while reading (%1) File: missing.zu\n").arg(ENOENT);
}

// Without settings or plug-in: a module that is none and settings that
// cannot be locked would each end zuhost with an error.
void TestHostCompile::checkVerdicts()
{
    QFETCH(QString, name);
    QFETCH(int, exitCode);
    QFETCH(QString, messageStart);

    const QString settingsFile = m_dir.filePath(QStringLiteral("check.ini"));
    QVERIFY(QDir().mkpath(settingsFile + QStringLiteral(".lock")));
    const HostRun run = runZuHost({QStringLiteral("--module"), m_dir.filePath(QStringLiteral("none.so")),
                                   QStringLiteral("--settings"), settingsFile,
                                   QStringLiteral("--dir"), m_programs,
                                   QStringLiteral("--vocabulary"), m_vocabulary,
                                   QStringLiteral("--check"), name});
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(QString::fromUtf8(run.output).startsWith(messageStart), run.output.constData());
    QVERIFY2(!run.errors.contains("zuhost"), run.errors.constData());
}

void TestHostCompile::builtInCheckerAnswersTheEditor()
{
    QStringList messages;
    compile({}, &messages, 1, QStringLiteral("broken"));
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().startsWith(QStringLiteral("\nIn line #3 of file broken.zu\nCode 27\n")),
             qPrintable(messages.first()));
}

void TestHostCompile::compilerOutputIsTheMessage_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("passed");
    QTest::newRow("file name alone") << QString() << QStringLiteral("hello.zu");
    QTest::newRow("after the command's arguments") << QStringLiteral(" -x \"a b\"")
                                                   << QStringLiteral("-x|a b|hello.zu");
}

// The compiler runs in the programs directory with the file name last, and
// its standard output, whatever it is, is the message.
void TestHostCompile::compilerOutputIsTheMessage()
{
    QFETCH(QString, arguments);
    QFETCH(QString, passed);

    const QString compiler = m_dir.filePath(QStringLiteral("echoing-compiler"));
    QVERIFY(writeScript(compiler, "IFS='|'\nprintf 'args=%s\\ndir=%s\\n' \"$*\" \"$(pwd -P)\"\n"
                                  "echo 'to standard error' >&2\n"));
    QStringList messages;
    compile({QStringLiteral("--compiler"), compiler + arguments}, &messages);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(messages, QStringList{QStringLiteral("args=%1\ndir=%2\n")
                                           .arg(passed, QFileInfo(m_programs).canonicalFilePath())});
}

void TestHostCompile::compilerOutputDecoding_data()
{
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("UTF-8") << QByteArray("\\320\\237\\321\\200\\320\\270\\320\\262\\320\\265\\321\\202");
    QTest::newRow("windows-1251") << QByteArray("\\317\\360\\350\\342\\345\\362");
}

void TestHostCompile::compilerOutputDecoding()
{
    QFETCH(QByteArray, printed);
    const QString compiler = m_dir.filePath(QStringLiteral("russian-compiler"));
    QVERIFY(writeScript(compiler, "printf '\\nProgram ready to run " + printed + "\\n'\n"));
    QStringList messages;
    compile({QStringLiteral("--compiler"), compiler}, &messages);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(messages, QStringList{QStringLiteral("\nProgram ready to run Привет\n")});
}

void TestHostCompile::slowCompilerIsStoppedAtTheTimeLimit()
{
    const QString compiler = m_dir.filePath(QStringLiteral("sleeping-compiler"));
    QVERIFY(writeScript(compiler, "echo started\nexec sleep 120\n"));
    QElapsedTimer clock;
    clock.start();
    QStringList messages;
    compile({QStringLiteral("--compiler"), compiler, QStringLiteral("--compile-timeout"), QStringLiteral("1")},
            &messages);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(messages, QStringList{QStringLiteral(
            "\nError while compiling (%1) File: hello.zu (the compiler was stopped after 1 s)\n")
                                           .arg(ETIMEDOUT)});
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
}

void TestHostCompile::compilerThatCannotStart_data()
{
    QTest::addColumn<QString>("compiler");
    QTest::addColumn<int>("errorNumber");

    const QString notExecutable = m_dir.filePath(QStringLiteral("not-executable"));
    QVERIFY(writeFile(notExecutable, "#!/bin/sh\necho never\n"));
    QTest::newRow("missing") << m_dir.filePath(QStringLiteral("no-such-compiler")) << ENOENT;
    QTest::newRow("not in PATH") << QStringLiteral("no-such-compiler-in-path") << ENOENT;
    QTest::newRow("not executable") << notExecutable << EACCES;
}

void TestHostCompile::compilerThatCannotStart()
{
    QFETCH(QString, compiler);
    QFETCH(int, errorNumber);
    QStringList messages;
    compile({QStringLiteral("--compiler"), compiler}, &messages);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(messages, QStringList{QStringLiteral(
            "\nError while starting the compiler (%1) File: %2 (to compile hello.zu)\n")
                                           .arg(QString::number(errorNumber), compiler)});
}

// Both presses ask at once; the second compile starts when the first has
// answered.
void TestHostCompile::requestsRunOneAfterAnother()
{
    const QString log = m_dir.filePath(QStringLiteral("runs.log"));
    const QString compiler = m_dir.filePath(QStringLiteral("logging-compiler"));
    QVERIFY(writeScript(compiler, "echo start >> '" + log.toUtf8() + "'\nsleep 0.3\n"
                                  "echo end >> '" + log.toUtf8() + "'\necho \"answer $$\"\n"));
    QStringList messages;
    compile({QStringLiteral("--compiler"), compiler}, &messages, 2);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(messages.size(), 2);
    QVERIFY2(messages.first() != messages.last(), qPrintable(messages.first()));
    QCOMPARE(fileBytes(log), QByteArray("start\nend\nstart\nend\n"));
}

void TestHostCompile::compileWithNothingOpenFails()
{
    const HostRun run = runZuHost(hostArguments(m_dir.filePath(QStringLiteral("nothing.ini")), m_programs)
                                  << QStringLiteral("--compile"));
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.errors.contains("asked for no compile"), run.errors.constData());
}

void TestHostCompile::badCompileOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no time limit") << QStringList{QStringLiteral("--compile-timeout"), QStringLiteral("0")};
    QTest::newRow("time limit not a number")
            << QStringList{QStringLiteral("--compile-timeout"), QStringLiteral("soon")};
    QTest::newRow("empty compiler") << QStringList{QStringLiteral("--compiler"), QStringLiteral(" ")};
}

void TestHostCompile::badCompileOptions()
{
    QFETCH(QStringList, arguments);
    const HostRun run = runZuHost(arguments);
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.errors.contains(arguments.first().toUtf8()));
}

QTEST_GUILESS_MAIN(TestHostCompile)

#include "tst_hostcompile.moc"
