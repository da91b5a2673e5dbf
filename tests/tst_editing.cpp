// The source editor's editing aids, driven by real keys on a shown window:
// completion from the host's names, the operations' tool tips, block indent
// and unindent, indentation after Enter, the keys of the cursor history and
// the compiler's error mark.

#include <QAbstractItemView>
#include <QCompleter>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTextBlock>
#include <QToolTip>
#include <QWindow>
#include <QtTest>

#include "codepage.h"
#include "editorsupport.h"
#include "editorwindowinterface.h"
#include "editwindow.h"
#include "programwatcher.h"
#include "testsupport.h"
#include "vocabulary.h"
#include "windowfixture.h"
#include "zusourcecode.h"

namespace {

// What the host knows: "ab" is an operation while "a" is only the start of
// names, and the types have no tool tips.
const char vocabularyText[] =
    "operation print : Prints its values.\n"
    "operation println : Prints its values and ends the line.\n"
    "operation ab : Takes the absolute value.\n"
    "operation add : Adds two numbers.\n"
    "type Integer\n"
    "type IntegerList\n"
    "type String\n";
const int nameCount = 7;

// A window that only notes what an editor asks of it.
class RecordingWindow : public EditorWindowInterface
{
public:
    void setEditButtons(int, int, int, int, int) override {}
    void setEditTabName(QString) override {}
    void tabClose(QString) override {}
    void addProgListAndEdit(QString) override {}
    void storeCursorToHistory(QString name, int position) override { stored << qMakePair(name, position); }
    void cursorPrevPosition(int limit) override { previousLimits << limit; }
    void cursorNextPosition(int limit) override { nextLimits << limit; }
    QString getOperToolTip(QString) override { return QString(); }
    QCompleter *sharedCompleter() const override { return nullptr; }
    bool isAutoComplete() const override { return true; }
    void loadFailed(const QString &, const QString &, const QString &) override {}
    ProgramWatcher *programWatcher() override { return &watcher; }

    ProgramWatcher watcher;
    QList<QPair<QString, int>> stored;
    QList<int> previousLimits;
    QList<int> nextLimits;
};

// The offscreen platform notes each thing it cannot do for a window or a
// popup (raise it, grab the keyboard for it); those notes are dropped.
QtMessageHandler previousHandler = nullptr;

void dropPlatformNotes(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message.startsWith(QLatin1String("This plugin does not support")))
        return;
    previousHandler(type, context, message);
}

// The warnings logged while it lives, passed on as well.
class WarningCatcher
{
public:
    WarningCatcher() { previous = qInstallMessageHandler(handle); }
    ~WarningCatcher() { qInstallMessageHandler(previous); }
    static QStringList warnings;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (type == QtWarningMsg)
            warnings << message;
        previous(type, context, message);
    }
    static QtMessageHandler previous;
};
QStringList WarningCatcher::warnings;
QtMessageHandler WarningCatcher::previous = nullptr;

QStringList blockTexts(const QTextDocument *document)
{
    QStringList texts;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        texts << block.text();
    return texts;
}

int documentEnd(const ZuSourceCode *editor)
{
    return editor->document()->characterCount() - 1;
}

// The text an error mark underlines, or a note that there is none.
QString markedText(const ZuSourceCode *editor)
{
    const QList<QTextEdit::ExtraSelection> marks = editor->extraSelections();
    return marks.size() == 1 ? marks.first().cursor.selectedText() : QStringLiteral("<%1 marks>").arg(marks.size());
}

} // namespace

class TestEditing : public QObject, protected WindowFixture
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    // Completion
    void typingPrefixShowsPopupWithNameFirst();
    void returnInPopupInsertsOnlyUntypedRest();
    void returnOnFullyTypedNameClosesPopupAndMakesLine();
    void escapeClosesPopupInsertingNothing();
    void delimiterNeverOpensPopup();
    void delimiterClosesOpenPopup();
    void backspaceIntoWordReopensPopup();
    void ctrlSpaceOnEmptyLineListsEveryName();
    void autoCompleteOffShowsToolTipButNoPopup();
    void insertCompleterIgnoredWhenCompleterServesOtherEditor();

    // Tool tips
    void toolTipEventAsksHostForWordUnderMouse();
    void typingShowsToolTipOnceWordIsOperation();

    // Block indent and unindent
    void tabIndentsEverySelectedLine();
    void backtabRemovesOneLeadingTabOrBlank();
    void backtabOnUnindentedLinesOnlyMovesSelectionStart();
    void backtabAtDocumentStartKeepsSelectionInside();
    void tabWithoutSelectionInsertsTab();

    // New lines
    void enterKeepsIndentationOfLineAbove();
    void enterAfterOpeningBraceIndentsOneTabDeeper();
    void shiftEnterAddsClosingBraceLine();
    void enterAndItsIndentationUndoInOneStep();

    // Cursor history
    void altLeftAsksForPreviousPlaceUpToDocumentEnd();
    void altRightAsksForNextPlaceUpToDocumentEnd();
    void cursorMoveStoresPlaceUnderProgramName();
    void restoreCursorPositionMovesCursorWithoutSelection();

    // Error mark
    void errorMarkUnderlinesWordInRedWave();
    void errorMarkKeepsProgramUnmodified();
    void typingAfterErrorMarkRemovesIt();
    void errorPositionOutOfRangeMarksAtMostLastWord_data();
    void errorPositionOutOfRangeMarksAtMostLastWord();

private:
    ZuSourceCode *openProgram(const QString &text);
    ZuSourceCode *openWithRecordingWindow(const QString &text, RecordingWindow *recorder);
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const QString &text);
    void putCursor(int position, int anchor = -1);
    QAbstractItemView *popup() const;
    QString currentRow() const;

    Vocabulary vocabulary;
    QScopedPointer<QSignalSpy> toolTipRequests;
    QList<QPointer<QWidget>> ownPages;
    ZuSourceCode *editor = nullptr;
    QWindow *keyWindow = nullptr;
};

void TestEditing::initTestCase()
{
    previousHandler = qInstallMessageHandler(dropPlatformNotes);
}

void TestEditing::cleanupTestCase()
{
    qInstallMessageHandler(previousHandler);
}

void TestEditing::init()
{
    QVERIFY(tempDir.make());
    QVERIFY(tempDir.enter());
    // A tip of the test before may still be fading out.
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    QVERIFY(writeFile(QStringLiteral("vocabulary"), vocabularyText));
    QVERIFY(vocabulary.load(QStringLiteral("vocabulary")));
    QVERIFY(makePluginWindow());
    window->tablesAnswer(vocabulary.operationTable(), vocabulary.typeTable());
    // The host answers inside the request, as zuhost's sockets do.
    connect(window, &EditWindow::operToolTipRequest, window,
            [this](const QString &name) { window->operToolTipAnswer(vocabulary.toolTip(name)); },
            Qt::DirectConnection);
    toolTipRequests.reset(new QSignalSpy(window, &EditWindow::operToolTipRequest));
    QVERIFY(toolTipRequests->isValid());
}

void TestEditing::cleanup()
{
    toolTipRequests.reset();
    deletePluginWindow();
    deleteWidgets(ownPages);
    editor = nullptr;
    keyWindow = nullptr;
    QToolTip::hideText();
    tempDir.leave();
}

// The program in a tab of the shown window, with the keyboard focus.
ZuSourceCode *TestEditing::openProgram(const QString &text)
{
    if (!writeFile(QStringLiteral("prog.zu"), windows1251()->fromUnicode(text)))
        return nullptr;
    QWidget *page = window->addTextTab(QStringLiteral("prog"));
    editor = page ? page->findChild<ZuSourceCode *>() : nullptr;
    if (!editor || !showAndActivate(window))
        return nullptr;
    editor->setFocus(Qt::OtherFocusReason);
    keyWindow = window->windowHandle();
    return QTest::qWaitFor([this] { return editor->hasFocus(); }) ? editor : nullptr;
}

ZuSourceCode *TestEditing::openWithRecordingWindow(const QString &text, RecordingWindow *recorder)
{
    if (!writeFile(QStringLiteral("prog.zu"), windows1251()->fromUnicode(text)))
        return nullptr;
    auto *page = new QWidget;
    ownPages << page;
    auto *layout = new QHBoxLayout(page);
    editor = new ZuSourceCode(page, QStringLiteral("prog"), recorder, QString());
    layout->addWidget(editor);
    page->resize(400, 300);
    if (!showAndActivate(page))
        return nullptr;
    editor->setFocus(Qt::OtherFocusReason);
    keyWindow = page->windowHandle();
    return QTest::qWaitFor([this] { return editor->hasFocus(); }) ? editor : nullptr;
}

// Keys go to the window as the keyboard sends them, so that an open popup
// gets them first.
void TestEditing::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(keyWindow, key, modifiers);
}

void TestEditing::type(const QString &text)
{
    for (const QChar ch : text)
        QTest::keyClick(keyWindow, ch.toLatin1());
}

void TestEditing::putCursor(int position, int anchor)
{
    QTextCursor cursor = editor->textCursor();
    cursor.setPosition(anchor < 0 ? position : anchor);
    cursor.setPosition(position, QTextCursor::KeepAnchor);
    editor->setTextCursor(cursor);
}

QAbstractItemView *TestEditing::popup() const
{
    return window->sharedCompleter()->popup();
}

QString TestEditing::currentRow() const
{
    return popup()->currentIndex().data().toString();
}

// ---------------------------------------------------------------------------
// Completion

void TestEditing::typingPrefixShowsPopupWithNameFirst()
{
    QVERIFY(openProgram(QString()));
    type(QStringLiteral("pri"));

    QVERIFY(popup()->isVisible());
    QCOMPARE(window->sharedCompleter()->completionPrefix(), QStringLiteral("pri"));
    QCOMPARE(popup()->currentIndex().row(), 0);
    QCOMPARE(currentRow(), QStringLiteral("print"));
    QCOMPARE(popup()->model()->rowCount(), 2);
    QCOMPARE(popup()->width(), popup()->sizeHintForColumn(0) + popup()->verticalScrollBar()->sizeHint().width());
    QCOMPARE(editor->toPlainText(), QStringLiteral("pri"));
}

void TestEditing::returnInPopupInsertsOnlyUntypedRest()
{
    QVERIFY(openProgram(QStringLiteral("x = 1\n")));
    putCursor(0);
    type(QStringLiteral("pri"));
    QVERIFY(popup()->isVisible());
    press(Qt::Key_Down);
    QCOMPARE(currentRow(), QStringLiteral("println"));

    press(Qt::Key_Return);

    QVERIFY(!popup()->isVisible());
    QCOMPARE(blockTexts(editor->document()), QStringList({ "printlnx = 1", "" }));
    QCOMPARE(editor->textCursor().position(), 7);
}

void TestEditing::returnOnFullyTypedNameClosesPopupAndMakesLine()
{
    QVERIFY(openProgram(QString()));
    type(QStringLiteral("\tInteger"));
    QVERIFY(popup()->isVisible());
    QCOMPARE(currentRow(), QStringLiteral("Integer"));

    press(Qt::Key_Return);

    QVERIFY(!popup()->isVisible());
    QCOMPARE(blockTexts(editor->document()), QStringList({ "\tInteger", "\t" }));
    QCOMPARE(editor->textCursor().position(), 10);
}

void TestEditing::escapeClosesPopupInsertingNothing()
{
    QVERIFY(openProgram(QString()));
    type(QStringLiteral("Int"));
    QVERIFY(popup()->isVisible());

    press(Qt::Key_Escape);

    QVERIFY(!popup()->isVisible());
    QCOMPARE(editor->toPlainText(), QStringLiteral("Int"));
    QVERIFY(editor->hasFocus());
}

void TestEditing::delimiterNeverOpensPopup()
{
    QVERIFY(openProgram(QString()));
    for (const QChar delimiter : QStringLiteral("{}\\;., ():")) {
        type(delimiter);
        QVERIFY2(!popup()->isVisible(), qPrintable(QString(delimiter)));
    }
    press(Qt::Key_Tab);
    QVERIFY(!popup()->isVisible());
    QCOMPARE(editor->toPlainText(), QStringLiteral("{}\\;., ():\t"));
}

void TestEditing::delimiterClosesOpenPopup()
{
    QVERIFY(openProgram(QString()));
    type(QStringLiteral("pri"));
    QVERIFY(popup()->isVisible());

    type(QStringLiteral("("));
    QVERIFY(!popup()->isVisible());

    // Return now makes a line: the popup no longer holds it back.
    press(Qt::Key_Return);
    QCOMPARE(blockTexts(editor->document()), QStringList({ "pri(", "" }));
}

void TestEditing::backspaceIntoWordReopensPopup()
{
    QVERIFY(openProgram(QString()));
    type(QStringLiteral("pri "));
    QVERIFY(!popup()->isVisible());

    press(Qt::Key_Backspace);

    QVERIFY(popup()->isVisible());
    QCOMPARE(currentRow(), QStringLiteral("print"));
    QCOMPARE(editor->toPlainText(), QStringLiteral("pri"));
}

void TestEditing::ctrlSpaceOnEmptyLineListsEveryName()
{
    QVERIFY(openProgram(QStringLiteral("x\n\ny\n")));
    putCursor(2);

    press(Qt::Key_Space, Qt::ControlModifier);

    QVERIFY(popup()->isVisible());
    QCOMPARE(window->sharedCompleter()->completionPrefix(), QString());
    QCOMPARE(popup()->model()->rowCount(), nameCount);
    QCOMPARE(popup()->currentIndex().row(), 0);
    QCOMPARE(editor->toPlainText(), QStringLiteral("x\n\ny\n"));
}

void TestEditing::autoCompleteOffShowsToolTipButNoPopup()
{
    window->setAutoComplete(false);
    QVERIFY(openProgram(QString()));

    type(QStringLiteral("pri"));
    QVERIFY(!popup()->isVisible());
    press(Qt::Key_Space, Qt::ControlModifier);
    QVERIFY(!popup()->isVisible());

    type(QStringLiteral("nt"));
    QVERIFY(!popup()->isVisible());
    QTRY_VERIFY(QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), vocabulary.toolTip(QStringLiteral("print")));
}

void TestEditing::insertCompleterIgnoredWhenCompleterServesOtherEditor()
{
    QVERIFY(openProgram(QStringLiteral("pr")));
    ZuSourceCode *first = editor;
    QVERIFY(writeFile(QStringLiteral("other.zu"), "pr"));
    QVERIFY(window->addTextTab(QStringLiteral("other")));
    QCOMPARE(window->sharedCompleter()->widget(), tabs->currentWidget()->findChild<ZuSourceCode *>());
    window->sharedCompleter()->setCompletionPrefix(QStringLiteral("pr"));
    first->moveCursor(QTextCursor::End);

    first->insertCompleter(QStringLiteral("print"));

    QCOMPARE(first->toPlainText(), QStringLiteral("pr"));
}

// ---------------------------------------------------------------------------
// Tool tips

void TestEditing::toolTipEventAsksHostForWordUnderMouse()
{
    QVERIFY(openProgram(QStringLiteral("x = add(1, 2)\n")));
    QTextCursor insideWord = editor->textCursor();
    insideWord.setPosition(5);
    const QPoint point = editor->cursorRect(insideWord).center() + QPoint(2, 0);
    toolTipRequests->clear();

    QHelpEvent event(QEvent::ToolTip, point, editor->viewport()->mapToGlobal(point));
    QApplication::sendEvent(editor->viewport(), &event);

    QCOMPARE(toolTipRequests->count(), 1);
    QCOMPARE(toolTipRequests->first().first().toString(), QStringLiteral("add"));
    QTRY_VERIFY(QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), vocabulary.toolTip(QStringLiteral("add")));
}

void TestEditing::typingShowsToolTipOnceWordIsOperation()
{
    QVERIFY(openProgram(QString()));
    toolTipRequests->clear();

    type(QStringLiteral("a"));
    QCOMPARE(toolTipRequests->count(), 1);
    QCOMPARE(toolTipRequests->last().first().toString(), QStringLiteral("a"));
    QVERIFY(!QToolTip::isVisible());
    QVERIFY(popup()->isVisible());

    type(QStringLiteral("b"));
    QCOMPARE(toolTipRequests->count(), 2);
    QCOMPARE(toolTipRequests->last().first().toString(), QStringLiteral("ab"));
    QTRY_VERIFY(QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), vocabulary.toolTip(QStringLiteral("ab")));
    // The operation's description stands in for its completions.
    QVERIFY(!popup()->isVisible());
}

// ---------------------------------------------------------------------------
// Block indent and unindent

void TestEditing::tabIndentsEverySelectedLine()
{
    QVERIFY(openProgram(QStringLiteral("one\ntwo\nthree\nfour")));
    putCursor(10, 5); // from "t|wo" to "th|ree"

    press(Qt::Key_Tab);

    QCOMPARE(blockTexts(editor->document()), QStringList({ "one", "\ttwo", "\tthree", "four" }));
    QVERIFY(editor->textCursor().hasSelection());
    QCOMPARE(editor->textCursor().selectedText(), QStringLiteral("wo\u2029\tth"));
}

void TestEditing::backtabRemovesOneLeadingTabOrBlank()
{
    QVERIFY(openProgram(QStringLiteral("\t\tone\n  two\nthree\n\tfour")));
    const int start = 1; // "\t|\tone"
    const int end = 19;  // "\t|four"
    putCursor(end, start);

    press(Qt::Key_Backtab);

    QCOMPARE(blockTexts(editor->document()), QStringList({ "\tone", " two", "three", "four" }));
    // Four lines, each counted as one character shorter.
    QCOMPARE(editor->textCursor().anchor(), start - 1);
    QCOMPARE(editor->textCursor().position(), end - 4);
}

void TestEditing::backtabOnUnindentedLinesOnlyMovesSelectionStart()
{
    const QString text = QStringLiteral("one\ntwo\nthree\n");
    QVERIFY(openProgram(text));
    putCursor(10, 5);

    press(Qt::Key_Backtab);

    QCOMPARE(editor->toPlainText(), text);
    QCOMPARE(editor->textCursor().anchor(), 4);
    QCOMPARE(editor->textCursor().position(), 10 - 2);
}

void TestEditing::backtabAtDocumentStartKeepsSelectionInside()
{
    QVERIFY(openProgram(QStringLiteral("\tab\ncd")));
    putCursor(1, 0);

    WarningCatcher catcher;
    WarningCatcher::warnings.clear();
    press(Qt::Key_Backtab);

    QCOMPARE(WarningCatcher::warnings, QStringList());
    QCOMPARE(blockTexts(editor->document()), QStringList({ "ab", "cd" }));
    QCOMPARE(editor->textCursor().anchor(), 0);
    QCOMPARE(editor->textCursor().position(), 0);
}

void TestEditing::tabWithoutSelectionInsertsTab()
{
    QVERIFY(openProgram(QStringLiteral("ab\ncd")));
    putCursor(1);

    press(Qt::Key_Tab);

    QCOMPARE(blockTexts(editor->document()), QStringList({ "a\tb", "cd" }));
}

// ---------------------------------------------------------------------------
// New lines

void TestEditing::enterKeepsIndentationOfLineAbove()
{
    QVERIFY(openProgram(QStringLiteral(" \t x = 1")));
    editor->moveCursor(QTextCursor::End);

    press(Qt::Key_Return);

    QCOMPARE(blockTexts(editor->document()), QStringList({ " \t x = 1", " \t " }));
    QCOMPARE(editor->textCursor().position(), 12);
}

void TestEditing::enterAfterOpeningBraceIndentsOneTabDeeper()
{
    QVERIFY(openProgram(QStringLiteral("  if (x) {")));
    editor->moveCursor(QTextCursor::End);

    press(Qt::Key_Enter);

    QCOMPARE(blockTexts(editor->document()), QStringList({ "  if (x) {", "  \t" }));
    QCOMPARE(editor->textCursor().blockNumber(), 1);
    QCOMPARE(editor->textCursor().positionInBlock(), 3);
}

void TestEditing::shiftEnterAddsClosingBraceLine()
{
    QVERIFY(openProgram(QStringLiteral("  if (x) {\nnext")));
    putCursor(10);

    press(Qt::Key_Return, Qt::ShiftModifier);

    QCOMPARE(blockTexts(editor->document()), QStringList({ "  if (x) {", "  \t", "  }", "next" }));
    QCOMPARE(editor->textCursor().blockNumber(), 1);
    QCOMPARE(editor->textCursor().positionInBlock(), 3);
}

void TestEditing::enterAndItsIndentationUndoInOneStep()
{
    const QString text = QStringLiteral("\tif (x) {");
    QVERIFY(openProgram(text));
    editor->moveCursor(QTextCursor::End);
    press(Qt::Key_Return);
    QCOMPARE(editor->document()->blockCount(), 2);

    press(Qt::Key_Z, Qt::ControlModifier);

    QCOMPARE(editor->toPlainText(), text);
}

// ---------------------------------------------------------------------------
// Cursor history

void TestEditing::altLeftAsksForPreviousPlaceUpToDocumentEnd()
{
    RecordingWindow recorder;
    QVERIFY(openWithRecordingWindow(QStringLiteral("abc\ndefg\n"), &recorder));
    putCursor(2);

    press(Qt::Key_Left, Qt::AltModifier);

    QCOMPARE(recorder.previousLimits, QList<int>({ 9 }));
    QVERIFY(recorder.nextLimits.isEmpty());
    QCOMPARE(editor->textCursor().position(), 2);
}

void TestEditing::altRightAsksForNextPlaceUpToDocumentEnd()
{
    RecordingWindow recorder;
    QVERIFY(openWithRecordingWindow(QStringLiteral("abc\ndefg"), &recorder));
    putCursor(2);

    press(Qt::Key_Right, Qt::AltModifier);

    QCOMPARE(recorder.nextLimits, QList<int>({ 8 }));
    QVERIFY(recorder.previousLimits.isEmpty());
    QCOMPARE(editor->textCursor().position(), 2);
}

void TestEditing::cursorMoveStoresPlaceUnderProgramName()
{
    RecordingWindow recorder;
    QVERIFY(openWithRecordingWindow(QStringLiteral("abc\ndefg\n"), &recorder));
    recorder.stored.clear();

    press(Qt::Key_Down);
    press(Qt::Key_End);

    using Place = QPair<QString, int>;
    QCOMPARE(recorder.stored, QList<Place>({ Place("prog", 4), Place("prog", 8) }));
}

void TestEditing::restoreCursorPositionMovesCursorWithoutSelection()
{
    RecordingWindow recorder;
    QVERIFY(openWithRecordingWindow(QStringLiteral("abc\ndefg\n"), &recorder));
    putCursor(1, 0);

    editor->restoreCursorPosition(6);
    QCOMPARE(editor->textCursor().position(), 6);
    QVERIFY(!editor->textCursor().hasSelection());

    // A place recorded before the text became shorter is refused.
    editor->restoreCursorPosition(500);
    QCOMPARE(editor->textCursor().position(), 6);
}

// ---------------------------------------------------------------------------
// Error mark

void TestEditing::errorMarkUnderlinesWordInRedWave()
{
    QVERIFY(openProgram(QStringLiteral("x = 1\nalpha beta(gamma)\n")));

    editor->setErrorPosition(2, 7, 12);

    const QList<QTextEdit::ExtraSelection> marks = editor->extraSelections();
    QCOMPARE(marks.size(), 1);
    QCOMPARE(marks.first().cursor.selectedText(), QStringLiteral("eta"));
    QCOMPARE(marks.first().format.underlineStyle(), QTextCharFormat::WaveUnderline);
    QCOMPARE(marks.first().format.underlineColor(), QColor(Qt::red));
    // The cursor waits at the start of the word, without a selection.
    QCOMPARE(editor->textCursor().position(), 12);
    QVERIFY(!editor->textCursor().hasSelection());
    QVERIFY(editor->hasFocus());
}

void TestEditing::errorMarkKeepsProgramUnmodified()
{
    const QString text = QStringLiteral("x = 1\nalpha beta\n");
    QVERIFY(openProgram(text));
    QPushButton *save = button("saveProgramButton");
    QVERIFY(save);
    QVERIFY(!save->isEnabled());

    editor->setErrorPosition(2, 0, 3);

    QCOMPARE(markedText(editor), QStringLiteral("alpha"));
    QVERIFY(!editor->document()->isModified());
    QVERIFY(!editor->isChanged());
    QVERIFY(!save->isEnabled());
    QCOMPARE(editor->toPlainText(), text);
}

void TestEditing::typingAfterErrorMarkRemovesIt()
{
    QVERIFY(openProgram(QStringLiteral("x = 1\nalpha beta\n")));
    editor->setErrorPosition(2, 6, 3);
    QCOMPARE(markedText(editor), QStringLiteral("beta"));

    type(QStringLiteral("z"));

    QVERIFY(editor->extraSelections().isEmpty());
    QVERIFY(editor->isChanged());
    QVERIFY(button("saveProgramButton")->isEnabled());
    QVERIFY(button("undoButton")->isEnabled());
    QCOMPARE(blockTexts(editor->document()), QStringList({ "x = 1", "alpha zbeta", "" }));
}

void TestEditing::errorPositionOutOfRangeMarksAtMostLastWord_data()
{
    QTest::addColumn<uint>("line");
    QTest::addColumn<uint>("column");
    QTest::addColumn<QString>("lastWord");

    const uint huge = uint(-1);
    QTest::newRow("line past end") << 9u << 0u << "delta";
    QTest::newRow("line 0") << 0u << 0u << "delta";
    QTest::newRow("line -1") << huge << 3u << "delta";
    QTest::newRow("column past line end") << 1u << 40u << "beta";
    QTest::newRow("column -1") << 1u << huge << "beta";
    QTest::newRow("both -1") << huge << huge << "delta";
}

void TestEditing::errorPositionOutOfRangeMarksAtMostLastWord()
{
    QFETCH(uint, line);
    QFETCH(uint, column);
    QFETCH(QString, lastWord);
    const QString text = QStringLiteral("alpha beta\ngamma delta");
    QVERIFY(openProgram(text));

    QElapsedTimer timer;
    timer.start();
    editor->setErrorPosition(line, column, 5);
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));

    const QString marked = markedText(editor);
    QVERIFY2(marked.isEmpty() || marked == lastWord, qPrintable(marked));
    const int position = editor->textCursor().position();
    QVERIFY2(position >= 0 && position <= documentEnd(editor), qPrintable(QString::number(position)));
    QCOMPARE(editor->toPlainText(), text);
    QVERIFY(!editor->document()->isModified());
}

QTEST_MAIN(TestEditing)
#include "tst_editing.moc"
