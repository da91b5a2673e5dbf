// Search and replace, driven through the search panel as a user drives it:
// texts typed into its two boxes, its options and buttons clicked, the
// count and not-found boxes answered; in the current program and across the
// programs of the current project.

#include <QtTest>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QScopedPointer>
#include <QTabWidget>
#include <QTextCodec>

#include "boxanswerer.h"
#include "editorsupport.h"
#include "editwindow.h"
#include "linepieces.h"
#include "searchreplace.h"
#include "testsupport.h"
#include "windowfixture.h"
#include "zusourcecode.h"

namespace {

const QString attentionTitle = QStringLiteral("Внимание!");
const QString notFoundText = QStringLiteral("Искомая строка не найдена ни в одной из программ проекта");

QString countText(int count)
{
    return QStringLiteral("Найдено и заменено %1 фрагментов").arg(count);
}

// The editor's whole text, as its file holds it: a very long line is shown
// in pieces.
QString textOf(const ZuSourceCode *editor)
{
    return LinePieces::fileText(editor->document(), 0, editor->document()->characterCount() - 1);
}

} // namespace

class TestSearch : public QObject, protected WindowFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // The panel
    void togglingButtonOffHidesPanelWithoutStoring();
    void closingPanelUnchecksButtonAndStores();
    void historyOfTwentyDropsOldestAndKeepsReusedInPlace();

    // The current program
    void findSelectsEachOccurrenceAfterCursorInTurn();
    void replaceTakesNextOccurrenceNotSelectedOne();
    void replaceAllReportsCount();
    void replaceAllWithoutMatchReportsZero();
    void ignoreCaseFindsCyrillicInEitherCase();
    void wholeWordsSkipsPartsOfCyrillicWords();
    void replacementContainingSearchTextDoesNotLoop();
    void matchAcrossReplacementIsNotReplaced();
    void emptySearchTextFindsAndReplacesNothing();
    void undoAfterReplaceAllRestoresTextInOneStep();

    // The editor's own step
    void replaceAllMatchesReplacingOneByOne();
    void replaceAllOnLongLineMatchesStringReplace();

    // Across the project
    void findWalksProjectInProjectOrder();
    void findInProjectWarnsWhenOnlyMatchIsAboveCursor();
    void findInProjectFromProgramOutsideProjectWarns();
    void replaceInProjectMovesOnToNextProgram();
    void replaceAllInProjectOpensAllAndChangesOnlyMatches();
    void replaceAllInProjectProcessesTwiceListedProgramTwice();

private:
    bool writeProgram(const QString &name, const QString &text);
    bool openWindow();
    ZuSourceCode *open(const QString &name);
    ZuSourceCode *editorOf(const QString &name) const;
    bool showPanel();
    bool setTexts(const QString &what, const QString &with = QString());
    bool click(const char *buttonName);
    QPushButton *searchButton() const;

    template<typename T>
    T *panelChild(const char *name) const
    {
        return window->searchPanel()->findChild<T *>(QLatin1String(name));
    }

    QScopedPointer<BoxAnswerer> boxes;
    QHash<QString, QVariant> stored;
    QList<QPointer<QWidget>> pages;
};

void TestSearch::init()
{
    QVERIFY(tempDir.make());
    // Every box is answered with Ok and recorded.
    boxes.reset(new BoxAnswerer(QMessageBox::Ok, BoxAnswerer::RecordWhenShown));
    QVERIFY(tempDir.enter());
}

void TestSearch::cleanup()
{
    deleteWidgets(pages);
    deletePluginWindow();
    stored.clear();
    boxes.reset();
    tempDir.leave();
}

bool TestSearch::writeProgram(const QString &name, const QString &text)
{
    return writeFile(name + QStringLiteral(".zu"), QTextCodec::codecForName("windows-1251")->fromUnicode(text));
}

// Makes and shows the window over the programs written so far, and keeps
// the last value of every setting it reports.
bool TestSearch::openWindow()
{
    if (!makePluginWindow())
        return false;
    connect(window, &EditWindow::changeVariant, this,
            [this](QString key, QVariant value, bool, bool) { stored.insert(key, value); });
    return showAndActivate(window);
}

// Opens the program in a tab, or goes to its tab.
ZuSourceCode *TestSearch::open(const QString &name)
{
    window->switchOrLoad(name);
    return tabs->tabText(tabs->currentIndex()) == name ? editorOf(name) : nullptr;
}

ZuSourceCode *TestSearch::editorOf(const QString &name) const
{
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->tabText(i) == name)
            return tabs->widget(i)->findChild<ZuSourceCode *>();
    }
    return nullptr;
}

QPushButton *TestSearch::searchButton() const
{
    return button("seacrhButton");
}

// Opening a program hides the panel: the search button brings it back.
bool TestSearch::showPanel()
{
    if (window->searchPanel()->isVisible())
        return true;
    QTest::mouseClick(searchButton(), Qt::LeftButton);
    return window->searchPanel()->isVisible() && QTest::qWaitForWindowExposed(window->searchPanel());
}

// Types the texts into the panel's two boxes.
bool TestSearch::setTexts(const QString &what, const QString &with)
{
    auto *searchFor = panelChild<QComboBox>("searchFor");
    auto *replaceTo = panelChild<QComboBox>("replaceTo");
    if (!searchFor || !replaceTo || !showPanel())
        return false;
    replaceText(searchFor->lineEdit(), what);
    replaceText(replaceTo->lineEdit(), with);
    return searchFor->currentText() == what && replaceTo->currentText() == with;
}

bool TestSearch::click(const char *buttonName)
{
    auto *button = panelChild<QPushButton>(buttonName);
    if (!button || !showPanel())
        return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

// ---------------------------------------------------------------------------
// The panel

void TestSearch::togglingButtonOffHidesPanelWithoutStoring()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("text\n")));
    QVERIFY(openWindow());
    QVERIFY(open(QStringLiteral("alpha")));
    QVERIFY(showPanel());
    QVERIFY(searchButton()->isChecked());

    QTest::mouseClick(searchButton(), Qt::LeftButton);

    QVERIFY(!searchButton()->isChecked());
    QTRY_VERIFY(!window->searchPanel()->isVisible());
    for (const char *key : { "inprogram", "entireproject", "ignorecase", "wholeword", "searchFor", "replaceTo" })
        QVERIFY2(!stored.contains(QLatin1String(key)), key);
}

void TestSearch::closingPanelUnchecksButtonAndStores()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("text\n")));
    QVERIFY(openWindow());
    QVERIFY(open(QStringLiteral("alpha")));
    QVERIFY(setTexts(QStringLiteral("sought"), QStringLiteral("put")));
    clickCheck(panelChild<QCheckBox>("wholeword"));
    QVERIFY(!stored.contains(QStringLiteral("searchFor")));

    QTest::mouseClick(panelChild<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Close), Qt::LeftButton);

    QTRY_VERIFY(!window->searchPanel()->isVisible());
    QVERIFY(!searchButton()->isChecked());
    QCOMPARE(stored.value(QStringLiteral("searchFor")).toStringList(), QStringList { "sought" });
    QCOMPARE(stored.value(QStringLiteral("replaceTo")).toStringList(), QStringList { "put" });
    QCOMPARE(stored.value(QStringLiteral("wholeword")), QVariant(true));
    QCOMPARE(stored.value(QStringLiteral("ignorecase")), QVariant(false));
    QCOMPARE(stored.value(QStringLiteral("inprogram")), QVariant(true));
    QCOMPARE(stored.value(QStringLiteral("entireproject")), QVariant(false));
}

// Twenty searches fill the history; a twenty-first text pushes the oldest
// out, and a text used before stays where it is. What is stored follows.
void TestSearch::historyOfTwentyDropsOldestAndKeepsReusedInPlace()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("w07 w19\n")));
    QVERIFY(openWindow());
    QVERIFY(open(QStringLiteral("alpha")));
    auto *searchFor = panelChild<QComboBox>("searchFor");
    auto *replaceTo = panelChild<QComboBox>("replaceTo");
    QStringList searched;
    QStringList replacements;
    for (int i = 0; i < 20; ++i) {
        searched.prepend(QStringLiteral("w%1").arg(i, 2, 10, QLatin1Char('0')));
        replacements.prepend(QStringLiteral("r%1").arg(i, 2, 10, QLatin1Char('0')));
        QVERIFY(setTexts(searched.first(), replacements.first()));
        QVERIFY(click("searchNext"));
    }
    QCOMPARE(itemTexts(searchFor), searched);
    QCOMPARE(itemTexts(replaceTo), replacements);
    QCOMPARE(stored.value(QStringLiteral("searchFor")).toStringList(), searched);
    QCOMPARE(stored.value(QStringLiteral("replaceTo")).toStringList(), replacements);

    QVERIFY(setTexts(QStringLiteral("new"), QStringLiteral("r07")));
    QVERIFY(click("searchNext"));
    searched.prepend(QStringLiteral("new"));
    searched.removeLast();
    QCOMPARE(searchFor->count(), 20);
    QCOMPARE(itemTexts(searchFor), searched);
    QVERIFY(!searched.contains(QStringLiteral("w00")));
    QCOMPARE(itemTexts(replaceTo), replacements);
    QCOMPARE(stored.value(QStringLiteral("searchFor")).toStringList(), searched);
    QCOMPARE(stored.value(QStringLiteral("replaceTo")).toStringList(), replacements);

    QTest::keyClick(editorOf(QStringLiteral("alpha")), Qt::Key_Home, Qt::ControlModifier);
    QVERIFY(setTexts(QStringLiteral("w07"), QStringLiteral("r19")));
    QVERIFY(click("searchNext"));
    QCOMPARE(itemTexts(searchFor), searched);
    QCOMPARE(itemTexts(replaceTo), replacements);
    QCOMPARE(searchFor->currentText(), QStringLiteral("w07"));
    QCOMPARE(stored.value(QStringLiteral("searchFor")).toStringList(), searched);
    // The search itself still ran with the text reused.
    QCOMPARE(editorOf(QStringLiteral("alpha"))->textCursor().selectedText(), QStringLiteral("w07"));
}

// ---------------------------------------------------------------------------
// The current program

void TestSearch::findSelectsEachOccurrenceAfterCursorInTurn()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("one pin\ntwo pin\nthree pin\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QTextCursor start = editor->textCursor();
    start.setPosition(5); // inside the first "pin"
    editor->setTextCursor(start);
    QVERIFY(setTexts(QStringLiteral("pin")));

    QVERIFY(click("searchNext"));
    QCOMPARE(editor->textCursor().selectionStart(), 12);
    QCOMPARE(editor->textCursor().selectedText(), QStringLiteral("pin"));
    QVERIFY(click("searchNext"));
    QCOMPARE(editor->textCursor().selectionStart(), 22);

    // Nothing after the last one: the selection stays, and no box says so.
    QVERIFY(click("searchNext"));
    QCOMPARE(editor->textCursor().selectionStart(), 22);
    QVERIFY(boxes->shown.isEmpty());
    QVERIFY(!editor->document()->isModified());
    QVERIFY(!editor->isChanged());
}

// A Replace right after a Find replaces the occurrence after the one found.
void TestSearch::replaceTakesNextOccurrenceNotSelectedOne()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin pin pin\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(setTexts(QStringLiteral("pin"), QStringLiteral("nail")));

    QVERIFY(click("searchNext"));
    QCOMPARE(editor->textCursor().selectionStart(), 0);
    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editor), QStringLiteral("pin nail pin\n"));
    QCOMPARE(editor->textCursor().position(), 8);
    QVERIFY(!editor->textCursor().hasSelection());
    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editor), QStringLiteral("pin nail nail\n"));
    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editor), QStringLiteral("pin nail nail\n"));
    QVERIFY(boxes->shown.isEmpty());
    QVERIFY(editor->isChanged());
}

void TestSearch::replaceAllReportsCount()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin pin\npin\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    // From the start, wherever the cursor is.
    QTest::keyClick(editor, Qt::Key_End, Qt::ControlModifier);
    QVERIFY(setTexts(QStringLiteral("pin"), QStringLiteral("nail")));

    QVERIFY(click("replaceAll"));

    QCOMPARE(textOf(editor), QStringLiteral("nail nail\nnail\n"));
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).text, countText(3));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Warning);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    // The cursor waits past the last replacement.
    QCOMPARE(editor->textCursor().position(), 14);
}

void TestSearch::replaceAllWithoutMatchReportsZero()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin pin\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(setTexts(QStringLiteral("nail"), QStringLiteral("pin")));

    QVERIFY(click("replaceAll"));

    QCOMPARE(boxes->texts(), QStringList { countText(0) });
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(textOf(editor), QStringLiteral("pin pin\n"));
    QVERIFY(!editor->document()->isModified());
    QVERIFY(!editor->isUndoAvailable());
}

void TestSearch::ignoreCaseFindsCyrillicInEitherCase()
{
    const QString text = QStringLiteral("Мир мир МИР мИр\n");
    QVERIFY(writeProgram(QStringLiteral("alpha"), text));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(setTexts(QStringLiteral("мир"), QStringLiteral("дом")));

    QVERIFY(click("replaceAll"));
    QCOMPARE(textOf(editor), QStringLiteral("Мир дом МИР мИр\n"));

    clickCheck(panelChild<QCheckBox>("ignorecase"));
    QVERIFY(panelChild<QCheckBox>("ignorecase")->isChecked());
    QVERIFY(setTexts(QStringLiteral("мИР"), QStringLiteral("дом")));
    QVERIFY(click("replaceAll"));
    QCOMPARE(textOf(editor), QStringLiteral("дом дом дом дом\n"));
    QCOMPARE(boxes->texts(), (QStringList { countText(1), countText(3) }));

    // A Find takes the option as it stands at its click.
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);
    QVERIFY(setTexts(QStringLiteral("ДОМ")));
    QVERIFY(click("searchNext"));
    QCOMPARE(editor->textCursor().selectedText(), QStringLiteral("дом"));
    clickCheck(panelChild<QCheckBox>("ignorecase"));
    QVERIFY(click("searchNext"));
    QCOMPARE(editor->textCursor().selectionStart(), 0);
}

void TestSearch::wholeWordsSkipsPartsOfCyrillicWords()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("кот котёнок (кот) скот кот1 кот_\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    clickCheck(panelChild<QCheckBox>("wholeword"));
    QVERIFY(panelChild<QCheckBox>("wholeword")->isChecked());
    QVERIFY(setTexts(QStringLiteral("кот"), QStringLiteral("пёс")));

    QVERIFY(click("replaceAll"));

    // A digit is part of a word; an underscore is not.
    QCOMPARE(textOf(editor), QStringLiteral("пёс котёнок (пёс) скот кот1 пёс_\n"));
    QCOMPARE(boxes->texts(), QStringList { countText(3) });
}

void TestSearch::replacementContainingSearchTextDoesNotLoop()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("ab ab\nab\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(setTexts(QStringLiteral("ab"), QStringLiteral("abab")));

    QVERIFY(click("replaceAll"));

    QCOMPARE(textOf(editor), QStringLiteral("abab abab\nabab\n"));
    QCOMPARE(boxes->texts(), QStringList { countText(3) });

    // One at a time, each Replace goes on past the text it put in.
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);
    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editor), QStringLiteral("ababab abab\nabab\n"));
    QCOMPARE(editor->textCursor().position(), 4);
    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editor), QStringLiteral("abababab abab\nabab\n"));
}

// Removing the middle of "aabb" makes a new "ab" that begins inside the
// replacement: the search has gone past it.
void TestSearch::matchAcrossReplacementIsNotReplaced()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("aabb\n")));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(setTexts(QStringLiteral("ab"), QStringLiteral("a")));

    QVERIFY(click("replaceAll"));

    QCOMPARE(textOf(editor), QStringLiteral("aab\n"));
    QCOMPARE(boxes->texts(), QStringList { countText(1) });
}

void TestSearch::emptySearchTextFindsAndReplacesNothing()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("some text\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "alpha.zu\n"));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QTextCursor cursor = editor->textCursor();
    cursor.setPosition(3);
    editor->setTextCursor(cursor);
    QVERIFY(setTexts(QString(), QStringLiteral("x")));

    QVERIFY(click("searchNext"));
    QVERIFY(click("replaceIt"));
    QCOMPARE(editor->textCursor().position(), 3);
    QVERIFY(boxes->shown.isEmpty());

    QVERIFY(click("replaceAll"));
    QCOMPARE(boxes->texts(), QStringList { countText(0) });
    QCOMPARE(textOf(editor), QStringLiteral("some text\n"));
    QVERIFY(!editor->document()->isModified());

    // Across the project as well.
    clickRadio(panelChild<QRadioButton>("entireproject"));
    QVERIFY(click("searchNext"));
    QVERIFY(click("replaceAll"));
    QCOMPARE(boxes->texts(), (QStringList { countText(0), notFoundText, countText(0) }));
    QCOMPARE(textOf(editor), QStringLiteral("some text\n"));
    QVERIFY(!editor->document()->isModified());
}

// Replace all is one step back: one Ctrl+Z brings the text back, unchanged
// as far as saving goes, and the buttons follow.
void TestSearch::undoAfterReplaceAllRestoresTextInOneStep()
{
    const QString text = QStringLiteral("red red\nred green\n");
    QVERIFY(writeProgram(QStringLiteral("alpha"), text));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(!button("undoButton")->isEnabled());
    QVERIFY(!button("saveProgramButton")->isEnabled());
    QVERIFY(setTexts(QStringLiteral("red"), QStringLiteral("blue")));

    QVERIFY(click("replaceAll"));
    QCOMPARE(textOf(editor), QStringLiteral("blue blue\nblue green\n"));
    QVERIFY(button("undoButton")->isEnabled());
    QVERIFY(button("saveProgramButton")->isEnabled());
    QVERIFY(!button("redoButton")->isEnabled());

    QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);

    QCOMPARE(textOf(editor), text);
    QVERIFY(!editor->document()->isModified());
    QVERIFY(!button("undoButton")->isEnabled());
    QVERIFY(!button("saveProgramButton")->isEnabled());
    QVERIFY(button("redoButton")->isEnabled());
}

// ---------------------------------------------------------------------------
// The editor's own step

// Replace all in one program does what clicking Replace from the start
// until nothing is left does: the same text, the same count and the cursor
// in the same place, for every option, replacements that make or break
// words and no-break spaces, which the search takes for blanks. Finding
// all without replacing counts what Find would select one by one.
void TestSearch::replaceAllMatchesReplacingOneByOne()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QString()));
    QVERIFY(openWindow());
    ZuSourceCode *editor = editorOnOwnPage(QStringLiteral("alpha"), window, pages);
    const QString letters = QStringLiteral("aAb .\nяЯ") + QChar(QChar::Nbsp);
    const QStringList sought { "a", "A", "aa", "a.", "я", "Я ", ".", "a a", "b" };
    const QStringList replacements { "", "a", "b", "ba", " ", ".", "я", QString(QChar(QChar::Nbsp)) };
    QRandomGenerator random(13);

    for (int round = 0; round < 3000; ++round) {
        QString text;
        for (int i = int(random.bounded(30)); i > 0; --i)
            text += letters.at(int(random.bounded(letters.size())));
        const QString what = sought.at(int(random.bounded(sought.size())));
        const QString with = replacements.at(int(random.bounded(replacements.size())));
        const bool ignoreCase = random.bounded(2);
        const bool wholeWords = random.bounded(2);
        const bool replace = random.bounded(4) != 0;
        const QByteArray context = QStringLiteral("text \"%1\", \"%2\" -> \"%3\", ignore case %4, whole words %5, "
                                                  "replace %6")
                                       .arg(text, what, with)
                                       .arg(ignoreCase)
                                       .arg(wholeWords)
                                       .arg(replace)
                                       .toUtf8();

        editor->setPlainText(text);
        const int all = editor->searchAndReplace(what, with, replace, ignoreCase, wholeWords, true);
        const QString allText = editor->document()->toRawText();
        const int allPosition = editor->textCursor().position();
        const int allAnchor = editor->textCursor().anchor();

        editor->setPlainText(text);
        editor->moveCursor(QTextCursor::Start);
        int steps = 0;
        while (editor->searchAndReplace(what, with, replace, ignoreCase, wholeWords, false) == 1) {
            ++steps;
            QVERIFY2(steps <= text.size() + 1, context.constData());
        }
        QVERIFY2(all == steps, context.constData());
        QVERIFY2(allText == editor->document()->toRawText(), context.constData());
        QVERIFY2(allPosition == editor->textCursor().position(), context.constData());
        QVERIFY2(allAnchor == editor->textCursor().anchor(), context.constData());
    }
}

// One line holding tens of thousands of occurrences: each of them is
// replaced, as a string replace would.
void TestSearch::replaceAllOnLongLineMatchesStringReplace()
{
    const QString line = QStringLiteral("pin, ").repeated(30000) + QStringLiteral("end\n");
    QVERIFY(writeProgram(QStringLiteral("alpha"), line));
    QVERIFY(openWindow());
    ZuSourceCode *editor = open(QStringLiteral("alpha"));
    QVERIFY(editor);
    QVERIFY(setTexts(QStringLiteral("pin"), QStringLiteral("nail")));

    QVERIFY(click("replaceAll"));

    QCOMPARE(boxes->texts(), QStringList { countText(30000) });
    QVERIFY(textOf(editor) == QString(line).replace(QStringLiteral("pin"), QStringLiteral("nail")));
}

// ---------------------------------------------------------------------------
// Across the project

// Find goes on from the cursor to the end of the current program, then to
// each program after it in the project's order, opening it when it is not
// open, from its start, and wraps round; changing nothing on the way.
void TestSearch::findWalksProjectInProjectOrder()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin\nand pin\n")));
    QVERIFY(writeProgram(QStringLiteral("beta"), QStringLiteral("beta pin\n")));
    QVERIFY(writeProgram(QStringLiteral("gamma"), QStringLiteral("gamma gamma pin\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "gamma.zu\nalpha.zu\nbeta.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "gamma", "alpha", "beta" }));
    QVERIFY(open(QStringLiteral("beta")));
    ZuSourceCode *alpha = open(QStringLiteral("alpha"));
    QVERIFY(alpha);
    QVERIFY(setTexts(QStringLiteral("pin")));
    clickRadio(panelChild<QRadioButton>("entireproject"));

    const struct
    {
        const char *program;
        int start;
    } steps[] = { { "alpha", 0 }, { "alpha", 8 }, { "beta", 5 }, { "gamma", 12 }, { "alpha", 0 } };
    for (const auto &step : steps) {
        QVERIFY(click("searchNext"));
        QCOMPARE(tabs->tabText(tabs->currentIndex()), QString::fromLatin1(step.program));
        const QTextCursor found = editorOf(QLatin1String(step.program))->textCursor();
        QCOMPARE(found.selectedText(), QStringLiteral("pin"));
        QCOMPARE(found.selectionStart(), step.start);
    }
    QCOMPARE(tabTexts(tabs), (QStringList { "beta", "alpha", "gamma" }));
    QVERIFY(boxes->shown.isEmpty());
    for (const char *name : { "alpha", "beta", "gamma" })
        QVERIFY2(!editorOf(QLatin1String(name))->document()->isModified(), name);
}

void TestSearch::findInProjectWarnsWhenOnlyMatchIsAboveCursor()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin\nrest\n")));
    QVERIFY(writeProgram(QStringLiteral("beta"), QStringLiteral("nothing\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "alpha.zu\nbeta.zu\n"));
    QVERIFY(openWindow());
    ZuSourceCode *alpha = open(QStringLiteral("alpha"));
    QVERIFY(alpha);
    QTest::keyClick(alpha, Qt::Key_End, Qt::ControlModifier);
    QVERIFY(setTexts(QStringLiteral("pin")));
    clickRadio(panelChild<QRadioButton>("entireproject"));

    QVERIFY(click("searchNext"));

    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).text, notFoundText);
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Warning);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    // The round went through beta and stopped before alpha's start.
    QCOMPARE(tabTexts(tabs), (QStringList { "alpha", "beta" }));
    QVERIFY(!alpha->textCursor().hasSelection());
    QCOMPARE(alpha->textCursor().position(), 9);
}

// The round starts from the current program's place in the project; a
// program outside it is searched alone, and then the warning comes.
void TestSearch::findInProjectFromProgramOutsideProjectWarns()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin\n")));
    QVERIFY(writeProgram(QStringLiteral("outside"), QStringLiteral("one pin\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "alpha.zu\n"));
    QVERIFY(openWindow());
    ZuSourceCode *outside = open(QStringLiteral("outside"));
    QVERIFY(outside);
    QVERIFY(setTexts(QStringLiteral("pin")));
    clickRadio(panelChild<QRadioButton>("entireproject"));

    QVERIFY(click("searchNext"));
    QCOMPARE(outside->textCursor().selectionStart(), 4);
    QVERIFY(boxes->shown.isEmpty());

    QVERIFY(click("searchNext"));
    QCOMPARE(boxes->texts(), QStringList { notFoundText });
    QCOMPARE(tabTexts(tabs), QStringList { "outside" });
}

// Replace in project scope replaces the next occurrence, in the next
// program that has one when the current one has none left.
void TestSearch::replaceInProjectMovesOnToNextProgram()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("pin\n")));
    QVERIFY(writeProgram(QStringLiteral("beta"), QStringLiteral("no\n")));
    QVERIFY(writeProgram(QStringLiteral("gamma"), QStringLiteral("pin pin\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "alpha.zu\nbeta.zu\ngamma.zu\n"));
    QVERIFY(openWindow());
    QVERIFY(open(QStringLiteral("alpha")));
    QVERIFY(setTexts(QStringLiteral("pin"), QStringLiteral("nail")));
    clickRadio(panelChild<QRadioButton>("entireproject"));

    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editorOf(QStringLiteral("alpha"))), QStringLiteral("nail\n"));
    QVERIFY(click("replaceIt"));
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("gamma"));
    QCOMPARE(textOf(editorOf(QStringLiteral("gamma"))), QStringLiteral("nail pin\n"));
    QVERIFY(!editorOf(QStringLiteral("beta"))->document()->isModified());
    QVERIFY(click("replaceIt"));
    QCOMPARE(textOf(editorOf(QStringLiteral("gamma"))), QStringLiteral("nail nail\n"));
    QVERIFY(boxes->shown.isEmpty());

    QVERIFY(click("replaceIt"));
    QCOMPARE(boxes->texts(), QStringList { notFoundText });
}

// Replace all opens the programs of the project that are not open, goes
// through each from its start and reports the sum; a program outside the
// project is left alone, and a program without occurrences stays
// unchanged. The last program gone through stays current.
void TestSearch::replaceAllInProjectOpensAllAndChangesOnlyMatches()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("x pin\n")));
    QVERIFY(writeProgram(QStringLiteral("beta"), QStringLiteral("pin pin\n")));
    QVERIFY(writeProgram(QStringLiteral("gamma"), QStringLiteral("none\n")));
    QVERIFY(writeProgram(QStringLiteral("outside"), QStringLiteral("pin\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "beta.zu\ngamma.zu\nalpha.zu\n"));
    QVERIFY(openWindow());
    QVERIFY(open(QStringLiteral("outside")));
    ZuSourceCode *alpha = open(QStringLiteral("alpha"));
    QVERIFY(alpha);
    QTest::keyClick(alpha, Qt::Key_End, Qt::ControlModifier);
    QVERIFY(setTexts(QStringLiteral("pin"), QStringLiteral("nail")));
    clickRadio(panelChild<QRadioButton>("entireproject"));

    QVERIFY(click("replaceAll"));

    QCOMPARE(tabTexts(tabs), (QStringList { "outside", "alpha", "beta", "gamma" }));
    QCOMPARE(boxes->texts(), QStringList { countText(3) });
    QCOMPARE(textOf(editorOf(QStringLiteral("alpha"))), QStringLiteral("x nail\n"));
    QCOMPARE(textOf(editorOf(QStringLiteral("beta"))), QStringLiteral("nail nail\n"));
    QCOMPARE(textOf(editorOf(QStringLiteral("gamma"))), QStringLiteral("none\n"));
    QCOMPARE(textOf(editorOf(QStringLiteral("outside"))), QStringLiteral("pin\n"));
    QVERIFY(editorOf(QStringLiteral("alpha"))->isChanged());
    QVERIFY(editorOf(QStringLiteral("beta"))->isChanged());
    QVERIFY(!editorOf(QStringLiteral("gamma"))->isChanged());
    QVERIFY(!editorOf(QStringLiteral("gamma"))->document()->isModified());
    QVERIFY(!editorOf(QStringLiteral("outside"))->document()->isModified());
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("gamma"));
    // The buttons show the current program: unchanged.
    QVERIFY(!button("saveProgramButton")->isEnabled());
}

// A program the project lists twice is gone through twice: the second time
// finds what the first one put in.
void TestSearch::replaceAllInProjectProcessesTwiceListedProgramTwice()
{
    QVERIFY(writeProgram(QStringLiteral("alpha"), QStringLiteral("x\n")));
    QVERIFY(writeProgram(QStringLiteral("beta"), QStringLiteral("y\n")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "alpha.zu\nbeta.zu\nalpha.zu\n"));
    QVERIFY(openWindow());
    QVERIFY(open(QStringLiteral("beta")));
    QVERIFY(setTexts(QStringLiteral("x"), QStringLiteral("xx")));
    clickRadio(panelChild<QRadioButton>("entireproject"));

    QVERIFY(click("replaceAll"));

    QCOMPARE(tabTexts(tabs), (QStringList { "beta", "alpha" }));
    QCOMPARE(textOf(editorOf(QStringLiteral("alpha"))), QStringLiteral("xxxx\n"));
    QCOMPARE(textOf(editorOf(QStringLiteral("beta"))), QStringLiteral("y\n"));
    QCOMPARE(boxes->texts(), QStringList { countText(3) });
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("alpha"));
}

QTEST_MAIN(TestSearch)
#include "tst_search.moc"
