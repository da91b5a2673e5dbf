// The host's tables of operations and types, the operation tool-tip
// exchange, the compile and debug requests, and the compiler console of the
// editor window.

#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QSignalSpy>
#include <QTextBlock>
#include <QTextDocument>
#include <QtTest>

#include <atomic>
#include <utility>
#include <thread>

#include "boxanswerer.h"
#include "editorsupport.h"
#include "editwindow.h"
#include "hosttables.h"
#include "testsupport.h"
#include "textedit.h"
#include "zusourcecode.h"

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

// Many exchanges, so that any one that waits out its 10 ms shows in the sum.
const int toolTipRounds = 50;
const qint64 toolTipRoundsLimit = toolTipRounds * 10 / 2;

// Project p lists a and b, with CR LF line ends, so that a write of the
// file by the window (which ends its lines with LF) shows in its bytes; or
// a, b and a again.
const QByteArray projectOnce("a.zu\r\nb.zu\r\n");
const QByteArray projectTwice("a.zu\r\nb.zu\r\na.zu\r\n");

QByteArray writtenProject(const QByteArray &project)
{
    return QByteArray(project).replace("\r\n", "\n");
}

QByteArray programBytes(const char *name)
{
    return fileBytes(QLatin1String(name) + QStringLiteral(".zu"), "<missing>");
}

bool programWritten(const char *name)
{
    return !isAged(QLatin1String(name) + QStringLiteral(".zu"));
}

} // namespace

class TestCompile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void twoOperationRecordsGiveThreeNamesInOrder();
    void emptyOperationTableGivesOnlyTypeNames_data();
    void emptyOperationTableGivesOnlyTypeNames();
    void nullSecondNamesAreSkipped();
    void secondAnswerAppendsNamesAgain();
    void namesDecodeFromWindows1251();

    void toolTipWithoutHostReturnsStoredTextAfterTimeout();
    void synchronousHostToolTipIsReturnedWithoutWaiting();
    void toolTipFromOtherThreadBeforeWaitIsReturnedWithoutWaiting();
    void toolTipAnsweredFromOtherThreadReachesCaller();
    void toolTipQueuedToGuiThreadServesNextRequest();

    void runWithSynchronousTablesAnswerDoesNotWait();
    void runWithTablesFromOtherThreadBeforeWaitDoesNotWait();
    void runWithTablesFromOtherThreadReturnsEarly();
    void tablesAfterRunTimedOutReachListsOnGuiThread();

    void clickSavesTheChangedProgramsItAsksFor_data();
    void clickSavesTheChangedProgramsItAsksFor();
    void compileUnchangedProgramWritesNothingAndStillAsks_data();
    void compileUnchangedProgramWritesNothingAndStillAsks();
    void programListedTwiceIsSavedOnce();

    void maxConsoleLinesBoundsConsoleBlocks_data();
    void maxConsoleLinesBoundsConsoleBlocks();
    void clearButtonEmptiesConsole();

private:
    // Programs a, b and x ("A\n", "B\n", "X\n") and project p holding
    // `project`, all dated back; the three programs open in tabs, p the
    // current project, the window shown.
    bool openProjectAndPrograms(const QByteArray &project);
    // Types at the start of the program, as far as its editor can tell.
    void edit(const char *name, const QString &text);
    bool makeCurrent(const char *name);
    bool isChanged(const char *name) const;
    // Clicks the button and returns the file names the window asked the
    // host to compile.
    QStringList requestsOnClick(const char *button);

    TempCurrentDir tempDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
};

void TestCompile::init()
{
    // A directory of its own for each test: the window lists it.
    QVERIFY2(tempDir.make(), qPrintable(tempDir.errorString()));
    QVERIFY(tempDir.enter());
    makePlugin(plugin, window);
    QVERIFY(window);
    QVERIFY(window->operationNames().isEmpty());
    QVERIFY(window->typeNames().isEmpty());
}

void TestCompile::cleanup()
{
    deletePlugin(plugin, window);
    tempDir.leave();
}

bool TestCompile::openProjectAndPrograms(const QByteArray &project)
{
    for (const char *name : { "a", "b", "x" }) {
        if (!writeAgedFile(QLatin1String(name) + QStringLiteral(".zu"), QByteArray(name).toUpper() + "\n"))
            return false;
    }
    if (!writeAgedFile(QStringLiteral("p.zup"), project))
        return false;
    window->dirChanged();
    if (!window->selectProjByName(QStringLiteral("p")))
        return false;
    for (const char *name : { "a", "b", "x" }) {
        if (!window->addTextTab(QLatin1String(name)))
            return false;
    }
    return showAndActivate(window);
}

void TestCompile::edit(const char *name, const QString &text)
{
    auto *editor = window->findChild<ZuSourceCode *>(QLatin1String(name));
    QVERIFY(editor);
    QTextCursor(editor->document()).insertText(text);
    QVERIFY(editor->isChanged());
}

bool TestCompile::makeCurrent(const char *name)
{
    return window->findOpenTab(QLatin1String(name)) && window->currTabName() == QLatin1String(name);
}

bool TestCompile::isChanged(const char *name) const
{
    auto *editor = window->findChild<ZuSourceCode *>(QLatin1String(name));
    return editor && editor->isChanged();
}

QStringList TestCompile::requestsOnClick(const char *name)
{
    auto *button = window->findChild<QPushButton *>(QLatin1String(name));
    if (!button || !button->isVisible() || !button->isEnabled())
        return { QStringLiteral("<no button %1 to click>").arg(QLatin1String(name)) };
    QSignalSpy requests(window, &EditWindow::tryToCompile);
    QTest::mouseClick(button, Qt::LeftButton);
    QStringList names;
    for (const QList<QVariant> &request : qAsConst(requests))
        names << request.at(0).toString();
    return names;
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

void TestCompile::synchronousHostToolTipIsReturnedWithoutWaiting()
{
    EditWindow *w = window;
    QSignalSpy requests(w, &EditWindow::operToolTipRequest);
    QVERIFY(requests.isValid());
    connect(w, &EditWindow::operToolTipRequest, w,
            [w](const QString &name) { w->operToolTipAnswer(tipFor(name)); },
            Qt::DirectConnection);

    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < toolTipRounds; ++i) {
        const QString name = QStringLiteral("op%1").arg(i);
        QCOMPARE(w->getOperToolTip(name), tipFor(name));
        QCOMPARE(requests.last().at(0).toString(), name);
    }
    const qint64 elapsed = timer.elapsed();

    QCOMPARE(requests.count(), toolTipRounds);
    // The answer was in before the wait would have begun: none waited.
    QVERIFY2(elapsed < toolTipRoundsLimit, qPrintable(QString::number(elapsed)));
}

void TestCompile::toolTipFromOtherThreadBeforeWaitIsReturnedWithoutWaiting()
{
    EditWindow *w = window;
    // The answer comes from the host's thread, done before the request returns.
    connect(w, &EditWindow::operToolTipRequest, w,
            [w](const QString &name) {
                JoiningThread host { std::thread([w, name] { w->operToolTipAnswer(tipFor(name)); }) };
            },
            Qt::DirectConnection);

    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < toolTipRounds; ++i) {
        const QString name = QStringLiteral("op%1").arg(i);
        QCOMPARE(w->getOperToolTip(name), tipFor(name));
    }
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed < toolTipRoundsLimit, qPrintable(QString::number(elapsed)));
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

// An answer queued to the window's own thread cannot arrive while the
// window waits on that thread: the request gets the text stored before,
// and the answer serves the next request that gets none.
void TestCompile::toolTipQueuedToGuiThreadServesNextRequest()
{
    EditWindow *w = window;
    int answers = 0;
    const QMetaObject::Connection connection = connect(
        w, &EditWindow::operToolTipRequest, w,
        [w, &answers](const QString &name) {
            w->operToolTipAnswer(tipFor(name));
            ++answers;
        },
        Qt::QueuedConnection);

    QElapsedTimer timer;
    timer.start();
    const QString first = w->getOperToolTip(QStringLiteral("add"));
    const qint64 elapsed = timer.elapsed();
    QVERIFY(first.isEmpty());
    QCOMPARE(answers, 0);
    QVERIFY2(elapsed >= 9, qPrintable(QString::number(elapsed)));

    QTRY_COMPARE(answers, 1);
    QVERIFY(disconnect(connection));
    QCOMPARE(w->getOperToolTip(QStringLiteral("print")), tipFor(QStringLiteral("add")));
}

void TestCompile::runWithSynchronousTablesAnswerDoesNotWait()
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
    QVERIFY2(elapsed < 1000, qPrintable(QString::number(elapsed)));
}

// The host's thread has answered before the request returns, so before
// run() begins to wait.
void TestCompile::runWithTablesFromOtherThreadBeforeWaitDoesNotWait()
{
    OperationRecord operations[1] = {};
    operations[0].name = "div";
    TypeRecord types[1] = {};
    types[0].name = numberTypeBytes;
    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);

    EditWindow *w = window;
    connect(w, &EditWindow::tablesRequest, w,
            [w, &operationTable, &typeTable] {
                JoiningThread host { std::thread([&] { w->tablesAnswer(&operationTable, &typeTable); }) };
            },
            Qt::DirectConnection);

    QElapsedTimer timer;
    timer.start();
    w->run();
    const qint64 elapsed = timer.elapsed();

    QVERIFY2(elapsed < 1000, qPrintable(QString::number(elapsed)));
    QCOMPARE(w->operationNames(), QStringList { QString::fromLatin1(operations[0].name) });
    QCOMPARE(w->typeNames(), QStringList { numberTypeText() });
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
    ThreadedTablesHost host(w, tableOf(operations), tableOf(types));
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

// The highlighter and the completer read the lists on the window's thread
// at any time: an answer from the host's thread after run() gave up waiting
// leaves them alone, and its names are added on the window's thread.
void TestCompile::tablesAfterRunTimedOutReachListsOnGuiThread()
{
    OperationRecord operations[2] = {};
    operations[0].name = "and";
    operations[0].secondName = "both";
    operations[1].name = "or";
    TypeRecord types[1] = {};
    types[0].name = stringTypeBytes;
    ARRAY operationTable = tableOf(operations);
    ARRAY typeTable = tableOf(types);

    EditWindow *w = window;
    QElapsedTimer timer;
    timer.start();
    w->run();
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed >= 1900, qPrintable(QString::number(elapsed)));
    QVERIFY(w->operationNames().isEmpty());

    std::atomic<bool> answered { false };
    JoiningThread host { std::thread([&] {
        w->tablesAnswer(&operationTable, &typeTable);
        answered.store(true);
    }) };
    qsizetype namesSeen = 0;
    while (!answered.load())
        namesSeen += w->operationNames().size() + w->typeNames().size();
    host.join();
    QCOMPARE(namesSeen, 0);
    QVERIFY(w->operationNames().isEmpty());
    QVERIFY(w->typeNames().isEmpty());

    const QStringList expectedOperations { QString::fromLatin1(operations[0].name),
                                           QString::fromLatin1(operations[0].secondName),
                                           QString::fromLatin1(operations[1].name) };
    QTRY_COMPARE(w->operationNames(), expectedOperations);
    QCOMPARE(w->typeNames(), QStringList { stringTypeText() });
}

// ---------------------------------------------------------------------------
// Compile and debug requests

void TestCompile::clickSavesTheChangedProgramsItAsksFor_data()
{
    QTest::addColumn<QByteArray>("project");
    QTest::addColumn<QString>("edited");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("saved");
    QTest::addColumn<bool>("projectWritten");
    struct Click
    {
        const char *behaviour, *edited, *current, *button, *request, *saved;
        bool projectWritten;
    };
    // Compiling b, which is in the project, compiles the whole project and
    // saves its changed programs first; x, outside it, is compiled alone.
    const Click clicks[] = {
        { "compile of a project program sends the project and saves its programs", "axb", "b",
          "compileProgramButton", "p.zup", "ab", false },
        { "compile of another program sends its name and saves only it", "ax", "x", "compileProgramButton",
          "x.zu", "x", false },
        { "debug saves the project's programs and file but not another program", "abx", "x", "debugProjButton",
          "p.zup", "ab", true },
        { "debug with a project program current saves it too", "ax", "a", "debugProjButton", "p.zup", "a", true },
    };
    for (const Click &click : clicks) {
        for (const auto &[listing, project] : { std::pair("a listed once", projectOnce),
                                                std::pair("a listed twice", projectTwice) }) {
            QTest::addRow("%s, %s", click.behaviour, listing)
                    << project << click.edited << click.current << click.button << click.request << click.saved
                    << click.projectWritten;
        }
    }
}

// The edited programs have a digit typed at their start: a 1, b 2, x 9.
void TestCompile::clickSavesTheChangedProgramsItAsksFor()
{
    QFETCH(QByteArray, project);
    QFETCH(QString, edited);
    QFETCH(QString, current);
    QFETCH(QString, button);
    QFETCH(QString, request);
    QFETCH(QString, saved);
    QFETCH(bool, projectWritten);
    const QHash<QString, QByteArray> digits { { "a", "1" }, { "b", "2" }, { "x", "9" } };
    QVERIFY(openProjectAndPrograms(project));
    for (const QChar name : edited)
        edit(qPrintable(QString(name)), QString::fromLatin1(digits.value(name)));
    QVERIFY(makeCurrent(qPrintable(current)));

    QCOMPARE(requestsOnClick(qPrintable(button)), QStringList { request });
    for (const char *name : { "a", "b", "x" }) {
        const QByteArray original = QByteArray(name).toUpper() + "\n";
        if (!edited.contains(QLatin1String(name))) {
            QVERIFY2(!programWritten(name), name);
            QCOMPARE(programBytes(name), original);
        } else if (saved.contains(QLatin1String(name))) {
            QCOMPARE(programBytes(name), digits.value(QLatin1String(name)) + original);
            QVERIFY2(!isChanged(name), name);
        } else {
            QCOMPARE(programBytes(name), original);
            QVERIFY2(isChanged(name), name);
        }
    }
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), projectWritten ? writtenProject(project) : project);
}

void TestCompile::compileUnchangedProgramWritesNothingAndStillAsks_data()
{
    QTest::addColumn<QByteArray>("project");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("request");
    QTest::newRow("project program") << projectOnce << "b" << "p.zup";
    QTest::newRow("project program, a listed twice") << projectTwice << "a" << "p.zup";
    QTest::newRow("other program") << projectOnce << "x" << "x.zu";
}

// Every click asks again, whether or not the host has answered.
void TestCompile::compileUnchangedProgramWritesNothingAndStillAsks()
{
    QFETCH(QByteArray, project);
    QFETCH(QString, current);
    QFETCH(QString, request);
    QVERIFY(openProjectAndPrograms(project));
    QVERIFY(makeCurrent(qPrintable(current)));

    QCOMPARE(requestsOnClick("compileProgramButton"), QStringList { request });
    QCOMPARE(requestsOnClick("compileProgramButton"), QStringList { request });
    for (const char *name : { "a", "b", "x" }) {
        QVERIFY2(!programWritten(name), name);
        QCOMPARE(programBytes(name), QByteArray(name).toUpper() + "\n");
    }
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), project);
}

// A save that fails says so in a box; a second save of the same program,
// listed twice, would say it twice. The request goes out all the same.
void TestCompile::programListedTwiceIsSavedOnce()
{
    QVERIFY(openProjectAndPrograms(projectTwice));
    // Windows-1251 has no byte for this character: the save fails.
    edit("a", QString::fromUtf8("程"));
    QVERIFY(makeCurrent("x"));
    BoxAnswerer answerer(QMessageBox::Ok);

    QCOMPARE(requestsOnClick("debugProjButton"), QStringList { "p.zup" });
    QCOMPARE(answerer.shown.size(), 1);
    QVERIFY2(answerer.shown.at(0).text.startsWith(QStringLiteral("a\n")), qPrintable(answerer.shown.at(0).text));
    QCOMPARE(programBytes("a"), QByteArray("A\n"));
    QVERIFY(isChanged("a"));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), writtenProject(projectTwice));
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
