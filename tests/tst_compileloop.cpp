#include <QDir>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

#include "hostprocess.h"
#include "testsupport.h"

// The whole compile loop through zuhost as a process: the editor's compile
// button, the host's built-in checker, and the editor showing its answer in
// the console and at the place of the error.
class TestCompileLoop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void unknownOperationShownInTheEditor();
    void cleanProgramShownAsWithoutErrors();

private:
    // Opens the program in zuhost, presses compile and gives the report
    // written once the answer has reached the editor, and the host's output.
    void compileInEditor(const QString &program, QJsonObject *report, QByteArray *output);

    QTemporaryDir m_dir;
};

void TestCompileLoop::initTestCase()
{
    QVERIFY(QFile::exists(QStringLiteral(ZU_HOST_PATH)));
    QVERIFY(QFile::exists(QStringLiteral(ZU_MODULE_PATH)));
    QVERIFY(m_dir.isValid());
    QVERIFY(writeFile(m_dir.filePath(QStringLiteral("misspelt.zu")),
                      "`` print, misspelt\nint x = 1;\nif (x == 1)\n{\n\tpirnt(x);\n};\n"));
    QVERIFY(writeFile(m_dir.filePath(QStringLiteral("fine.zu")), "int x = 1;\nprint(x);\n"));
}

void TestCompileLoop::compileInEditor(const QString &program, QJsonObject *report, QByteArray *output)
{
    const QString reportFile = m_dir.filePath(program + QStringLiteral(".json"));
    const HostRun run = runZuHost(hostArguments(m_dir.filePath(program + QStringLiteral(".ini")), m_dir.path())
                                  << QStringLiteral("--vocabulary") << QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary")
                                  << QStringLiteral("--compile") << QStringLiteral("--report") << reportFile
                                  << program);
    QVERIFY2(run.finished, run.errors.constData());
    QCOMPARE(run.exitCode, 0);
    *report = readReport(reportFile);
    *output = run.output;
}

void TestCompileLoop::unknownOperationShownInTheEditor()
{
    QJsonObject report;
    QByteArray output;
    compileInEditor(QStringLiteral("misspelt"), &report, &output);
    if (QTest::currentTestFailed())
        return;

    const QJsonArray messages = report.value(QStringLiteral("messages")).toArray();
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().toString().startsWith(QStringLiteral("\nIn line #5 of file misspelt.zu\nCode 27\n")),
             qPrintable(messages.first().toString()));

    const QString console = report.value(QStringLiteral("console")).toString();
    QVERIFY2(console.contains(QStringLiteral("Ошибка: Неизвестная операция")), qPrintable(console));
    QVERIFY2(output.contains("zuhost: compiler errors found: yes"), output.constData());
    QCOMPARE(report.value(QStringLiteral("tab")).toString(), QStringLiteral("misspelt"));
    QCOMPARE(report.value(QStringLiteral("line")).toInt(), 5);
    QCOMPARE(report.value(QStringLiteral("column")).toInt(), 1);
    QCOMPARE(report.value(QStringLiteral("word")).toString(), QStringLiteral("pirnt"));
    QCOMPARE(report.value(QStringLiteral("marked")).toArray(), QJsonArray{QStringLiteral("pirnt")});
}

void TestCompileLoop::cleanProgramShownAsWithoutErrors()
{
    QJsonObject report;
    QByteArray output;
    compileInEditor(QStringLiteral("fine"), &report, &output);
    if (QTest::currentTestFailed())
        return;

    QCOMPARE(report.value(QStringLiteral("messages")).toArray(),
             QJsonArray{QStringLiteral("\nProgram ready to run\n")});
    const QString console = report.value(QStringLiteral("console")).toString();
    QVERIFY2(console.contains(QStringLiteral("Ошибки не обнаружены")), qPrintable(console));
    QVERIFY2(output.contains("zuhost: compiler errors found: no"), output.constData());
    QCOMPARE(report.value(QStringLiteral("marked")).toArray(), QJsonArray());
}

QTEST_GUILESS_MAIN(TestCompileLoop)

#include "tst_compileloop.moc"
