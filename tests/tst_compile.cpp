// The host's tables of operations and types, the operation tool-tip
// exchange, and the compiler console of the editor window.

#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextBlock>
#include <QTextDocument>
#include <QtTest>

#include <thread>

#include "editorsupport.h"
#include "editwindow.h"
#include "hosttables.h"
#include "testsupport.h"
#include "textedit.h"

namespace {

// "Строка" and "Число" as windows-1251 bytes, with their expected text.
const char stringTypeBytes[] = "\xd1\xf2\xf0\xee\xea\xe0";
const char numberTypeBytes[] = "\xd7\xe8\xf1\xeb\xee";
QString stringTypeText() { return QString::fromUtf8("Строка"); }
QString numberTypeText() { return QString::fromUtf8("Число"); }

template <typename Record, int N>
ARRAY tableOf(Record (&records)[N])
{
    ARRAY array = {};
    array.first = records;
    array.end = records + N;
    return array;
}

QString tipFor(const QString &name)
{
    return QStringLiteral("explains ") + name;
}

// Joins a thread however the test function is left.
struct JoiningThread
{
    std::thread thread;
    ~JoiningThread() { join(); }
    void join()
    {
        if (thread.joinable())
            thread.join();
    }
};

} // namespace

class TestCompile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void twoOperationRecordsGiveThreeNamesInOrder();
    void emptyOperationTableGivesOnlyTypeNames_data();
    void emptyOperationTableGivesOnlyTypeNames();
    void nullSecondNamesAreSkipped();
    void secondAnswerAppendsNamesAgain();
    void namesDecodeFromWindows1251();

    void toolTipWithoutHostReturnsStoredTextAfterTimeout();
    void synchronousHostToolTipIsReturned();
    void toolTipAnsweredFromOtherThreadReachesCaller();

    void runWithSynchronousTablesAnswerWaitsOutTimeout();
    void runWithTablesFromOtherThreadReturnsEarly();

    void maxConsoleLinesBoundsConsoleBlocks_data();
    void maxConsoleLinesBoundsConsoleBlocks();
    void clearButtonEmptiesConsole();

private:
    TempCurrentDir tempDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
};

void TestCompile::initTestCase()
{
    QVERIFY2(tempDir.make(), qPrintable(tempDir.errorString()));
    QVERIFY(tempDir.enter());
}

void TestCompile::init()
{
    makePlugin(plugin, window);
    QVERIFY(window);
    QVERIFY(window->operationNames().isEmpty());
    QVERIFY(window->typeNames().isEmpty());
}

void TestCompile::cleanup()
{
    deletePlugin(plugin, window);
}

void TestCompile::twoOperationRecordsGiveThreeNamesInOrder()
{
    OperationRecord operations[2] = {};
    operations[0].name = "add";
    operations[0].secondName = "plus";
    operations[1].name = "print";
    TypeRecord types[1] = {};
    types[0].name = "int";

    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);
    window->tablesAnswer(&operationTable, &typeTable);

    const QStringList expected { QString::fromLatin1(operations[0].name),
                                 QString::fromLatin1(operations[0].secondName),
                                 QString::fromLatin1(operations[1].name) };
    QCOMPARE(window->operationNames(), expected);
    QCOMPARE(window->typeNames(), QStringList { QString::fromLatin1(types[0].name) });
}

void TestCompile::emptyOperationTableGivesOnlyTypeNames_data()
{
    QTest::addColumn<bool>("nullPointers");
    QTest::newRow("first equals end") << false;
    QTest::newRow("first and end null") << true;
}

void TestCompile::emptyOperationTableGivesOnlyTypeNames()
{
    QFETCH(bool, nullPointers);

    // A record sits at first, but first is not below end: nothing is read.
    OperationRecord ignored[1] = {};
    ignored[0].name = "ignored";
    ARRAY operationTable = {};
    if (!nullPointers) {
        operationTable.first = ignored;
        operationTable.end = ignored;
    }

    TypeRecord types[2] = {};
    types[0].name = "int";
    types[0].secondName = "integer";
    types[1].name = "real";
    types[1].secondName = "float";
    ARRAY typeTable = tableOf(types);

    window->tablesAnswer(&operationTable, &typeTable);

    QVERIFY(window->operationNames().isEmpty());
    const QStringList expected { QString::fromLatin1(types[0].name),
                                 QString::fromLatin1(types[0].secondName),
                                 QString::fromLatin1(types[1].name),
                                 QString::fromLatin1(types[1].secondName) };
    QCOMPARE(window->typeNames(), expected);
}

void TestCompile::nullSecondNamesAreSkipped()
{
    OperationRecord operations[3] = {};
    operations[0].name = "first";
    operations[1].name = "second";
    operations[1].secondName = "alias";
    operations[2].name = "third";
    TypeRecord types[3] = {};
    types[0].name = "bool";
    types[1].name = "char";
    types[1].secondName = "symbol";
    types[2].name = "text";

    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);
    window->tablesAnswer(&operationTable, &typeTable);

    QStringList expectedOperations;
    for (const OperationRecord &record : operations) {
        expectedOperations << QString::fromLatin1(record.name);
        if (record.secondName)
            expectedOperations << QString::fromLatin1(record.secondName);
    }
    QStringList expectedTypes;
    for (const TypeRecord &record : types) {
        expectedTypes << QString::fromLatin1(record.name);
        if (record.secondName)
            expectedTypes << QString::fromLatin1(record.secondName);
    }
    QCOMPARE(window->operationNames().size(), 4);
    QCOMPARE(window->operationNames(), expectedOperations);
    QCOMPARE(window->typeNames().size(), 4);
    QCOMPARE(window->typeNames(), expectedTypes);
    QVERIFY(!window->operationNames().contains(QString()));
    QVERIFY(!window->typeNames().contains(QString()));
}

void TestCompile::secondAnswerAppendsNamesAgain()
{
    OperationRecord operations[2] = {};
    operations[0].name = "load";
    operations[0].secondName = "read";
    operations[1].name = "store";
    TypeRecord types[2] = {};
    types[0].name = "word";
    types[1].name = "byte";
    types[1].secondName = "octet";

    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);

    window->tablesAnswer(&operationTable, &typeTable);
    const QStringList firstOperations = window->operationNames();
    const QStringList firstTypes = window->typeNames();
    QCOMPARE(firstOperations.size(), 3);
    QCOMPARE(firstTypes.size(), 3);

    window->tablesAnswer(&operationTable, &typeTable);
    QCOMPARE(window->operationNames(), firstOperations + firstOperations);
    QCOMPARE(window->typeNames(), firstTypes + firstTypes);
}

void TestCompile::namesDecodeFromWindows1251()
{
    OperationRecord operations[1] = {};
    operations[0].name = "concat";
    operations[0].secondName = stringTypeBytes;
    TypeRecord types[1] = {};
    types[0].name = stringTypeBytes;
    types[0].secondName = numberTypeBytes;

    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);
    window->tablesAnswer(&operationTable, &typeTable);

    const QStringList expectedOperations { QString::fromLatin1(operations[0].name),
                                           stringTypeText() };
    QCOMPARE(window->operationNames(), expectedOperations);
    const QStringList expectedTypes { stringTypeText(), numberTypeText() };
    QCOMPARE(window->typeNames(), expectedTypes);
}

void TestCompile::toolTipWithoutHostReturnsStoredTextAfterTimeout()
{
    QSignalSpy requests(window, &EditWindow::operToolTipRequest);
    QVERIFY(requests.isValid());

    QElapsedTimer timer;
    timer.start();
    const QString first = window->getOperToolTip(QStringLiteral("add"));
    const qint64 firstElapsed = timer.elapsed();

    QVERIFY(first.isEmpty());
    QVERIFY2(firstElapsed >= 9, qPrintable(QString::number(firstElapsed)));
    QVERIFY2(firstElapsed < 1000, qPrintable(QString::number(firstElapsed)));
    QCOMPARE(requests.count(), 1);
    QCOMPARE(requests.at(0).at(0).toString(), QStringLiteral("add"));

    // A stored answer is returned for any later request that gets none.
    const QString stored = tipFor(QStringLiteral("add"));
    window->operToolTipAnswer(stored);

    timer.restart();
    const QString second = window->getOperToolTip(QStringLiteral("print"));
    const qint64 secondElapsed = timer.elapsed();

    QCOMPARE(second, stored);
    QVERIFY2(secondElapsed >= 9, qPrintable(QString::number(secondElapsed)));
    QVERIFY2(secondElapsed < 1000, qPrintable(QString::number(secondElapsed)));
    QCOMPARE(requests.count(), 2);
    QCOMPARE(requests.at(1).at(0).toString(), QStringLiteral("print"));
}

void TestCompile::synchronousHostToolTipIsReturned()
{
    EditWindow *w = window;
    QSignalSpy requests(w, &EditWindow::operToolTipRequest);
    QVERIFY(requests.isValid());
    connect(w, &EditWindow::operToolTipRequest, w,
            [w](const QString &name) { w->operToolTipAnswer(tipFor(name)); },
            Qt::DirectConnection);

    const QStringList names { QStringLiteral("add"), QStringLiteral("print") };
    for (const QString &name : names) {
        QElapsedTimer timer;
        timer.start();
        const QString tip = w->getOperToolTip(name);
        const qint64 elapsed = timer.elapsed();

        QCOMPARE(tip, tipFor(name));
        QCOMPARE(requests.last().at(0).toString(), name);
        // The answer woke nobody, since the wait had not begun: the whole
        // time-out passes, but the text is in place by then.
        QVERIFY2(elapsed >= 9, qPrintable(QString::number(elapsed)));
        QVERIFY2(elapsed < 1000, qPrintable(QString::number(elapsed)));
    }
    QCOMPARE(requests.count(), names.size());
}

void TestCompile::toolTipAnsweredFromOtherThreadReachesCaller()
{
    EditWindow *w = window;
    JoiningThread host;
    QSignalSpy requests(w, &EditWindow::operToolTipRequest);
    QVERIFY(requests.isValid());
    const QMetaObject::Connection connection = connect(
        w, &EditWindow::operToolTipRequest, w,
        [w, &host](const QString &name) {
            host.thread = std::thread([w, name] { w->operToolTipAnswer(tipFor(name)); });
        },
        Qt::DirectConnection);

    const QString name = QStringLiteral("multiply");
    QElapsedTimer timer;
    timer.start();
    const QString tip = w->getOperToolTip(name);
    const qint64 elapsed = timer.elapsed();
    host.join();

    QCOMPARE(requests.count(), 1);
    QCOMPARE(requests.at(0).at(0).toString(), name);
    QVERIFY2(elapsed < 1000, qPrintable(QString::number(elapsed)));

    if (tip != tipFor(name)) {
        // The answering thread was slower than the 10 ms wait: the caller got
        // the previous (empty) text, and the answer is kept for the next call.
        QVERIFY2(tip.isEmpty(), qPrintable(tip));
        QVERIFY(disconnect(connection));
        QCOMPARE(w->getOperToolTip(name), tipFor(name));
        QCOMPARE(requests.count(), 2);
    }
}

void TestCompile::runWithSynchronousTablesAnswerWaitsOutTimeout()
{
    OperationRecord operations[2] = {};
    operations[0].name = "add";
    operations[0].secondName = "plus";
    operations[1].name = "print";
    TypeRecord types[1] = {};
    types[0].name = stringTypeBytes;
    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);

    EditWindow *w = window;
    QSignalSpy requests(w, &EditWindow::tablesRequest);
    QVERIFY(requests.isValid());
    connect(w, &EditWindow::tablesRequest, w,
            [w, &operationTable, &typeTable] { w->tablesAnswer(&operationTable, &typeTable); },
            Qt::DirectConnection);

    QElapsedTimer timer;
    timer.start();
    w->run();
    const qint64 elapsed = timer.elapsed();

    QCOMPARE(requests.count(), 1);
    const QStringList expectedOperations { QString::fromLatin1(operations[0].name),
                                           QString::fromLatin1(operations[0].secondName),
                                           QString::fromLatin1(operations[1].name) };
    QCOMPARE(w->operationNames(), expectedOperations);
    QCOMPARE(w->typeNames(), QStringList { stringTypeText() });
    // The wake-up came before the wait began and was lost.
    QVERIFY2(elapsed >= 1900, qPrintable(QString::number(elapsed)));
}

void TestCompile::runWithTablesFromOtherThreadReturnsEarly()
{
    OperationRecord operations[2] = {};
    operations[0].name = "sub";
    operations[1].name = "mul";
    operations[1].secondName = "times";
    TypeRecord types[2] = {};
    types[0].name = numberTypeBytes;
    types[0].secondName = "num";
    types[1].name = "flag";

    EditWindow *w = window;
    ThreadedTablesHost host(w, tableOf(operations), tableOf(types), ThreadedTablesHost::AnswerUntilFinished);
    QSignalSpy requests(w, &EditWindow::tablesRequest);
    QVERIFY(requests.isValid());
    host.answerRequests();

    QElapsedTimer timer;
    timer.start();
    w->run();
    const qint64 elapsed = timer.elapsed();
    QVERIFY(host.started());
    host.finish();

    QCOMPARE(requests.count(), 1);
    QVERIFY2(elapsed < 1500, qPrintable(QString::number(elapsed)));
    const QStringList expectedOperations { QString::fromLatin1(operations[0].name),
                                           QString::fromLatin1(operations[1].name),
                                           QString::fromLatin1(operations[1].secondName) };
    QCOMPARE(w->operationNames(), expectedOperations);
    const QStringList expectedTypes { numberTypeText(),
                                      QString::fromLatin1(types[0].secondName),
                                      QString::fromLatin1(types[1].name) };
    QCOMPARE(w->typeNames(), expectedTypes);
}

void TestCompile::maxConsoleLinesBoundsConsoleBlocks_data()
{
    QTest::addColumn<int>("maxLines");
    QTest::newRow("50") << 50;
    QTest::newRow("120") << 120;
}

void TestCompile::maxConsoleLinesBoundsConsoleBlocks()
{
    QFETCH(int, maxLines);

    auto *console = window->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    QVERIFY(console);
    QVERIFY(console->document()->maximumBlockCount() != maxLines);

    window->setMaxConsoleLines(uint(maxLines));
    QCOMPARE(console->document()->maximumBlockCount(), maxLines);

    const int appended = maxLines + 30;
    for (int i = 0; i < appended; ++i)
        console->appendPlainText(QStringLiteral("line %1").arg(i));

    QVERIFY2(console->document()->blockCount() <= maxLines,
             qPrintable(QString::number(console->document()->blockCount())));
    // The oldest lines go; the newest stays.
    QCOMPARE(console->document()->lastBlock().text(),
             QStringLiteral("line %1").arg(appended - 1));
    QVERIFY(console->document()->firstBlock().text() != QStringLiteral("line 0"));
}

void TestCompile::clearButtonEmptiesConsole()
{
    auto *console = window->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
    QVERIFY(console);
    auto *clearButton = window->findChild<QPushButton *>(QStringLiteral("pushButton"));
    QVERIFY(clearButton);

    window->setMaxConsoleLines(50);
    for (int i = 0; i < 80; ++i)
        console->appendPlainText(QStringLiteral("message %1").arg(i));
    QVERIFY(!console->toPlainText().isEmpty());
    QVERIFY(console->document()->blockCount() > 1);

    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QVERIFY(clearButton->isVisible());
    QVERIFY(clearButton->isEnabled());

    QSignalSpy clicks(clearButton, &QPushButton::clicked);
    QVERIFY(clicks.isValid());
    QTest::mouseClick(clearButton, Qt::LeftButton);
    QCOMPARE(clicks.count(), 1);

    QVERIFY(console->toPlainText().isEmpty());
    QCOMPARE(console->document()->blockCount(), 1);
}

QTEST_MAIN(TestCompile)
#include "tst_compile.moc"
