// A very long program line is shown in several blocks, so that a keystroke
// lays out only a piece of it; the file, the line numbers, the keys and the
// clipboard see one line.

#include <QApplication>
#include <QClipboard>
#include <QPointer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

#include "editorsupport.h"
#include "editwindow.h"
#include "linepieces.h"
#include "testsupport.h"
#include "textedit.h"
#include "zusourcecode.h"

namespace {

// Words of five letters and a blank, so that pieces are cut after blanks.
QByteArray wordsLine(int length)
{
    QByteArray line;
    line.reserve(length);
    for (int i = 0; line.size() < length; ++i)
        line += QByteArray::number(10000 + i % 90000) + ' ';
    line.truncate(length);
    return line;
}

const QByteArray longLine = wordsLine(23456);
const QByteArray program = "first {\n" + longLine + "\n\tlast word\n";

QString fileText(const QString &name)
{
    return QString::fromLatin1(fileBytes(name + QStringLiteral(".zu")));
}

} // namespace

class TestLongLines : public QObject
{
    Q_OBJECT

private:
    ZuSourceCode *openProgram(const QByteArray &text);
    bool focus(ZuSourceCode *editor);
    // Puts the cursor at the position of the program's text.
    void placeCursor(ZuSourceCode *editor, int programPosition, int anchor = -1);
    // The document position of a position in the program's text.
    int documentPosition(ZuSourceCode *editor, int programPosition) const;
    // Saves and returns the file's text.
    QString saved(ZuSourceCode *editor);

    TempCurrentDir workDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
    QList<QPointer<QWidget>> pages;

private slots:
    void init();
    void cleanup();

    void cutLeavesShortLinesAlone();
    void cutJoinsBackToTheText_data();
    void cutJoinsBackToTheText();
    void longLineShownInPiecesAndSavedWhole();
    void lineOfTheLimitStaysOneBlock();
    void typingInPieceChangesOnlyThatPlace();
    void enterInPieceBreaksTheLineOnce();
    void enterAtPieceStartBreaksTheLineThere();
    void backspaceAtPieceStartDeletesCharacterBefore();
    void deleteAtPieceEndDeletesCharacterAfter();
    void undoAfterJoiningPiecesKeepsLineWhole();
    void pasteIntoPieceKeepsPastedLineBreaks();
    void copyAcrossPiecesHasNoLineBreak();
    void lineNumbersCountProgramLines();
    void errorMarkFindsProgramLineAndColumn();
    void tabIndentLeavesPiecesAlone();
    void searchFindsTextAcrossPieceBreak();
    void replaceAcrossPieceBreakKeepsOneLine();
    void replaceAllReachesAcrossEveryPieceBreak();
    void wholeWordSeesLettersAcrossPieceBreak();

private:
    // Where the first piece of the long line ends, in the program's text.
    static int firstBreak(ZuSourceCode *editor);
};

ZuSourceCode *TestLongLines::openProgram(const QByteArray &text)
{
    if (!writeFile(QStringLiteral("long.zu"), text))
        return nullptr;
    return editorOnOwnPage(QStringLiteral("long"), window, pages);
}

bool TestLongLines::focus(ZuSourceCode *editor)
{
    QWidget *page = editor->parentWidget();
    page->resize(600, 400);
    page->show();
    page->activateWindow();
    editor->setFocus();
    return QTest::qWaitForWindowActive(page) && editor->hasFocus();
}

int TestLongLines::documentPosition(ZuSourceCode *editor, int programPosition) const
{
    // Each piece break is one character of the document the file lacks.
    int position = programPosition;
    for (QTextBlock block = editor->document()->firstBlock(); block.isValid(); block = block.next()) {
        if (block.position() > position)
            break;
        if (LinePieces::continuesLine(block))
            ++position;
    }
    return position;
}

void TestLongLines::placeCursor(ZuSourceCode *editor, int programPosition, int anchor)
{
    QTextCursor cursor(editor->document());
    if (anchor >= 0)
        cursor.setPosition(documentPosition(editor, anchor));
    cursor.setPosition(documentPosition(editor, programPosition),
                       anchor >= 0 ? QTextCursor::KeepAnchor : QTextCursor::MoveAnchor);
    editor->setTextCursor(cursor);
}

QString TestLongLines::saved(ZuSourceCode *editor)
{
    if (!editor->toSave())
        return QStringLiteral("<not saved>");
    return fileText(editor->objectName());
}

void TestLongLines::init()
{
    QVERIFY(workDir.make());
    QVERIFY(workDir.enter());
    makePlugin(plugin, window);
    QVERIFY(window);
}

void TestLongLines::cleanup()
{
    deletePlugin(plugin, window);
    deleteWidgets(pages);
    workDir.leave();
}

void TestLongLines::cutLeavesShortLinesAlone()
{
    const QString text = QStringLiteral("a\n") + QString(LinePieces::longLine, QLatin1Char('x'));
    QVector<int> continuing{7};
    const QString result = LinePieces::cut(text, &continuing);
    QVERIFY(continuing.isEmpty());
    QVERIFY(result.isSharedWith(text));
}

void TestLongLines::cutJoinsBackToTheText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QVector<int>>("pieceLengths");
    const int length = LinePieces::pieceLength;
    const int full = LinePieces::longLine / length; // pieces of a line one longer than the limit

    QVector<int> fullPieces(full, length);
    QTest::newRow("no blank: full pieces")
            << QString(LinePieces::longLine + 1, QLatin1Char('x')) << (fullPieces << 1);

    QString blanks(LinePieces::longLine + 1, QLatin1Char('x'));
    blanks[length - 3] = QLatin1Char(' ');
    QVector<int> afterBlank{length - 2};
    afterBlank << QVector<int>(full - 1, length) << 3;
    QTest::newRow("cut after the blank near the end") << blanks << afterBlank;

    QString early(LinePieces::longLine + 1, QLatin1Char('x'));
    early[length / 2] = QLatin1Char(' ');
    QTest::newRow("a blank too early is ignored") << early << (QVector<int>(full, length) << 1);
}

void TestLongLines::cutJoinsBackToTheText()
{
    QFETCH(QString, line);
    QFETCH(QVector<int>, pieceLengths);
    const QString text = QStringLiteral("before\n") + line + QStringLiteral("\nafter");
    QVector<int> continuing;
    const QStringList lines = LinePieces::cut(text, &continuing).split(QLatin1Char('\n'));

    QCOMPARE(lines.size(), pieceLengths.size() + 2);
    QCOMPARE(lines.first(), QStringLiteral("before"));
    QCOMPARE(lines.last(), QStringLiteral("after"));
    QString joined;
    for (int i = 0; i < pieceLengths.size(); ++i) {
        QCOMPARE(lines.at(i + 1).size(), pieceLengths.at(i));
        joined += lines.at(i + 1);
    }
    QCOMPARE(joined, line);
    QVector<int> expected;
    for (int i = 2; i <= pieceLengths.size(); ++i)
        expected << i;
    QCOMPARE(continuing, expected);
}

void TestLongLines::longLineShownInPiecesAndSavedWhole()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    QVERIFY(document->blockCount() > 3 + longLine.size() / LinePieces::pieceLength);
    for (QTextBlock block = document->firstBlock(); block.isValid(); block = block.next())
        QVERIFY(block.length() <= LinePieces::pieceLength + 1);
    QVERIFY(!document->isModified());
    QCOMPARE(document->availableUndoSteps(), 0);

    QTest::keyClick(editor, Qt::Key_End); // no change, yet a save writes the file anew
    QCOMPARE(saved(editor), QString::fromLatin1(program));
}

void TestLongLines::lineOfTheLimitStaysOneBlock()
{
    const QByteArray text = wordsLine(LinePieces::longLine) + "\nx\n";
    ZuSourceCode *editor = openProgram(text);
    QVERIFY(editor);
    QCOMPARE(editor->document()->blockCount(), 3);
    QCOMPARE(editor->document()->firstBlock().length(), LinePieces::longLine + 1);
}

void TestLongLines::typingInPieceChangesOnlyThatPlace()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const int at = 8 + 12345;
    placeCursor(editor, at);
    QTest::keyClicks(editor, QStringLiteral("zz"));
    QByteArray expected = program;
    expected.insert(at, "zz");
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
}

void TestLongLines::enterInPieceBreaksTheLineOnce()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const int at = 8 + LinePieces::pieceLength + 100; // inside the second piece
    placeCursor(editor, at);
    QVERIFY(LinePieces::continuesLine(editor->textCursor().block()));
    QTest::keyClick(editor, Qt::Key_Return);
    QByteArray expected = program;
    expected.insert(at, '\n');
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
    QVERIFY(!LinePieces::continuesLine(editor->textCursor().block()));
}

void TestLongLines::enterAtPieceStartBreaksTheLineThere()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const QTextBlock second = editor->document()->findBlockByNumber(2);
    QVERIFY(LinePieces::continuesLine(second));
    QTextCursor cursor(second);
    editor->setTextCursor(cursor);
    const int at = second.position() - 1; // the file lacks the piece break
    QTest::keyClick(editor, Qt::Key_Return);
    QByteArray expected = program;
    expected.insert(at, '\n');
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
}

void TestLongLines::backspaceAtPieceStartDeletesCharacterBefore()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const QTextBlock second = editor->document()->findBlockByNumber(2);
    editor->setTextCursor(QTextCursor(second));
    const int at = second.position() - 1;
    QTest::keyClick(editor, Qt::Key_Backspace);
    QByteArray expected = program;
    expected.remove(at - 1, 1);
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
    QVERIFY(LinePieces::continuesLine(editor->textCursor().block()));
}

void TestLongLines::deleteAtPieceEndDeletesCharacterAfter()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const QTextBlock first = editor->document()->findBlockByNumber(1);
    QTextCursor cursor(first);
    cursor.movePosition(QTextCursor::EndOfBlock);
    editor->setTextCursor(cursor);
    const int at = first.position() + first.length() - 1;
    QTest::keyClick(editor, Qt::Key_Delete);
    QByteArray expected = program;
    expected.remove(at, 1);
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
}

void TestLongLines::undoAfterJoiningPiecesKeepsLineWhole()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const int breakAt = editor->document()->findBlockByNumber(2).position() - 1;
    placeCursor(editor, breakAt + 3, breakAt - 3); // across the first piece break
    QTest::keyClick(editor, Qt::Key_Delete);
    QByteArray removed = program;
    removed.remove(breakAt - 3, 6);
    QCOMPARE(saved(editor), QString::fromLatin1(removed));

    QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(saved(editor), QString::fromLatin1(program));
    QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(saved(editor), QString::fromLatin1(removed));
}

void TestLongLines::pasteIntoPieceKeepsPastedLineBreaks()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const int at = 8 + 2 * LinePieces::pieceLength + 10; // inside the third piece
    placeCursor(editor, at);
    QApplication::clipboard()->setText(QStringLiteral("one\ntwo\n"));
    QTest::keyClick(editor, Qt::Key_V, Qt::ControlModifier);
    QByteArray expected = program;
    expected.insert(at, "one\ntwo\n");
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
}

void TestLongLines::copyAcrossPiecesHasNoLineBreak()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    const int breakAt = editor->document()->findBlockByNumber(2).position() - 1;
    placeCursor(editor, breakAt + 20, 2); // from the first line into the second piece
    QTest::keyClick(editor, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QString::fromLatin1(program.mid(2, breakAt + 18)));
}

void TestLongLines::lineNumbersCountProgramLines()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    const int blocks = document->blockCount();
    QCOMPARE(editor->lineNumber(document->firstBlock()), 1);
    for (int i = 1; i < blocks - 2; ++i)
        QCOMPARE(editor->lineNumber(document->findBlockByNumber(i)), 2);
    QCOMPARE(editor->lineNumber(document->findBlockByNumber(blocks - 2)), 3);
    QCOMPARE(editor->lineNumber(document->lastBlock()), 4);

    QCOMPARE(editor->findLine(2), document->findBlockByNumber(1));
    QCOMPARE(editor->findLine(3).text(), QStringLiteral("\tlast word"));
    QVERIFY(!editor->findLine(5).isValid());
    QVERIFY(!editor->findLine(0).isValid());
}

void TestLongLines::errorMarkFindsProgramLineAndColumn()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor);
    editor->setErrorPosition(3, 6, 27);
    QTextCursor mark = editor->selectWordAt(3, 6);
    QCOMPARE(mark.selectedText(), QStringLiteral("word"));

    // A column in the third piece: the word of the program line there.
    const int column = 6 * (2 * LinePieces::pieceLength / 6 + 12); // a word's start
    mark = editor->selectWordAt(2, unsigned(column));
    QCOMPARE(mark.selectedText(), QString::fromLatin1(longLine.mid(column, 5)));
    editor->setErrorPosition(2, unsigned(column), 27);
    QCOMPARE(editor->textCursor().block().text().mid(editor->textCursor().positionInBlock(), 5),
             QString::fromLatin1(longLine.mid(column, 5)));
}

void TestLongLines::tabIndentLeavesPiecesAlone()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor && focus(editor));
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Tab);
    QCOMPARE(saved(editor), QStringLiteral("\tfirst {\n\t") + QString::fromLatin1(longLine)
                                + QStringLiteral("\n\t\tlast word\n\t"));

    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Backtab);
    QCOMPARE(saved(editor), QString::fromLatin1(program));
}

int TestLongLines::firstBreak(ZuSourceCode *editor)
{
    return 8 + editor->document()->findBlockByNumber(1).length() - 1;
}

void TestLongLines::searchFindsTextAcrossPieceBreak()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor);
    const int breakAt = firstBreak(editor);
    const QString what = QString::fromLatin1(program.mid(breakAt - 4, 8));
    QVERIFY(what.contains(QLatin1Char(' ')));
    placeCursor(editor, 0);

    QCOMPARE(editor->searchAndReplace(what, QString(), false, false, false, false), 1);
    QCOMPARE(editor->textCursor().selectionStart(), documentPosition(editor, breakAt - 4));
    QCOMPARE(editor->textCursor().selectionEnd(), documentPosition(editor, breakAt + 4));
    // The next search starts after it: the text occurs once.
    QCOMPARE(editor->searchAndReplace(what, QString(), false, false, false, false), 0);
}

void TestLongLines::replaceAcrossPieceBreakKeepsOneLine()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor);
    const int breakAt = firstBreak(editor);
    const QString what = QString::fromLatin1(program.mid(breakAt - 4, 8));
    placeCursor(editor, 0);

    QCOMPARE(editor->searchAndReplace(what, QStringLiteral("<>"), true, false, false, false), 1);
    QByteArray expected = program;
    expected.replace(breakAt - 4, 8, "<>");
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
    QCOMPARE(editor->lineNumber(editor->document()->lastBlock()), 4);
    QCOMPARE(editor->textCursor().position(), documentPosition(editor, breakAt - 2));
}

// Pieces are cut after blanks and every word starts with 1: every piece
// break lies inside an occurrence of " 1".
void TestLongLines::replaceAllReachesAcrossEveryPieceBreak()
{
    ZuSourceCode *editor = openProgram(program);
    QVERIFY(editor);
    QTextDocument *document = editor->document();
    const int pieces = document->blockCount() - 3;
    QVERIFY(pieces > 40);
    const int occurrences = longLine.count(" 1");

    QCOMPARE(editor->searchAndReplace(QStringLiteral(" 1"), QStringLiteral("_"), true, false, false, true),
             occurrences);
    QByteArray expected = program;
    expected.replace(" 1", "_");
    QCOMPARE(saved(editor), QString::fromLatin1(expected));
    QCOMPARE(editor->lineNumber(document->lastBlock()), 4);

    document->undo();
    QCOMPARE(saved(editor), QString::fromLatin1(program));
    QCOMPARE(document->blockCount(), pieces + 3);
    QCOMPARE(editor->lineNumber(document->lastBlock()), 4);
}

// A line without blanks near its piece ends is cut inside words; a word is
// whole only where the program line has no letter beside it.
void TestLongLines::wholeWordSeesLettersAcrossPieceBreak()
{
    const int length = LinePieces::pieceLength;
    QByteArray line(length - 60, 'x');
    line += ' ' + QByteArray(59, 'w') + QByteArray(LinePieces::longLine, 'z');
    ZuSourceCode *editor = openProgram(line + "\n");
    QVERIFY(editor);
    QCOMPARE(editor->document()->firstBlock().text().right(60), QLatin1Char(' ') + QString(59, QLatin1Char('w')));
    const QString what(59, QLatin1Char('w'));

    QCOMPARE(editor->searchAndReplace(what, QString(), false, false, true, false), 0);
    QCOMPARE(editor->searchAndReplace(what, QString(), false, false, true, true), 0);
    QCOMPARE(editor->searchAndReplace(what, QString(), false, false, false, false), 1);
    const QString wholeWord = what + QString(LinePieces::longLine, QLatin1Char('z'));
    placeCursor(editor, 0);
    QCOMPARE(editor->searchAndReplace(wholeWord, QString(), false, false, true, false), 1);
    QCOMPARE(editor->textCursor().selectionEnd(), documentPosition(editor, line.size()));
}

QTEST_MAIN(TestLongLines)

#include "tst_longlines.moc"
