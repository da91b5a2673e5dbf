// The host's vocabulary: the file format, the tables handed to the plug-in,
// the answers of the host's sockets, and the names coloured by the module.

#include <QtTest>

#include <QDeadlineTimer>
#include <QMutex>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextLayout>
#include <QThread>
#include <QWaitCondition>

#include <algorithm>

#include "hostsockets.h"
#include "pluginhost.h"
#include "seginterfaces.h"
#include "settingsstore.h"
#include "testsupport.h"
#include "vocabulary.h"

namespace {

const QString sampleVocabulary = QStringLiteral(ZU_EXAMPLES_DIR "/vocabulary");

// First and second names of a table's records, "-" for a null second name.
template <typename Record>
QList<QByteArray> tableNames(const ARRAY *table, const char *Record::*name,
                             const char *Record::*secondName)
{
    QList<QByteArray> names;
    const auto *end = static_cast<const Record *>(table->end);
    for (auto *record = static_cast<const Record *>(table->first); record < end; ++record)
        names << QByteArray(record->*name)
              << (record->*secondName ? QByteArray(record->*secondName) : QByteArray("-"));
    return names;
}

QList<QByteArray> operationNames(const ARRAY *table)
{
    return tableNames(table, &OperationRecord::name, &OperationRecord::secondName);
}

QList<QByteArray> typeNames(const ARRAY *table)
{
    return tableNames(table, &TypeRecord::name, &TypeRecord::secondName);
}

// The plug-in's end of the two exchanges, as the editor window plays it: a
// request emitted without the lock, then a wait for the answer slot, which
// takes the lock and marks the answer in, so that an answer that comes
// before the wait is kept.
class PluginSockets : public QObject
{
    Q_OBJECT

public:
    // Whether the answer came before the plug-in's time-out.
    bool requestTables()
    {
        expectAnswer();
        emit tablesRequest();
        return waitForAnswer(2000);
    }

    QString requestToolTip(const QString &name)
    {
        expectAnswer();
        emit operToolTipRequest(name);
        waitForAnswer(10);
        QMutexLocker locker(&mutex);
        return toolTip;
    }

    // Read once the answering thread has been joined.
    QList<QByteArray> operations;
    QList<QByteArray> types;
    QThread *answeringThread = nullptr;

signals:
    void tablesRequest();
    void operToolTipRequest(QString);

public slots:
    void tablesAnswer(ARRAY *operationTable, ARRAY *typeTable)
    {
        QMutexLocker locker(&mutex);
        operations = operationNames(operationTable);
        types = typeNames(typeTable);
        answeringThread = QThread::currentThread();
        arrived = true;
        answered.wakeAll();
    }

    void operToolTipAnswer(QString text)
    {
        QMutexLocker locker(&mutex);
        toolTip = text;
        arrived = true;
        answered.wakeAll();
    }

private:
    void expectAnswer()
    {
        QMutexLocker locker(&mutex);
        arrived = false;
    }

    bool waitForAnswer(int timeout)
    {
        QMutexLocker locker(&mutex);
        const QDeadlineTimer deadline(timeout);
        while (!arrived && answered.wait(&mutex, deadline)) {
        }
        return arrived;
    }

    QMutex mutex;
    QWaitCondition answered;
    bool arrived = false;
    QString toolTip;
};

// The character format over the first occurrence of `word` in the document,
// as the highlighter laid it out.
QTextCharFormat formatOfWord(const QTextDocument *document, const QString &word)
{
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const int start = block.text().indexOf(word);
        if (start < 0)
            continue;
        const QVector<QTextLayout::FormatRange> ranges = block.layout()->formats();
        for (const QTextLayout::FormatRange &range : ranges) {
            if (range.start <= start && start + word.size() <= range.start + range.length)
                return range.format;
        }
        return QTextCharFormat();
    }
    return QTextCharFormat();
}

} // namespace

class TestVocabulary : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void sampleLoadsWithoutErrors();
    void sampleKnowsTheExamplePrograms();
    void malformedLinesReportedAndSkipped();
    void nameHoldingNulIsRefused();
    void bytesLoadAsAFileWithTheirSourceInErrors();
    void tablesHoldWindows1251Names();
    void emptyUntilLoaded();
    void missingFileLeavesEmptyTables();
    void toolTipsByEitherName();

    void socketsAnswerTablesFromAnotherThread();
    void socketsAnswerToolTips();

    void editorColoursTheNames();
    void runGetsTablesWithoutTimeOut();

private:
    // A vocabulary file of these UTF-8 lines in the test's directory.
    QString writeVocabulary(const QString &fileName, const QByteArray &text);

    QTemporaryDir m_dir;
};

void TestVocabulary::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QVERIFY(QFile::exists(sampleVocabulary));
}

QString TestVocabulary::writeVocabulary(const QString &fileName, const QByteArray &text)
{
    const QString path = m_dir.filePath(fileName);
    if (!writeFile(path, text))
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

void TestVocabulary::sampleLoadsWithoutErrors()
{
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(sampleVocabulary));
    QCOMPARE(vocabulary.errors(), QStringList());
    QCOMPARE(vocabulary.operations().size(), 39);
    QCOMPARE(vocabulary.types().size(), 12);

    const auto secondNames = [](const auto &entries) {
        return std::count_if(entries.begin(), entries.end(),
                             [](const auto &entry) { return !entry.secondName.isEmpty(); });
    };
    QCOMPARE(secondNames(vocabulary.operations()), 21);
    QCOMPARE(secondNames(vocabulary.types()), 9);
    for (const Vocabulary::Operation &operation : vocabulary.operations())
        QVERIFY2(!operation.toolTip.isEmpty(), qPrintable(operation.name));
}

void TestVocabulary::sampleKnowsTheExamplePrograms()
{
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(sampleVocabulary));
    for (const char *name : {"print", "for", "return", "="})
        QVERIFY2(!vocabulary.toolTip(QLatin1String(name)).isEmpty(), name);
    QStringList types;
    for (const Vocabulary::Type &type : vocabulary.types())
        types << type.name;
    for (const char *name : {"int", "float", "string"})
        QVERIFY2(types.contains(QLatin1String(name)), name);
}

void TestVocabulary::malformedLinesReportedAndSkipped()
{
    const QString path = writeVocabulary(QStringLiteral("malformed"),
            "# good and bad lines\n"
            "operation print печать : Выводит значения\n"
            "command print\n"
            "operation\n"
            "operation : no name\n"
            "operation вывод : not ASCII\n"
            "type 程序\n"
            "operation go 程序 : second name outside windows-1251\n"
            "type int целое лишнее\n"
            "type real : a type has no tip\n"
            "operation echo печать : given twice\n"
            "operation \xff\xfe\n"
            "\n"
            "   type int целое\n"
            "operation := : Присваивание\n");
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(path));

    const QString at = path + QLatin1Char(':');
    QCOMPARE(vocabulary.errors(), (QStringList {
        at + QStringLiteral("3: unknown keyword \"command\""),
        at + QStringLiteral("4: missing name"),
        at + QStringLiteral("5: missing name"),
        at + QStringLiteral("6: operation name \"вывод\" is not ASCII"),
        at + QStringLiteral("7: name \"程序\" cannot be written in windows-1251"),
        at + QStringLiteral("8: name \"程序\" cannot be written in windows-1251"),
        at + QStringLiteral("9: too many names: at most a name and a second name"),
        at + QStringLiteral("10: a type has no tool tip"),
        at + QStringLiteral("11: name \"печать\" given twice"),
        at + QStringLiteral("12: not UTF-8 text"),
    }));

    QCOMPARE(vocabulary.operations().size(), 2);
    QCOMPARE(vocabulary.operations().at(0).name, QStringLiteral("print"));
    QCOMPARE(vocabulary.operations().at(0).secondName, QStringLiteral("печать"));
    QCOMPARE(vocabulary.operations().at(1).name, QStringLiteral(":="));
    QCOMPARE(vocabulary.operations().at(1).toolTip, QStringLiteral("Присваивание"));
    QCOMPARE(vocabulary.types().size(), 1);
    QCOMPARE(vocabulary.types().at(0).secondName, QStringLiteral("целое"));
}

// A table's name ends at its first NUL: the host would hand over another name.
void TestVocabulary::nameHoldingNulIsRefused()
{
    const QString path = writeVocabulary(QStringLiteral("nul"),
            QByteArray("operation a\0b : tip\n"
                       "type int c\0\n"
                       "operation print\n", 48));
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(path));

    const QString at = path + QLatin1Char(':');
    QCOMPARE(vocabulary.errors(), (QStringList {
        at + QStringLiteral("1: a name holds a NUL character"),
        at + QStringLiteral("2: a name holds a NUL character"),
    }));
    QCOMPARE(operationNames(vocabulary.operationTable()), (QList<QByteArray> {"print", "-"}));
    QCOMPARE(typeNames(vocabulary.typeTable()), QList<QByteArray>());
    QCOMPARE(vocabulary.toolTip(QStringLiteral("a")), QString());
}

void TestVocabulary::bytesLoadAsAFileWithTheirSourceInErrors()
{
    Vocabulary vocabulary;
    vocabulary.loadBytes("operation\r\ntype int\r\n\r\noperation print : Выводит\nbad",
                         QStringLiteral("bytes"));
    QCOMPARE(vocabulary.errors(), (QStringList { QStringLiteral("bytes:1: missing name"),
                                                 QStringLiteral("bytes:5: unknown keyword \"bad\"") }));
    QCOMPARE(operationNames(vocabulary.operationTable()), (QList<QByteArray> {"print", "-"}));
    QCOMPARE(vocabulary.toolTip(QStringLiteral("print")), QStringLiteral("Выводит"));
    QCOMPARE(typeNames(vocabulary.typeTable()), (QList<QByteArray> {"int", "-"}));
}

void TestVocabulary::tablesHoldWindows1251Names()
{
    const QString path = writeVocabulary(QStringLiteral("tables"),
            "operation print печать : Выводит значения\n"
            "operation for\n"
            "type int целое\n"
            "type массив\n");
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(path));
    QCOMPARE(vocabulary.errors(), QStringList());

    QCOMPARE(operationNames(vocabulary.operationTable()),
             (QList<QByteArray> {"print", "\xef\xe5\xf7\xe0\xf2\xfc", "for", "-"}));
    QCOMPARE(typeNames(vocabulary.typeTable()),
             (QList<QByteArray> {"int", "\xf6\xe5\xeb\xee\xe5", "\xec\xe0\xf1\xf1\xe8\xe2", "-"}));
}

void TestVocabulary::emptyUntilLoaded()
{
    Vocabulary vocabulary;
    QCOMPARE(operationNames(vocabulary.operationTable()), QList<QByteArray>());
    QCOMPARE(typeNames(vocabulary.typeTable()), QList<QByteArray>());
    QCOMPARE(vocabulary.toolTip(QStringLiteral("print")), QString());
}

void TestVocabulary::missingFileLeavesEmptyTables()
{
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(sampleVocabulary));
    QVERIFY(!vocabulary.load(m_dir.filePath(QStringLiteral("missing"))));
    QVERIFY(!vocabulary.errorString().isEmpty());
    QCOMPARE(operationNames(vocabulary.operationTable()), QList<QByteArray>());
    QCOMPARE(typeNames(vocabulary.typeTable()), QList<QByteArray>());
    QCOMPARE(vocabulary.toolTip(QStringLiteral("print")), QString());
}

void TestVocabulary::toolTipsByEitherName()
{
    const QString path = writeVocabulary(QStringLiteral("tips"),
            "operation print печать :   Выводит значения\\nв консоль  \n"
            "operation for : Цикл: for (i, 1, 10)\n"
            "operation exit\n"
            "type string строка\n");
    Vocabulary vocabulary;
    QVERIFY(vocabulary.load(path));

    const QString printTip = QStringLiteral("Выводит значения\nв консоль");
    QCOMPARE(vocabulary.toolTip(QStringLiteral("print")), printTip);
    QCOMPARE(vocabulary.toolTip(QStringLiteral("печать")), printTip);
    QCOMPARE(vocabulary.toolTip(QStringLiteral("for")), QStringLiteral("Цикл: for (i, 1, 10)"));
    QCOMPARE(vocabulary.toolTip(QStringLiteral("exit")), QString());
    QCOMPARE(vocabulary.toolTip(QStringLiteral("string")), QString());
    QCOMPARE(vocabulary.toolTip(QStringLiteral("Print")), QString());
    QCOMPARE(vocabulary.toolTip(QString()), QString());
}

void TestVocabulary::socketsAnswerTablesFromAnotherThread()
{
    const SocketRecord records[] = {
        { 0, "ZuTablesStartRequest2Arrays", "2tablesRequest()", 1, 1, 0 },
        { 0, nullptr, "1tablesAnswer(ARRAY*,ARRAY*)", 0, 0, 0 },
    };
    PluginSockets plugin;
    HostSockets host;
    QVERIFY(host.vocabulary().load(sampleVocabulary));
    host.pair(&plugin, records, 2);

    QVERIFY(plugin.requestTables());
    host.waitForAnswers();
    QVERIFY(plugin.answeringThread && plugin.answeringThread != QThread::currentThread());
    QCOMPARE(plugin.operations.size(), 2 * 39);
    QCOMPARE(plugin.operations.mid(0, 4), (QList<QByteArray> {"if", "\xe5\xf1\xeb\xe8", "else", "\xe8\xed\xe0\xf7\xe5"}));
    QCOMPARE(plugin.types.size(), 2 * 12);
    QCOMPARE(plugin.types.mid(0, 4), (QList<QByteArray> {"int", "\xf6\xe5\xeb\xee\xe5", "long", "-"}));
}

void TestVocabulary::socketsAnswerToolTips()
{
    const SocketRecord records[] = {
        { 0, "operToolTipQString", "2operToolTipRequest(QString)", 1, 1, 0 },
        { 0, nullptr, "1operToolTipAnswer(QString)", 0, 0, 0 },
    };
    PluginSockets plugin;
    HostSockets host;
    QVERIFY(host.vocabulary().load(sampleVocabulary));
    host.pair(&plugin, records, 2);

    const QString tip = plugin.requestToolTip(QStringLiteral("печать"));
    QVERIFY2(tip.startsWith(QStringLiteral("Выводит значения в консоль")), qPrintable(tip));
    QCOMPARE(tip, host.vocabulary().toolTip(QStringLiteral("print")));
    // An unknown name clears the text the plug-in keeps.
    QCOMPARE(plugin.requestToolTip(QStringLiteral("printer")), QString());
}

// The module builds its highlighter from the tables: the names of the
// sample appear in hello.zu in their colours.
void TestVocabulary::editorColoursTheNames()
{
    QTemporaryDir programs;
    QVERIFY(programs.isValid());
    QVERIFY(QFile::copy(QStringLiteral(ZU_EXAMPLES_DIR "/programs/hello.zu"),
                        programs.filePath(QStringLiteral("hello.zu"))));
    SettingsStore store(m_dir.filePath(QStringLiteral("editor.ini")));
    store.setValue(QStringLiteral("programsDir"), programs.path());
    PluginHost host(&store);
    QVERIFY(host.vocabulary().load(sampleVocabulary));
    QVERIFY2(host.load(QStringLiteral(ZU_MODULE_PATH)), qPrintable(host.errorString()));
    host.start();
    host.openPrograms({QStringLiteral("hello")});

    auto *editor = host.window()->findChild<QPlainTextEdit *>(QStringLiteral("hello"));
    QVERIFY(editor);
    const QTextDocument *document = editor->document();
    QTRY_COMPARE(formatOfWord(document, QStringLiteral("print")).foreground().color(),
                 QColor(Qt::red));
    QCOMPARE(formatOfWord(document, QStringLiteral("print")).fontWeight(), int(QFont::Bold));
    QCOMPARE(formatOfWord(document, QStringLiteral("string")).foreground().color(),
             QColor(Qt::blue));
    QCOMPARE(formatOfWord(document, QStringLiteral("greeting")).foreground().color(),
             QTextCharFormat().foreground().color());
}

// The host answers the tables from its worker at once, and run() keeps an
// answer that comes before it begins to wait, instead of sitting out its
// two-second time-out. Timed in the process, on run() alone: starting a
// process, on a loaded machine or under a sanitizer or an emulator, takes
// longer than that.
void TestVocabulary::runGetsTablesWithoutTimeOut()
{
    SettingsStore store(m_dir.filePath(QStringLiteral("tables.ini")));
    PluginHost host(&store);
    QVERIFY(host.vocabulary().load(sampleVocabulary));
    QVERIFY2(host.load(QStringLiteral(ZU_MODULE_PATH)), qPrintable(host.errorString()));
    host.start();

    // The host's run slot once more, as start() invoked it.
    QElapsedTimer timer;
    timer.start();
    QVERIFY(QMetaObject::invokeMethod(host.window(), "run", Qt::DirectConnection));
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed < 1500, qPrintable(QStringLiteral("run() took %1 ms").arg(elapsed)));
}

QTEST_MAIN(TestVocabulary)

#include "tst_vocabulary.moc"
