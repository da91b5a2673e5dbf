#include <QDir>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <cerrno>

#include "programsources.h"
#include "testsupport.h"
#include "vocabulary.h"
#include "zuchecker.h"

// The host's built-in checker: its verdicts on small programs and projects,
// and messages laid out so that the editor finds the place of an error.
class TestChecker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void verdicts_data();
    void verdicts();
    void messageShowsLineAndCaret();
    void caretKeepsTheLinesTabs();
    void linesEndAsInTheEditor_data();
    void linesEndAsInTheEditor();
    void projectKnowsWhatItsProgramsDefine();
    void projectReportsTheFirstProgramWithAnError();
    void examplesAreReadyToRun_data();
    void examplesAreReadyToRun();
    void projectListEndsAtTheFirstEmptyLine();
    void unreadableFileGivesItsErrno_data();
    void unreadableFileGivesItsErrno();

private:
    // What the editor takes from a located error, read with the word moves
    // of its text cursor.
    struct EditorReading
    {
        uint line = 0;
        QString file;
        uint code = 0;
        int column = -1;
    };
    static EditorReading readAsTheEditor(const QString &message);
    ZuChecker::Result check(const QString &text) const;

    Vocabulary m_vocabulary;
};

void TestChecker::initTestCase()
{
    QVERIFY(m_vocabulary.load(QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary")));
    QCOMPARE(m_vocabulary.errors(), QStringList());
}

// The steps the editor takes through a message: down to line 2, past
// "In line #", one word; two words on, the file to the end of the line;
// line 3, one word on, one word; line 6, the index of the caret.
TestChecker::EditorReading TestChecker::readAsTheEditor(const QString &message)
{
    QPlainTextEdit scratch;
    scratch.setPlainText(message);
    QTextCursor cursor(scratch.document());
    EditorReading reading;
    cursor.movePosition(QTextCursor::Down);
    cursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, 9);
    cursor.movePosition(QTextCursor::NextWord, QTextCursor::KeepAnchor);
    reading.line = cursor.selectedText().trimmed().toUInt();
    cursor.movePosition(QTextCursor::NextWord, QTextCursor::MoveAnchor, 2);
    cursor.movePosition(QTextCursor::EndOfLine, QTextCursor::KeepAnchor);
    reading.file = cursor.selectedText();
    cursor.movePosition(QTextCursor::StartOfLine);
    cursor.movePosition(QTextCursor::Down);
    cursor.movePosition(QTextCursor::NextWord);
    cursor.movePosition(QTextCursor::NextWord, QTextCursor::KeepAnchor);
    reading.code = cursor.selectedText().trimmed().toUInt();
    cursor.movePosition(QTextCursor::StartOfLine);
    cursor.movePosition(QTextCursor::Down, QTextCursor::MoveAnchor, 3);
    cursor.movePosition(QTextCursor::StartOfLine);
    cursor.movePosition(QTextCursor::EndOfLine, QTextCursor::KeepAnchor);
    reading.column = cursor.selectedText().indexOf(QLatin1Char('^'));
    return reading;
}

ZuChecker::Result TestChecker::check(const QString &text) const
{
    return ZuChecker(m_vocabulary).check({{QStringLiteral("test.zu"), text}});
}

void TestChecker::verdicts_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<int>("code");  // 0: ready to run
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");

    QTest::newRow("clean program")
            << QStringLiteral("int sum = 0;\nfor (i, 1, 10)\n{\n\tsum = sum + i;\n};\n"
                              "print(\"Сумма: \", sum);\n") << 0 << 0 << 0;
    QTest::newRow("control words and calls, with and without blanks")
            << QStringLiteral("for (i, 1, 2)\n{\n\tif (i == 1) { print (i); } else { print(sqrt(i)); };\n"
                              "\twhile(0) { break; };\n};\nfloat f(float x) { return (x); };\n")
            << 0 << 0 << 0;
    QTest::newRow("brace not closed at the end")
            << QStringLiteral("for (i, 1, 3)\n{\n\tprint(i);\n") << 12 << 2 << 0;
    QTest::newRow("brace left open by a later one")
            << QStringLiteral("{\n\tif (1)\n\t{\n\t\tprint(1);\n};\n") << 12 << 1 << 0;
    QTest::newRow("innermost of the open braces")
            << QStringLiteral("{\n\t{\n\t\tprint(1);\n") << 12 << 2 << 1;
    QTest::newRow("brace closing nothing")
            << QStringLiteral("print(1);\n};\n") << 23 << 2 << 0;
    QTest::newRow("string not closed on its line")
            << QStringLiteral("print(1);\nprint(\"a);\nprint(\"b\");\n") << 18 << 2 << 6;
    QTest::newRow("unclosed string ends the check")
            << QStringLiteral("print(\"a);\n}\n") << 18 << 1 << 6;
    QTest::newRow("unknown operation")
            << QStringLiteral("int x = 0;\nx = prnt(x);\n") << 27 << 2 << 4;
    QTest::newRow("unknown operation, blanks before the bracket")
            << QStringLiteral("\tpritn \t(1);\n") << 27 << 1 << 1;
    QTest::newRow("unknown operation in second-name letters")
            << QStringLiteral("\tпечатать(1);\n") << 27 << 1 << 1;
    QTest::newRow("word before a bracket on the next line is no call")
            << QStringLiteral("nosuch\n(1);\n") << 0 << 0 << 0;
    QTest::newRow("round bracket not closed at the end")
            << QStringLiteral("x = max(a, b;\n") << 31 << 1 << 7;
    QTest::newRow("round bracket closed by a brace")
            << QStringLiteral("{\n\tprint(x};\n") << 31 << 2 << 8;
    QTest::newRow("square bracket closed by a round one")
            << QStringLiteral("print(a[1);\n") << 43 << 1 << 9;
    QTest::newRow("square bracket closing nothing")
            << QStringLiteral("a] = 1;\n") << 49 << 1 << 1;
    QTest::newRow("round bracket closing nothing")
            << QStringLiteral("x = 1);\n") << 51 << 1 << 5;
    QTest::newRow("round bracket closing a brace")
            << QStringLiteral("{ x = 1) };\n") << 51 << 1 << 7;
    QTest::newRow("long lines")
            << QStringLiteral("`` %1\nx = %1 + nosuch(1);\n").arg(QString(300, QLatin1Char('a')))
            << 27 << 2 << 307;
    QTest::newRow("first error in the text wins")
            << QStringLiteral("nosuch(1);\n}\n") << 27 << 1 << 0;
    QTest::newRow("strings and comments hide brackets and calls")
            << QStringLiteral("print(\"{[( nosuch(\"); `` }]) nosuch(\n") << 0 << 0 << 0;
    QTest::newRow("one backtick is no comment")
            << QStringLiteral("` nosuch(1);\n") << 27 << 1 << 2;
    QTest::newRow("the program's own operation")
            << QStringLiteral("print(twice(2));\nfloat twice(float x)\n{\n\treturn (x * 2);\n};\n")
            << 0 << 0 << 0;
    QTest::newRow("a variable does not define what follows it")
            << QStringLiteral("int x;\nx nosuch(1);\n") << 27 << 2 << 2;
    QTest::newRow("type names and second names")
            << QStringLiteral("если (1) { печать(int(2.5), строка(3)); };\n") << 0 << 0 << 0;
}

void TestChecker::verdicts()
{
    QFETCH(QString, program);
    QFETCH(int, code);
    QFETCH(int, line);
    QFETCH(int, column);

    const ZuChecker::Result result = check(program);
    if (code == 0) {
        QCOMPARE(result.verdict, ZuChecker::ReadyToRun);
        QCOMPARE(result.message, QStringLiteral("\nProgram ready to run\n"));
        return;
    }
    QCOMPARE(result.verdict, ZuChecker::FoundError);
    QVERIFY2(result.message.startsWith(QStringLiteral("\nIn line #")), qPrintable(result.message));
    const EditorReading reading = readAsTheEditor(result.message);
    QCOMPARE(reading.file, QStringLiteral("test.zu"));
    QCOMPARE(int(reading.code), code);
    QCOMPARE(int(reading.line), line);
    QCOMPARE(reading.column, column);
}

void TestChecker::messageShowsLineAndCaret()
{
    const ZuChecker::Result result = check(QStringLiteral("int x = 0;\nx = prnt(x);\n"));
    QCOMPARE(result.message, QStringLiteral("\nIn line #2 of file test.zu\nCode 27\n"
                                            "unknown operation prnt\nx = prnt(x);\n    ^\n"));
}

void TestChecker::caretKeepsTheLinesTabs()
{
    const ZuChecker::Result result = check(QStringLiteral("{\n\t\tx = \"a;\n};\n"));
    const QStringList lines = result.message.split(QLatin1Char('\n'));
    QCOMPARE(lines.value(4), QStringLiteral("\t\tx = \"a;"));
    QCOMPARE(lines.value(5), QStringLiteral("\t\t    ^"));
}

void TestChecker::linesEndAsInTheEditor_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("LF") << QStringLiteral("print(1);\nprint(2);\nnosuch(3);\n");
    QTest::newRow("CR LF") << QStringLiteral("print(1);\r\nprint(2);\r\nnosuch(3);\r\n");
    QTest::newRow("CR") << QStringLiteral("print(1);\rprint(2);\rnosuch(3);\r");
}

void TestChecker::linesEndAsInTheEditor()
{
    QFETCH(QString, program);
    const ZuChecker::Result result = check(program);
    QCOMPARE(readAsTheEditor(result.message).line, 3u);
    QCOMPARE(result.message.split(QLatin1Char('\n')).value(4), QStringLiteral("nosuch(3);"));
}

void TestChecker::projectKnowsWhatItsProgramsDefine()
{
    const ZuChecker checker(m_vocabulary);
    const QVector<ZuChecker::Program> project{
        {QStringLiteral("main.zu"), QStringLiteral("print(half(3));\n")},
        {QStringLiteral("lib.zu"), QStringLiteral("float half(float x) { return (x / 2); };\n")},
    };
    QCOMPARE(checker.check(project).verdict, ZuChecker::ReadyToRun);
    // Alone, the first program does not know the operation.
    const ZuChecker::Result alone = checker.check({project.first()});
    QCOMPARE(alone.verdict, ZuChecker::FoundError);
    QCOMPARE(readAsTheEditor(alone.message).code, 27u);
}

void TestChecker::projectReportsTheFirstProgramWithAnError()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(writeFile(dir.filePath(QStringLiteral("good.zu")), "print(1);\n"));
    QVERIFY(writeFile(dir.filePath(QStringLiteral("second.zu")), "print(2);\n\tnosuch(2);\n"));
    QVERIFY(writeFile(dir.filePath(QStringLiteral("third.zu")), "}\n"));
    QVERIFY(writeFile(dir.filePath(QStringLiteral("p.zup")), "good.zu\nsecond.zu\nthird.zu\n"));

    const ZuChecker::Result result = ZuChecker(m_vocabulary).checkFile(dir.path(), QStringLiteral("p.zup"));
    QCOMPARE(result.verdict, ZuChecker::FoundError);
    const EditorReading reading = readAsTheEditor(result.message);
    QCOMPARE(reading.file, QStringLiteral("second.zu"));
    QCOMPARE(reading.line, 2u);
    QCOMPARE(reading.code, 27u);
    QCOMPARE(reading.column, 1);
}

void TestChecker::examplesAreReadyToRun_data()
{
    QTest::addColumn<QString>("fileName");
    const QStringList names = QDir(QStringLiteral(ZU_EXAMPLES_DIR "/programs"))
            .entryList({QStringLiteral("*.zu"), QStringLiteral("*.zup")}, QDir::Files);
    QVERIFY(names.contains(QStringLiteral("thermo.zu")));
    QVERIFY(names.contains(QStringLiteral("demo.zup")));
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void TestChecker::examplesAreReadyToRun()
{
    QFETCH(QString, fileName);
    const ZuChecker::Result result = ZuChecker(m_vocabulary)
            .checkFile(QStringLiteral(ZU_EXAMPLES_DIR "/programs"), fileName);
    QVERIFY2(result.verdict == ZuChecker::ReadyToRun, qPrintable(result.message));
}

void TestChecker::projectListEndsAtTheFirstEmptyLine()
{
    QByteArray bytes("one.zu\r\ntwo\rthree.zu\n\nfour.zu\n");
    bytes += QTextCodec::codecForName("windows-1251")->fromUnicode(QStringLiteral("пять.zu"));
    QCOMPARE(ProgramSources::projectPrograms(bytes),
             (QStringList{QStringLiteral("one.zu"), QStringLiteral("two.zu"), QStringLiteral("three.zu")}));
    QCOMPARE(ProgramSources::projectPrograms(bytes.mid(bytes.indexOf("four"))),
             (QStringList{QStringLiteral("four.zu"), QStringLiteral("пять.zu")}));
}

void TestChecker::unreadableFileGivesItsErrno_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<int>("errorNumber");
    QTest::addColumn<QString>("failedFile");

    QTest::newRow("missing program") << QStringLiteral("missing.zu") << ENOENT << QStringLiteral("missing.zu");
    QTest::newRow("directory") << QStringLiteral("folder.zu") << EISDIR << QStringLiteral("folder.zu");
    QTest::newRow("missing project") << QStringLiteral("none.zup") << ENOENT << QStringLiteral("none.zup");
    QTest::newRow("project listing a missing program")
            << QStringLiteral("gap.zup") << ENOENT << QStringLiteral("lost.zu");
}

void TestChecker::unreadableFileGivesItsErrno()
{
    QFETCH(QString, fileName);
    QFETCH(int, errorNumber);
    QFETCH(QString, failedFile);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("folder.zu")));
    QVERIFY(writeFile(dir.filePath(QStringLiteral("here.zu")), "print(1);\n"));
    QVERIFY(writeFile(dir.filePath(QStringLiteral("gap.zup")), "here.zu\nlost.zu\n"));

    const ZuChecker::Result result = ZuChecker(m_vocabulary).checkFile(dir.path(), fileName);
    QCOMPARE(result.verdict, ZuChecker::Unreadable);
    QCOMPARE(result.message, QStringLiteral("\nError while reading (%1) File: %2\n")
                                     .arg(QString::number(errorNumber), failedFile));
}

QTEST_MAIN(TestChecker)

#include "tst_checker.moc"
