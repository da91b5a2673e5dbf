// The compiler's messages: how one is read, what the window does with each
// kind, the console's time-stamped entries and their colours, and the
// compiler's table of error texts.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextCodec>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

#include <limits>

#include "boxanswerer.h"
#include "compilermessage.h"
#include "editwindow.h"
#include "errormessages.h"
#include "testsupport.h"
#include "windowfixture.h"
#include "zusourcecode.h"

namespace {

const unsigned int noColumn = std::numeric_limits<unsigned int>::max();
const unsigned int largest = std::numeric_limits<unsigned int>::max();

// The compiler's texts for codes 0 to 80.
const char *const errorTexts[] = {
        "Нет ошибки",
        "Нет свободной памяти, или неизвестная ошибка",
        "Не передано параметров при вызове этого блока",
        "Стек параметров переполнен",
        "В блок не был передан параметр с полученным номером",
        "Строка или константа не соответствуют требуемому типу",
        "Недопустимый тип новой переменной",
        "Уже есть переменная с таким именем",
        "Переполнение таблицы переменных",
        "Строка слишком длинная",
        "Ожидалось имя операции",
        "Имя не найдено в таблице",
        "Неожиданный конец программы, возможно не закрыта фигурная скобка",
        "Недопустимое количество параметров операции",
        "Допустима только переменная",
        "",
        "Переменная не найдена ИЛИ отсутствует ; у предыдущей операции ИЛИ вызов операции без скобок ()",
        "Недопустимые данные или тип операции",
        "Незавершенная или слишком длинная строковая константа",
        "Тип уже определе",
        "Недопустимый параметр при вызове операции",
        "Слишком много параметров ИЛИ вызов операции без скобок ()",
        "Должно быть имя типа",
        "Отсутствует открывающая фигурная скобка { ",
        "Отсутствует закрывающая фигурная скобка } ИЛИ ; в конце блока",
        "Строка должна иметь продолжение",
        "Должно быть имя операции для вызова",
        "Неизвестная операция",
        "Преобразование данных этих типов не определено",
        "Возвращаемое операцией значение должно быть использовано",
        "Функция ничего не возвращает",
        "Должна быть закрывающая круглая скобка ) при вызове операции",
        "Не допустимый тип операции",
        "Невозможно определить тип, пожалуйста, используйте операции с именами типов для явного преобразования",
        "Внутреннаяя ошибка - стек параметров пуст, сообщите разработчикам",
        "Деление на ноль",
        "",
        "Незавершенный комментарий",
        "Программа прервана",
        "Операции передано недопустимое значение",
        "Недопустимое или слишком длинное имя",
        "Массив не допустим, только простые переменные",
        "Простые переменные недопустимы, только передача массива целиком",
        "Ожидалась закрывающая квадратная скобка ] ",
        "Загружаемая программа содержит ссылку на несуществующий тип данных",
        "Индекс элемента вышел за границу массива",
        "Константа не допустима",
        "Переполнение кодовой страницы, программа слишком большая",
        "Неподходящее место для [",
        "Неподходящее место для ]",
        "Неподходящее место для ; или обнаружен неожиданный конец программы",
        "Неподходящее место для )",
        "Недопустимый параметр",
        "Слишком большая глубина вложенности вызовов, упростите выражение",
        "Существует операция с таким же именем ИЛИ отсутствует ; у предыдущей операции",
        "Существует тип данных с таким же именем ИЛИ отсутствует ; у предыдущей операции",
        "Существует литеральная константа с таким же именем",
        "Существует переменная с таким же именем",
        "Слишком много констант в программе, переполнение таблицы",
        "Слишком много переменных в программе, переполнение таблицы",
        "Внутренняя ошибка: Переменная или массив не проинициализированы, сообщите разработчикам",
        "Невозможно преобразовать данные между собой, типы несовместимы",
        "Операцию можно использовать только в префиксной форме",
        "Блочная константа не допустима",
        "Недопустмая метка программы, возможно попытка загрузки несовместимой программы",
        "Ошибочная запись в файле программы, возможно попытка загрузки несовместимой программы",
        "Ошибка контрольной суммы программы, программа испорчена",
        "Код программы слишком велик, возможно попытка загрузки несовместимой программы",
        "Ошибка контрольной суммы данных программы, программа испорчена",
        "Слишком много данных",
        "Переменная не является массивом",
        "Внутренняя ошибка при инициализации, сообщите разработчикам",
        "Неожиданный конец блока, удаление неинициализированных переменных",
        "Выход за границы счетного цикла",
        "БПФ не проинициализировано",
        "Неверная инициализация БПФ",
        "Массив нулевой длины недопустим",
        "Функция должна вернуть значение",
        "Ошибка при открытии файла",
        "Ошибка при записи в файл",
        "Ошибка при закрытии файла",
};

QString errorText(unsigned int code)
{
    return u(errorTexts[code]);
}

QTextCodec *codePage()
{
    return QTextCodec::codecForName("windows-1251");
}

// A located error as the host words it: the line number and two words
// before the file name, one word before the code, then a line of text, the
// source line and the caret line.
QString locatedError(const QString &line, const QString &file, const QString &code, const QString &caretLine)
{
    return QStringLiteral("\nIn line #") + line + QStringLiteral(" of file ") + file + QStringLiteral("\nError ")
           + code + QStringLiteral(": see below\nCompilation stopped\n    source line\n") + caretLine
           + QStringLiteral("\n");
}

QString caretAt(int column)
{
    return QString(column, QLatin1Char(' ')) + QLatin1Char('^');
}

// Twenty lines "l1 value1 end" to "l20 value20 end".
QByteArray programOfTwentyLines()
{
    QByteArray text;
    for (int i = 1; i <= 20; ++i)
        text += "l" + QByteArray::number(i) + " value" + QByteArray::number(i) + " end\n";
    return text;
}

const QRegularExpression timeStamp(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d $"));

// An entry as logged: its time stamp and a blank, then text.
bool isEntry(const QString &logged, const QString &text)
{
    return timeStamp.match(logged.left(9)).hasMatch() && logged.mid(9) == text;
}

const QString red = QColor(Qt::red).name();
const QString black = QColor(Qt::black).name();
const QString plain = QStringLiteral("default");

// The colour of each line of the document: the name of its text's colour,
// "default" when none is set, "mixed" for more than one, "" for an empty
// line.
QStringList lineColours(const QTextDocument *document)
{
    QStringList colours;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        QSet<QString> seen;
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            seen << (format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color().name() : plain);
        }
        colours << (seen.isEmpty() ? QString() : seen.size() == 1 ? *seen.begin() : QStringLiteral("mixed"));
    }
    return colours;
}

// Counts the paint events of the widgets it filters.
class PaintCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

class TestMessages : public QObject, public WindowFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Reading a message
    void kindFollowsMarkersInOrder_data();
    void kindFollowsMarkersInOrder();
    void locatedErrorGivesLineFileCodeAndCaretColumn();
    void locatedErrorNumbers_data();
    void locatedErrorNumbers();
    void missingLinesGiveNoCodeAndNoColumn_data();
    void missingLinesGiveNoCodeAndNoColumn();
    void caretBeyondCutLineIsStillFound();
    void wordMovesPastLineEndsReadLaterLines();
    void programNameDropsDirectoryAndLastExtension_data();
    void programNameDropsDirectoryAndLastExtension();
    void systemErrorGivesNumberAndFileText_data();
    void systemErrorGivesNumberAndFileText();
    void leadingLinesSplitAsDocumentBlocks();

    // The error texts
    void errorTextsAreWindows1251Bytes();
    void codesAboveTableGiveTextOfCodeZero();
    void errorCodeEntry_data();
    void errorCodeEntry();

    // The console
    void onlyNewestEntrysLastLineIsRed();
    void maxLinesKeepsOnlyNewestLines();
    void clearButtonEmptiesConsole();
    void entryIsPaintedBeforeReturning();

    // The window's answer to each kind
    void locatedErrorMarksProgramLogsAndRaisesWindow_data();
    void locatedErrorMarksProgramLogsAndRaisesWindow();
    void locatedErrorForMissingProgramShowsBoxOnly();
    void locatedErrorForUnreadableProgramMarksNothing();
    void locatedErrorWithBadProgramNameOpensNothing_data();
    void locatedErrorWithBadProgramNameOpensNothing();
    void markerNotAtStartOnlyEmitsFalse_data();
    void markerNotAtStartOnlyEmitsFalse();
    void readyMessageLogsNoErrorsAndEmitsFalse();
    void otherTextEmitsFalseSilently_data();
    void otherTextEmitsFalseSilently();
    void systemErrorLogsLibraryTextAndFile();
    void systemErrorWithoutFileDropsFiveCharacters();
    void hugeSystemErrorIsLoggedCutShort();

    // Messages a broken host could send
    void badMessageLeavesFilesAndConsoleUsable_data();
    void badMessageLeavesFilesAndConsoleUsable();

private:
    // <temp>/progs becomes the programs directory, with program prog of
    // twenty lines and program other, and victims beside it; the window
    // is made there, not shown.
    bool makeWindowOverPrograms();
    QPlainTextEdit *console() const;
    ZuSourceCode *editorOf(const QString &name) const;
    // Sends the message as the host does, through the slot.
    void send(const QString &message);
    // Logs an entry of the error-code form, as the host may.
    void logCode(unsigned int code);
};

void TestMessages::init()
{
    QVERIFY2(tempDir.make(), qPrintable(tempDir.errorString()));
    QVERIFY(tempDir.enter());
}

void TestMessages::cleanup()
{
    deletePluginWindow();
    tempDir.leave();
}

bool TestMessages::makeWindowOverPrograms()
{
    return enterProgramsDirBesideVictims(tempDir.path())
           && writeAgedFile(QStringLiteral("prog.zu"), programOfTwentyLines())
           && writeAgedFile(QStringLiteral("other.zu"), "other\n") && makePluginWindow() && console();
}

QPlainTextEdit *TestMessages::console() const
{
    return window->findChild<QPlainTextEdit *>(QStringLiteral("consoleEdit"));
}

ZuSourceCode *TestMessages::editorOf(const QString &name) const
{
    return window->findChild<ZuSourceCode *>(name);
}

void TestMessages::send(const QString &message)
{
    QVERIFY(QMetaObject::invokeMethod(window, "parseMessage", Q_ARG(QString, message)));
}

void TestMessages::logCode(unsigned int code)
{
    QVERIFY(QMetaObject::invokeMethod(window, "addConsoleErrMsg", Q_ARG(uint, code)));
}

// ---------------------------------------------------------------------------
// Reading a message

void TestMessages::kindFollowsMarkersInOrder_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("kind");
    const QString located = locatedError(QStringLiteral("3"), QStringLiteral("a.zu"), QStringLiteral("5"), caretAt(2));
    QTest::newRow("located") << located << int(CompilerMessage::LocatedError);
    QTest::newRow("located holding the other markers")
        << located + QStringLiteral("\nError while\nProgram ready to run") << int(CompilerMessage::LocatedError);
    QTest::newRow("located marker without line feed") << located.mid(1) << int(CompilerMessage::Other);
    QTest::newRow("located marker later") << QStringLiteral("x") + located << int(CompilerMessage::Other);
    QTest::newRow("located marker in another case") << QStringLiteral("\nin line #3") << int(CompilerMessage::Other);
    QTest::newRow("system") << QStringLiteral("\nError while opening (2) File: a.zu")
                            << int(CompilerMessage::SystemError);
    QTest::newRow("system marker later") << QStringLiteral("abc\nError while") << int(CompilerMessage::SystemError);
    QTest::newRow("system before ready") << QStringLiteral("\nProgram ready to run\nError while")
                                         << int(CompilerMessage::SystemError);
    QTest::newRow("system marker without line feed") << QStringLiteral("Error while") << int(CompilerMessage::Other);
    QTest::newRow("ready") << QStringLiteral("\nProgram ready to run\n") << int(CompilerMessage::Ready);
    QTest::newRow("ready marker later") << QStringLiteral("x\nProgram ready to run") << int(CompilerMessage::Other);
    QTest::newRow("ready marker cut short") << QStringLiteral("\nProgram ready") << int(CompilerMessage::Other);
    QTest::newRow("empty") << QString() << int(CompilerMessage::Other);
}

void TestMessages::kindFollowsMarkersInOrder()
{
    QFETCH(QString, message);
    QFETCH(int, kind);
    QCOMPARE(int(CompilerMessage::parse(message).kind), kind);
}

void TestMessages::locatedErrorGivesLineFileCodeAndCaretColumn()
{
    const CompilerMessage message = CompilerMessage::parse(
        locatedError(QStringLiteral("12"), QStringLiteral("dir/prog.zu"), QStringLiteral("17"), caretAt(4)));
    QCOMPARE(int(message.kind), int(CompilerMessage::LocatedError));
    QCOMPARE(message.line, 12u);
    QCOMPARE(message.fileName, QStringLiteral("dir/prog.zu"));
    QCOMPARE(message.programName(), QStringLiteral("prog"));
    QCOMPARE(message.code, 17u);
    QCOMPARE(message.column, 4u);
    QCOMPARE(message.errorNumber, 0u);
    QCOMPARE(message.fileText, QString());
}

// The number words are whatever the word moves select, the blank after
// them included.
void TestMessages::locatedErrorNumbers_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("caretLine");
    QTest::addColumn<unsigned int>("expectedLine");
    QTest::addColumn<unsigned int>("expectedCode");
    QTest::addColumn<unsigned int>("expectedColumn");
    QTest::newRow("plain") << QStringLiteral("7") << QStringLiteral("3") << caretAt(0) << 7u << 3u << 0u;
    QTest::newRow("negative") << QStringLiteral("-7") << QStringLiteral("-3") << caretAt(1) << 0u << 0u << 1u;
    QTest::newRow("not numbers") << QStringLiteral("seven") << QStringLiteral("x3") << QStringLiteral("^^")
                                 << 0u << 0u << 0u;
    QTest::newRow("largest") << QStringLiteral("4294967295") << QStringLiteral("4294967295") << caretAt(9)
                             << largest << largest << 9u;
    QTest::newRow("too big") << QStringLiteral("4294967296") << QStringLiteral("99999999999999999999999")
                             << caretAt(9) << largest << largest << 9u;
    QTest::newRow("no caret") << QStringLiteral("1") << QStringLiteral("2") << QStringLiteral("   ") << 1u << 2u
                              << noColumn;
    QTest::newRow("caret after text") << QStringLiteral("1") << QStringLiteral("2") << QStringLiteral("ab ^ ^")
                                      << 1u << 2u << 3u;
}

void TestMessages::locatedErrorNumbers()
{
    QFETCH(QString, line);
    QFETCH(QString, code);
    QFETCH(QString, caretLine);
    const CompilerMessage message = CompilerMessage::parse(locatedError(line, QStringLiteral("a.zu"), code, caretLine));
    QTEST(message.line, "expectedLine");
    QTEST(message.code, "expectedCode");
    QTEST(message.column, "expectedColumn");
}

// A caret or a code on a line other than its own is not taken.
void TestMessages::missingLinesGiveNoCodeAndNoColumn_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<unsigned int>("code");
    QTest::addColumn<unsigned int>("column");
    QTest::newRow("header only") << QStringLiteral("\nIn line #4 of file a.zu") << QStringLiteral("a.zu") << 0u
                                 << noColumn;
    QTest::newRow("code line, caret line missing")
        << QStringLiteral("\nIn line #4 of file a.zu\nError 5 ^\n^\n^") << QStringLiteral("a.zu") << 5u << noColumn;
    QTest::newRow("marker only") << QStringLiteral("\nIn line #") << QString() << 0u << noColumn;
}

void TestMessages::missingLinesGiveNoCodeAndNoColumn()
{
    QFETCH(QString, message);
    const CompilerMessage parsed = CompilerMessage::parse(message);
    QCOMPARE(int(parsed.kind), int(CompilerMessage::LocatedError));
    QTEST(parsed.fileName, "fileName");
    QTEST(parsed.code, "code");
    QTEST(parsed.column, "column");
}

// The document holds the lines cut short; the column comes from the whole
// caret line all the same.
void TestMessages::caretBeyondCutLineIsStillFound()
{
    const int column = CompilerMessage::defaultMaxLineLength * 3;
    const CompilerMessage message =
        CompilerMessage::parse(locatedError(QStringLiteral("2"), QStringLiteral("a.zu"), QStringLiteral("9"),
                                            caretAt(column)));
    QCOMPARE(message.column, unsigned(column));
    QCOMPARE(message.line, 2u);
    QCOMPARE(message.code, 9u);
}

// A word move at the end of a line goes on to the next one: with lines
// too short for their words, every value comes from a later line than its
// own, up to the eleventh.
void TestMessages::wordMovesPastLineEndsReadLaterLines()
{
    const CompilerMessage message =
        CompilerMessage::parse(QStringLiteral("\nIn line #") + QString(9, QLatin1Char('\n')) + QStringLiteral("  ^\n"));
    QCOMPARE(CompilerMessage::linesRead, 11);
    QCOMPARE(message.line, 0u);
    QCOMPARE(message.fileName, QString());
    QCOMPARE(message.code, 0u);
    QCOMPARE(message.column, 2u);

    const CompilerMessage longer = CompilerMessage::parse(QStringLiteral("\nIn line #\n7\n\nx 5\n.\na\n^\n"));
    QCOMPARE(longer.line, 0u);
    QCOMPARE(longer.fileName, QString());
    QCOMPARE(longer.code, 5u);
    QCOMPARE(longer.column, 0u);
}

void TestMessages::programNameDropsDirectoryAndLastExtension_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("programName");
    QTest::newRow("plain") << QStringLiteral("prog.zu") << QStringLiteral("prog");
    QTest::newRow("no extension") << QStringLiteral("prog") << QStringLiteral("prog");
    QTest::newRow("relative directory") << QStringLiteral("../lib/prog.zu") << QStringLiteral("prog");
    QTest::newRow("absolute") << QStringLiteral("/no/such/dir/prog.zu") << QStringLiteral("prog");
    QTest::newRow("two extensions") << QStringLiteral("prog.v2.zu") << QStringLiteral("prog.v2");
    QTest::newRow("blank inside") << QStringLiteral("my prog.zu") << QStringLiteral("my prog");
    QTest::newRow("directory only") << QStringLiteral("dir/") << QString();
}

void TestMessages::programNameDropsDirectoryAndLastExtension()
{
    QFETCH(QString, fileName);
    const CompilerMessage message =
        CompilerMessage::parse(locatedError(QStringLiteral("1"), fileName, QStringLiteral("1"), caretAt(0)));
    QCOMPARE(message.fileName, fileName);
    QTEST(message.programName(), "programName");
}

void TestMessages::systemErrorGivesNumberAndFileText_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<unsigned int>("errorNumber");
    QTest::addColumn<QString>("fileText");
    QTest::newRow("as the host words it") << QStringLiteral("\nError while opening (2) File: a.zu\n") << 2u
                                          << QStringLiteral("a.zu\n");
    QTest::newRow("later brackets ignored") << QStringLiteral("\nError while (13) x (2) File: a b") << 13u
                                            << QStringLiteral("a b");
    QTest::newRow("no File") << QStringLiteral("\nError while (5)") << 5u << QStringLiteral("r while (5)");
    QTest::newRow("no brackets") << QStringLiteral("\nError while File:x") << 0u << QString();
    QTest::newRow("closing bracket first") << QStringLiteral(")\nError while (2") << 0u
                                           << QStringLiteral("or while (2");
    QTest::newRow("not a number") << QStringLiteral("\nError while (two) File: a") << 0u << QStringLiteral("a");
    QTest::newRow("too big") << QStringLiteral("\nError while (99999999999) File: a") << largest << QStringLiteral("a");
}

void TestMessages::systemErrorGivesNumberAndFileText()
{
    QFETCH(QString, message);
    const CompilerMessage parsed = CompilerMessage::parse(message);
    QCOMPARE(int(parsed.kind), int(CompilerMessage::SystemError));
    QTEST(parsed.errorNumber, "errorNumber");
    QTEST(parsed.fileText, "fileText");
}

void TestMessages::leadingLinesSplitAsDocumentBlocks()
{
    const QString text = QStringLiteral("a\rb\r\nc") + QChar(QChar::ParagraphSeparator) + QStringLiteral("d")
                         + QChar(QChar::LineSeparator) + QStringLiteral("e\nf") + QChar(0xfdd0) + QStringLiteral("g")
                         + QChar(0xfdd1) + QStringLiteral("h") + QChar() + QStringLiteral("i\n");
    QTextDocument document;
    document.setPlainText(text);
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        blocks << block.text();
    QCOMPARE(blocks.size(), 8);
    QCOMPARE(CompilerMessage::leadingLines(text, 100), blocks);
    QCOMPARE(CompilerMessage::leadingLines(text, 3), blocks.mid(0, 3));
    QCOMPARE(CompilerMessage::leadingLines(QString(), 6), QStringList { QString() });
}

// ---------------------------------------------------------------------------
// The error texts

void TestMessages::errorTextsAreWindows1251Bytes()
{
    QCOMPARE(int(sizeof errorTexts / sizeof *errorTexts), 81);
    QCOMPARE(errorMsgCount, 81u);
    QVERIFY(codePage());
    for (unsigned int code = 0; code < errorMsgCount; ++code) {
        const QByteArray where = QByteArray::number(code);
        QVERIFY2(QByteArray(errorMsg(code)) == codePage()->fromUnicode(errorText(code)), where.constData());
        QVERIFY2(codePage()->toUnicode(errorMsg(code)) == errorText(code), where.constData());
    }
    QCOMPARE(errorText(15), QString());
    QCOMPARE(errorText(36), QString());
}

void TestMessages::codesAboveTableGiveTextOfCodeZero()
{
    for (unsigned int code : { 81u, 82u, 1000u, largest })
        QCOMPARE(errorMsg(code), errorMsg(0));
}

void TestMessages::errorCodeEntry_data()
{
    QTest::addColumn<unsigned int>("code");
    QTest::addColumn<QString>("entry");
    QTest::newRow("0") << 0u << errorText(0) + QLatin1Char('\n');
    for (unsigned int code = 1; code < 81; ++code)
        QTest::newRow(qPrintable(QString::number(code))) << code << u("Ошибка: ") + errorText(code) + QLatin1Char('\n');
    for (unsigned int code : { 81u, 1000u, largest })
        QTest::newRow(qPrintable(QString::number(code))) << code << u("Ошибка: Нет ошибки\n");
}

void TestMessages::errorCodeEntry()
{
    QFETCH(unsigned int, code);
    QFETCH(QString, entry);
    QVERIFY(makeWindowOverPrograms());
    logCode(code);
    const QString logged = console()->toPlainText();
    QVERIFY2(isEntry(logged, entry), qPrintable(logged));
}

// ---------------------------------------------------------------------------
// The console

void TestMessages::onlyNewestEntrysLastLineIsRed()
{
    QVERIFY(makeWindowOverPrograms());
    const QTextDocument *document = console()->document();

    window->addConsoleErrMsg(QStringLiteral("one\n"));
    QCOMPARE(lineColours(document), (QStringList { red, QString() }));

    window->addConsoleErrMsg(QStringLiteral("two\nthree\n"));
    QCOMPARE(lineColours(document), (QStringList { black, plain, red, QString() }));

    logCode(17);
    QCOMPARE(lineColours(document), (QStringList { black, plain, black, red, QString() }));
    const QStringList lines = console()->toPlainText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 5);
    QVERIFY(isEntry(lines.at(0), QStringLiteral("one")));
    QVERIFY(isEntry(lines.at(1), QStringLiteral("two")));
    QCOMPARE(lines.at(2), QStringLiteral("three"));
    QVERIFY(isEntry(lines.at(3), u("Ошибка: ") + errorText(17)));
    // The newest entry is in view and the cursor waits at the end.
    QCOMPARE(console()->textCursor().position(), document->characterCount() - 1);
}

void TestMessages::maxLinesKeepsOnlyNewestLines()
{
    QVERIFY(makeWindowOverPrograms());
    window->setMaxConsoleLines(3);
    for (int i = 1; i <= 5; ++i)
        window->addConsoleErrMsg(QStringLiteral("entry %1\n").arg(i));
    const QTextDocument *document = console()->document();
    QCOMPARE(document->blockCount(), 3);
    const QStringList lines = console()->toPlainText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    QVERIFY(isEntry(lines.at(0), QStringLiteral("entry 4")));
    QVERIFY(isEntry(lines.at(1), QStringLiteral("entry 5")));
    QCOMPARE(lineColours(document), (QStringList { black, red, QString() }));
}

void TestMessages::clearButtonEmptiesConsole()
{
    QVERIFY(makeWindowOverPrograms());
    QVERIFY(showAndActivate(window));
    window->addConsoleErrMsg(QStringLiteral("one\n"));
    window->addConsoleErrMsg(QStringLiteral("two\n"));
    QPushButton *clear = button("pushButton");
    QVERIFY(clear);
    QTest::mouseClick(clear, Qt::LeftButton);
    QCOMPARE(console()->toPlainText(), QString());
    QCOMPARE(console()->document()->blockCount(), 1);

    window->addConsoleErrMsg(QStringLiteral("three\n"));
    QCOMPARE(lineColours(console()->document()), (QStringList { red, QString() }));
}

// The host may be busy compiling when it sends a message: the entry shows
// without the event loop.
void TestMessages::entryIsPaintedBeforeReturning()
{
    QVERIFY(makeWindowOverPrograms());
    QVERIFY(showAndActivate(window));
    deliverPending();
    PaintCounter paints;
    console()->viewport()->installEventFilter(&paints);
    window->addConsoleErrMsg(QStringLiteral("painted\n"));
    QVERIFY(paints.count > 0);
}

// ---------------------------------------------------------------------------
// The window's answer to each kind

void TestMessages::locatedErrorMarksProgramLogsAndRaisesWindow_data()
{
    QTest::addColumn<QStringList>("open");
    QTest::newRow("program not open") << QStringList();
    QTest::newRow("program open, another current") << QStringList { QStringLiteral("prog"), QStringLiteral("other") };
    QTest::newRow("program current") << QStringList { QStringLiteral("other"), QStringLiteral("prog") };
}

void TestMessages::locatedErrorMarksProgramLogsAndRaisesWindow()
{
    QFETCH(QStringList, open);
    QVERIFY(makeWindowOverPrograms());
    for (const QString &name : open)
        QVERIFY(window->addTextTab(name));
    QVERIFY(!window->isVisible());
    QSignalSpy found(window, &EditWindow::compilerErrorFound);

    send(locatedError(QStringLiteral("12"), QStringLiteral("/elsewhere/prog.zu"), QStringLiteral("17"), caretAt(4)));

    QCOMPARE(window->currTabName(), QStringLiteral("prog"));
    QCOMPARE(tabTexts(tabs).count(QStringLiteral("prog")), 1);
    ZuSourceCode *editor = editorOf(QStringLiteral("prog"));
    QVERIFY(editor);
    const QList<QTextEdit::ExtraSelection> marks = editor->extraSelections();
    QCOMPARE(marks.size(), 1);
    QCOMPARE(marks.first().cursor.block().blockNumber(), 11);
    QCOMPARE(marks.first().cursor.selectedText(), QStringLiteral("value12"));
    QCOMPARE(marks.first().format.underlineStyle(), QTextCharFormat::WaveUnderline);
    QCOMPARE(marks.first().format.underlineColor(), QColor(Qt::red));
    QVERIFY(!editor->isChanged());

    const QString logged = console()->toPlainText();
    QVERIFY2(isEntry(logged, u("Ошибка: Недопустимые данные или тип операции\n")), qPrintable(logged));
    QVERIFY(window->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(window->isActiveWindow(), 5000);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().toBool(), true);
}

// The current program is another: the error is not marked in it.
void TestMessages::locatedErrorForMissingProgramShowsBoxOnly()
{
    QVERIFY(makeWindowOverPrograms());
    QVERIFY(window->addTextTab(QStringLiteral("other")));
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    BoxAnswerer answerer(QMessageBox::Ok);

    send(locatedError(QStringLiteral("1"), QStringLiteral("dir/absent.zu"), QStringLiteral("17"), caretAt(0)));

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, u("ВНИМАНИЕ!"));
    QCOMPARE(answerer.shown.first().text, u("Не найден файл \n\ndir/absent.zu\n\nневозможно установить место ошибки."));
    QCOMPARE(answerer.shown.first().icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(tabTexts(tabs), QStringList { QStringLiteral("other") });
    QVERIFY(editorOf(QStringLiteral("other")));
    QCOMPARE(editorOf(QStringLiteral("other"))->extraSelections().size(), 0);
    QCOMPARE(console()->toPlainText(), QString());
    QCOMPARE(found.size(), 0);
}

// A listed program whose file cannot be read gets the box that says so and
// an empty tab, and the error is marked nowhere.
void TestMessages::locatedErrorForUnreadableProgramMarksNothing()
{
    QVERIFY(makeWindowOverPrograms());
    QVERIFY(window->addTextTab(QStringLiteral("prog")));
    // Listed, but no longer a file.
    QVERIFY(QFile::remove(QStringLiteral("other.zu")));
    QVERIFY(QDir().mkdir(QStringLiteral("other.zu")));
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    BoxAnswerer answerer(QMessageBox::Ok);

    send(locatedError(QStringLiteral("1"), QStringLiteral("other.zu"), QStringLiteral("17"), caretAt(0)));

    QCOMPARE(answerer.shown.size(), 2);
    QCOMPARE(answerer.shown.at(0).title, u("Ошибка открытия файла"));
    QCOMPARE(answerer.shown.at(1).text, u("Не найден файл \n\nother.zu\n\nневозможно установить место ошибки."));
    for (ZuSourceCode *editor : window->findChildren<ZuSourceCode *>())
        QCOMPARE(editor->extraSelections().size(), 0);
    QCOMPARE(console()->toPlainText(), QString());
    QCOMPARE(found.size(), 0);
}

// A name no program of the directory can have is not looked for: the box
// of a program not found, and no file is opened or made.
void TestMessages::locatedErrorWithBadProgramNameOpensNothing_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::newRow("empty") << QString();
    QTest::newRow("extension only") << QStringLiteral(".zu");
    QTest::newRow("dot dot") << QStringLiteral("..");
    QTest::newRow("backslash") << QStringLiteral("..\\victim.zu");
    QTest::newRow("control character") << QStringLiteral("pro\001g.zu");
    QTest::newRow("NUL") << QStringLiteral("prog") + QChar() + QStringLiteral(".zu");
    QTest::newRow("too long") << QString(300, QLatin1Char('p')) + QStringLiteral(".zu");
}

void TestMessages::locatedErrorWithBadProgramNameOpensNothing()
{
    QFETCH(QString, fileName);
    QVERIFY(makeWindowOverPrograms());
    const QStringList entries = entriesOf();
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    BoxAnswerer answerer(QMessageBox::Ok);

    send(locatedError(QStringLiteral("1"), fileName, QStringLiteral("1"), caretAt(0)));

    QCOMPARE(answerer.texts(),
             QStringList { u("Не найден файл \n\n") + fileName + u("\n\nневозможно установить место ошибки.") });
    QCOMPARE(tabs->count(), 0);
    QCOMPARE(entriesOf(), entries);
    QCOMPARE(victimsChanged(tempDir.path()), QString());
    QCOMPARE(found.size(), 0);
}

void TestMessages::markerNotAtStartOnlyEmitsFalse_data()
{
    QTest::addColumn<QString>("message");
    const QString located =
        locatedError(QStringLiteral("12"), QStringLiteral("prog.zu"), QStringLiteral("17"), caretAt(4));
    QTest::newRow("no line feed before") << located.mid(1);
    QTest::newRow("text before") << QStringLiteral("Compiling\n") + located;
    QTest::newRow("blank before") << QStringLiteral(" ") + located;
}

void TestMessages::markerNotAtStartOnlyEmitsFalse()
{
    QFETCH(QString, message);
    QVERIFY(makeWindowOverPrograms());
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    send(message);
    QCOMPARE(tabs->count(), 0);
    QCOMPARE(console()->toPlainText(), QString());
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().toBool(), false);
}

void TestMessages::readyMessageLogsNoErrorsAndEmitsFalse()
{
    QVERIFY(makeWindowOverPrograms());
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    send(QStringLiteral("\nProgram ready to run, 120 bytes of code\n"));
    const QString logged = console()->toPlainText();
    QVERIFY2(isEntry(logged, u("Ошибки не обнаружены\n")), qPrintable(logged));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().toBool(), false);
}

void TestMessages::otherTextEmitsFalseSilently_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("empty") << QString();
    QTest::newRow("progress") << QStringLiteral("Compiling prog.zu\n");
    QTest::newRow("ready in another case") << QStringLiteral("\nprogram ready to run\n");
    QTest::newRow("ready not at start") << QStringLiteral("Done\nProgram ready to run\n");
}

void TestMessages::otherTextEmitsFalseSilently()
{
    QFETCH(QString, message);
    QVERIFY(makeWindowOverPrograms());
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    send(message);
    QCOMPARE(console()->toPlainText(), QString());
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().toBool(), false);
}

void TestMessages::systemErrorLogsLibraryTextAndFile()
{
    QVERIFY(makeWindowOverPrograms());
    QSignalSpy found(window, &EditWindow::compilerErrorFound);
    send(QStringLiteral("\nError while opening the program (2)\nFile: prog.zu, read only\n"));
    const QString logged = console()->toPlainText();
    QVERIFY2(isEntry(logged, u("Системная ошибка! ") + systemErrorText(2) + QStringLiteral(": prog.zu, read only\n")),
             qPrintable(logged));
    QCOMPARE(lineColours(console()->document()), (QStringList { red, QString() }));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().first().toBool(), true);
}

// Accepted as the host's own reading has it; the entry has no line feed of
// its own, so the red line is the one before its last.
void TestMessages::systemErrorWithoutFileDropsFiveCharacters()
{
    QVERIFY(makeWindowOverPrograms());
    window->addConsoleErrMsg(QStringLiteral("before\n"));
    send(QStringLiteral("\nError while writing (28)\nno space"));
    const QStringList lines = console()->toPlainText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    QVERIFY(isEntry(lines.at(1),
                    u("Системная ошибка! ") + systemErrorText(28) + QStringLiteral(": r while writing (28)")));
    QCOMPARE(lines.at(2), QStringLiteral("no space"));
    QCOMPARE(lineColours(console()->document()), (QStringList { black, red, plain }));
}

void TestMessages::hugeSystemErrorIsLoggedCutShort()
{
    QVERIFY(makeWindowOverPrograms());
    const QString file(1 << 20, QLatin1Char('f'));
    send(QStringLiteral("\nError while opening (2) File: ") + file);
    const QString logged = console()->toPlainText();
    QVERIFY(isEntry(logged, u("Системная ошибка! ") + systemErrorText(2) + QStringLiteral(": ") + file.left(10000)));
}

// ---------------------------------------------------------------------------
// Messages a broken host could send

// found: what compilerErrorFound says, -1 for nothing (a box instead).
void TestMessages::badMessageLeavesFilesAndConsoleUsable_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("found");
    const QString megabyte(1 << 20, QLatin1Char('x'));
    QString binary;
    for (int i = 0; i < 4096; ++i)
        binary += QChar(ushort(i * 7919 % 65536));
    const QString prog = QStringLiteral("prog.zu");
    const QString one = QStringLiteral("1");

    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("megabyte of text") << megabyte << 0;
    QTest::newRow("binary") << binary << 0;
    QTest::newRow("NUL bytes") << QString(100, QChar()) << 0;
    QTest::newRow("located, megabyte header line") << QStringLiteral("\nIn line #") + megabyte << -1;
    QTest::newRow("located, megabyte file name") << locatedError(one, megabyte + prog, one, caretAt(0)) << -1;
    QTest::newRow("located, megabyte caret line")
        << locatedError(one, prog, one, QString(1 << 20, QLatin1Char(' ')) + '^') << 1;
    QTest::newRow("located, a million lines") << QStringLiteral("\nIn line #3 of file prog.zu") + QString(1 << 20, '\n')
                                              << 1;
    QTest::newRow("located, binary after header") << QStringLiteral("\nIn line #3 of file prog.zu\n") + binary << 1;
    QTest::newRow("located, NUL in file name")
        << locatedError(one, QStringLiteral("pr") + QChar() + QStringLiteral("og.zu"), one, caretAt(0)) << -1;
    QTest::newRow("located, marker only") << QStringLiteral("\nIn line #") << -1;
    QTest::newRow("located, header only") << QStringLiteral("\nIn line #12 of file prog.zu") << 1;
    QTest::newRow("located, header and code only") << QStringLiteral("\nIn line #12 of file prog.zu\nError 17") << 1;
    QTest::newRow("located, CR LF line ends")
        << QStringLiteral("\n") + locatedError(QStringLiteral("12"), prog, QStringLiteral("17"), caretAt(4))
                                      .mid(1)
                                      .replace(QLatin1Char('\n'), QStringLiteral("\r\n"))
        << 1;
    // "-" is a word of its own: the words after it are off by one, and the
    // file name begins a word early.
    QTest::newRow("located, negative line") << locatedError(QStringLiteral("-12"), prog, one, caretAt(0)) << -1;
    QTest::newRow("located, negative code") << locatedError(one, prog, QStringLiteral("-17"), caretAt(0)) << 1;
    QTest::newRow("located, huge numbers")
        << locatedError(QStringLiteral("99999999999999999999"), prog, QStringLiteral("4294967296"), caretAt(100000))
        << 1;
    QTest::newRow("located, largest numbers")
        << locatedError(QStringLiteral("4294967295"), prog, QStringLiteral("4294967295"), caretAt(3)) << 1;
    QTest::newRow("located, line zero") << locatedError(QStringLiteral("0"), prog, one, caretAt(0)) << 1;
    QTest::newRow("located, not numbers")
        << locatedError(QStringLiteral("twelve"), prog, QStringLiteral("x"), QStringLiteral("none")) << 1;
    QTest::newRow("located, caret beyond the line") << locatedError(QStringLiteral("2"), prog, one, caretAt(500)) << 1;
    QTest::newRow("located, line beyond the program")
        << locatedError(QStringLiteral("500"), prog, one, caretAt(2)) << 1;
    QTest::newRow("located, directory that does not exist")
        << locatedError(one, QStringLiteral("no/such/dir/prog.zu"), one, caretAt(0)) << 1;
    QTest::newRow("located, up a directory")
        << locatedError(one, QStringLiteral("../victim.zu"), one, caretAt(0)) << -1;
    QTest::newRow("located, absolute") << locatedError(one, QStringLiteral("/etc/passwd"), one, caretAt(0)) << -1;
    QTest::newRow("located, absolute beside")
        << locatedError(one, QStringLiteral("%1/abs/victim.zu"), one, caretAt(0)) << -1;
    QTest::newRow("located, directory only") << locatedError(one, QStringLiteral("../"), one, caretAt(0)) << -1;
    QTest::newRow("system, megabyte") << QStringLiteral("\nError while (2) File: ") + megabyte << 1;
    QTest::newRow("system, megabyte of lines")
        << QStringLiteral("\nError while (2) File: ") + QString(1 << 20, '\n') << 1;
    QTest::newRow("system, NUL bytes") << QStringLiteral("\nError while (2)") + QString(10, QChar()) << 1;
    QTest::newRow("system, huge number") << QStringLiteral("\nError while (99999999999999) File: a") << 1;
    QTest::newRow("system, negative number") << QStringLiteral("\nError while (-1) File: a") << 1;
}

void TestMessages::badMessageLeavesFilesAndConsoleUsable()
{
    QFETCH(QString, message);
    QFETCH(int, found);
    QVERIFY(makeWindowOverPrograms());
    message.replace(QStringLiteral("%1"), tempDir.path());
    const QStringList entries = entriesOf();
    QSignalSpy foundSpy(window, &EditWindow::compilerErrorFound);
    BoxAnswerer answerer(QMessageBox::Ok);

    QElapsedTimer timer;
    timer.start();
    send(message);
    const qint64 elapsed = timer.elapsed();
    // Far above the few milliseconds most take, and the 0.1 s of the
    // slowest, a megabyte header line: a hang or a slow path shows.
    QVERIFY2(elapsed < 3000, qPrintable(QStringLiteral("%1 ms").arg(elapsed)));

    QCOMPARE(answerer.shown.size(), found < 0 ? 1 : 0);
    // A name of any length is shown in part, but not a megabyte of it.
    for (const ShownBox &box : answerer.shown)
        QVERIFY2(box.text.size() < 1100, qPrintable(QString::number(box.text.size())));
    QCOMPARE(foundSpy.size(), found < 0 ? 0 : 1);
    if (found >= 0)
        QCOMPARE(foundSpy.first().first().toBool(), found == 1);
    QCOMPARE(entriesOf(), entries);
    QCOMPARE(victimsChanged(tempDir.path()), QString());

    // A mark set from any numbers stays inside the program.
    if (ZuSourceCode *editor = editorOf(QStringLiteral("prog"))) {
        QCOMPARE(editor->toPlainText(), QString::fromLatin1(programOfTwentyLines()));
        for (const QTextEdit::ExtraSelection &mark : editor->extraSelections())
            QVERIFY(mark.cursor.selectionEnd() < editor->document()->characterCount());
        QVERIFY(editor->textCursor().position() < editor->document()->characterCount());
    }

    // The console still takes an entry, and its last line alone is red.
    window->addConsoleErrMsg(QStringLiteral("after\n"));
    const QStringList colours = lineColours(console()->document());
    QCOMPARE(colours.count(red), 1);
    QCOMPARE(colours.at(colours.size() - 2), red);
    QVERIFY(console()->toPlainText().endsWith(QStringLiteral(" after\n")));
}

QTEST_MAIN(TestMessages)
#include "tst_messages.moc"
