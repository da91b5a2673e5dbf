// The bytes of a project file: the programs its list names, one a line, up
// to the first empty line; CR, LF and CR LF all end a line; what follows
// the list is kept byte for byte when the list is written back.

#include <QtTest>

#include "projectfile.h"

namespace {

// "программа" and "Ая" in windows-1251.
const QByteArray programCp1251("\xef\xf0\xee\xe3\xf0\xe0\xec\xec\xe0");
const QByteArray shortCp1251("\xc0\xff");

QString withNul(const char *before, const char *after)
{
    return QLatin1String(before) + QChar(0) + QLatin1String(after);
}

} // namespace

class TestProjectFile : public QObject
{
    Q_OBJECT

private slots:
    void readsListAndRest_data();
    void readsListAndRest();
    void listTextNamesEachProgramOnItsLine();
    void writtenBytesAreListInWindows1251ThenRest();
    void emptyListIsWrittenAsRestAlone();
    void readingWrittenBytesGivesSameListAndRest_data();
    void readingWrittenBytesGivesSameListAndRest();
    void fileWithLfLineEndsIsWrittenBackByteForByte_data();
    void fileWithLfLineEndsIsWrittenBackByteForByte();

private:
    void projectFiles();
};

// Project files, the programs they list and what follows the list.
void TestProjectFile::projectFiles()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("programs");
    QTest::addColumn<QByteArray>("rest");

    const QStringList ab { "a", "b" };
    QTest::newRow("empty file") << QByteArray() << QStringList() << QByteArray();
    QTest::newRow("LF") << QByteArray("a.zu\nb.zu\n") << ab << QByteArray();
    QTest::newRow("CR") << QByteArray("a.zu\rb.zu\r") << ab << QByteArray();
    QTest::newRow("CR LF") << QByteArray("a.zu\r\nb.zu\r\n") << ab << QByteArray();
    QTest::newRow("all three") << QByteArray("a.zu\rb.zu\r\nc.zu\n") << QStringList { "a", "b", "c" }
                               << QByteArray();
    QTest::newRow("no final line end") << QByteArray("a.zu\nb.zu") << ab << QByteArray();
    QTest::newRow("no final line end after CR") << QByteArray("a.zu\rb.zu") << ab << QByteArray();
    // A CR ends a line; the CR LF after it is an empty line.
    QTest::newRow("CR CR LF") << QByteArray("a.zu\r\r\nb.zu\n") << QStringList { "a" }
                              << QByteArray("\r\nb.zu\n");
    QTest::newRow("LF CR") << QByteArray("a.zu\n\rb.zu\n") << QStringList { "a" } << QByteArray("\rb.zu\n");
    QTest::newRow("empty first line") << QByteArray("\na.zu\n") << QStringList() << QByteArray("\na.zu\n");
    QTest::newRow("empty first line CR LF") << QByteArray("\r\na.zu") << QStringList() << QByteArray("\r\na.zu");
    QTest::newRow("only line ends") << QByteArray("\n\r\n\r") << QStringList() << QByteArray("\n\r\n\r");
    QTest::newRow("rest kept") << QByteArray("a.zu\nb.zu\n\nnotes\r\nmore\n") << ab
                               << QByteArray("\nnotes\r\nmore\n");
    QTest::newRow("rest after CR LF list") << QByteArray("a.zu\r\n\r\nnotes\r") << QStringList { "a" }
                                           << QByteArray("\r\nnotes\r");
    QTest::newRow("rest of any bytes") << QByteArray("a.zu\n\n\0\xff\xfe\r", 10) << QStringList { "a" }
                                       << QByteArray("\n\0\xff\xfe\r", 5);
    QTest::newRow("NUL in lines") << QByteArray("x\0y.zu\nz\0\n", 10)
                                  << QStringList { withNul("x", "y"), withNul("z", "") } << QByteArray();
    QTest::newRow("windows-1251 upper half") << QByteArray(programCp1251 + ".zu\r\n" + shortCp1251 + "\n")
                                             << QStringList { QStringLiteral("программа"), QStringLiteral("Ая") }
                                             << QByteArray();
    QTest::newRow("lines without the extension") << QByteArray("alpha\nA.ZU\n.zu\nx.zup\n")
                                                 << QStringList { "alpha", "A.ZU", "", "x.zup" } << QByteArray();
    QTest::newRow("blank line is not empty") << QByteArray("a.zu\n \nb.zu") << QStringList { "a", " ", "b" }
                                             << QByteArray();
}

void TestProjectFile::readsListAndRest_data()
{
    projectFiles();
}

void TestProjectFile::readsListAndRest()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, programs);
    QFETCH(QByteArray, rest);

    const ProjectFile project = ProjectFile::fromBytes(bytes);

    QCOMPARE(project.programs, programs);
    QCOMPARE(project.rest, rest);
}

void TestProjectFile::listTextNamesEachProgramOnItsLine()
{
    ProjectFile project;
    QCOMPARE(project.listText(), QString());
    project.programs = QStringList { "a", "программа", "", "b.zu" };
    project.rest = "\nnotes\n";
    QCOMPARE(project.listText(), QStringLiteral("a.zu\nпрограмма.zu\n.zu\nb.zu.zu\n"));
}

void TestProjectFile::writtenBytesAreListInWindows1251ThenRest()
{
    ProjectFile project;
    project.programs = QStringList { QStringLiteral("программа"), QStringLiteral("b") };
    project.rest = QByteArray("\n\xff notes\r\n\0", 11);
    QCOMPARE(project.toBytes(), programCp1251 + QByteArray(".zu\nb.zu\n\n\xff notes\r\n\0", 20));
}

void TestProjectFile::emptyListIsWrittenAsRestAlone()
{
    ProjectFile project;
    QCOMPARE(project.toBytes(), QByteArray());
    project.rest = "\nnotes";
    QCOMPARE(project.toBytes(), QByteArray("\nnotes"));
}

void TestProjectFile::readingWrittenBytesGivesSameListAndRest_data()
{
    projectFiles();
}

void TestProjectFile::readingWrittenBytesGivesSameListAndRest()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, programs);
    QFETCH(QByteArray, rest);

    const ProjectFile read = ProjectFile::fromBytes(bytes);
    const ProjectFile again = ProjectFile::fromBytes(read.toBytes());

    QCOMPARE(again.programs, programs);
    QCOMPARE(again.rest, rest);
    // Written a second time, nothing changes any more.
    QCOMPARE(again.toBytes(), read.toBytes());
}

void TestProjectFile::fileWithLfLineEndsIsWrittenBackByteForByte_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("list") << QByteArray("a.zu\nb.zu\n");
    QTest::newRow("list and rest") << QByteArray("a.zu\nb.zu\n\nnotes\r\nmore\n");
    QTest::newRow("rest alone") << QByteArray("\nnotes");
    QTest::newRow("windows-1251 names") << programCp1251 + ".zu\n" + shortCp1251 + ".zu\n" + QByteArray("\n\0", 2);
}

void TestProjectFile::fileWithLfLineEndsIsWrittenBackByteForByte()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(ProjectFile::fromBytes(bytes).toBytes(), bytes);
}

QTEST_MAIN(TestProjectFile)
#include "tst_projectfile.moc"
