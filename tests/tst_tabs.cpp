// The editor tabs, driven as a user and a host drive them: programs opened
// through the window's buttons and the host's menu socket, tabs switched
// and closed on the tab bar, the save questions answered, and the open
// programs remembered across a restart.

#include <QtTest>

#include <QAbstractButton>
#include <QApplication>
#include <QCompleter>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedPointer>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QStringListModel>
#include <QSyntaxHighlighter>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <vector>

#include "boxanswerer.h"
#include "editorsupport.h"
#include "editwindow.h"
#include "hosttables.h"
#include "searchreplace.h"
#include "settingelement.h"
#include "syntaxer.h"
#include "testsupport.h"
#include "textedit.h"
#include "windowfixture.h"
#include "zuporzu.h"
#include "zusourcecode.h"

namespace {

const QString attentionTitle = QStringLiteral("ВНИМАНИЕ!");

// Program files are dated back when written, so that any save, even of
// unchanged text, shows as a newer time.
bool writeProgram(const QString &name, const QByteArray &data)
{
    return writeAgedFile(name + QStringLiteral(".zu"), data);
}

QByteArray programBytes(const QString &name)
{
    return fileBytes(name + QStringLiteral(".zu"), "<missing>");
}

bool writtenSinceCreated(const QString &name)
{
    return !isAged(name + QStringLiteral(".zu"));
}

ZuSourceCode *editorOf(QWidget *page)
{
    return page ? page->findChild<ZuSourceCode *>() : nullptr;
}

// The highlighter's format at a position of a block.
QTextCharFormat formatAt(const QTextBlock &block, int position)
{
    const QVector<QTextLayout::FormatRange> ranges = block.layout()->formats();
    for (const QTextLayout::FormatRange &range : ranges) {
        if (position >= range.start && position < range.start + range.length)
            return range.format;
    }
    return QTextCharFormat();
}

QColor colourAt(const QTextBlock &block, int position)
{
    const QTextCharFormat format = formatAt(block, position);
    return format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color() : QColor();
}

// Takes away the link that brings a choice in the completer's list to the
// editor; false when there was none. The editor inserts nothing yet, so the
// link itself is what can be seen.
bool takeCompletionLink(QCompleter *completer, ZuSourceCode *editor)
{
    return QObject::disconnect(completer, qOverload<const QString &>(&QCompleter::activated), editor,
                               &ZuSourceCode::insertCompleter);
}

QString changedOutsideQuestion(const QString &name)
{
    return QStringLiteral("Программа\n") + name
           + QStringLiteral("\nбыла изменена вне редактора.\nОткрыть измененную программу?");
}

// Waits for an answered question to close and lets the event loop's
// deletions run; true when the question is gone.
bool questionGoesAway(const QPointer<zuporzu> &dialog)
{
    if (!QTest::qWaitFor([&dialog] { return !dialog || !dialog->isVisible(); }, 5000))
        return false;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return dialog.isNull();
}

// Chooses a new program in the question and presses one of its buttons;
// false when the question lacks either.
bool answerWithProgram(zuporzu *dialog, QDialogButtonBox::StandardButton which)
{
    auto *choice = dialog->findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
    auto *buttons = dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    if (!choice || !buttons || !buttons->button(which))
        return false;
    clickRadio(choice);
    if (!choice->isChecked())
        return false;
    QTest::mouseClick(buttons->button(which), Qt::LeftButton);
    return true;
}

// The host's tables of operations and types, as the host hands them over.
class HostTables
{
public:
    HostTables(std::initializer_list<const char *> operationNames, std::initializer_list<const char *> typeNames)
    {
        for (const char *name : operationNames) {
            OperationRecord record {};
            record.name = name;
            operationRecords.push_back(record);
        }
        for (const char *name : typeNames) {
            TypeRecord record {};
            record.name = name;
            typeRecords.push_back(record);
        }
        operations.first = operationRecords.data();
        operations.end = operationRecords.data() + operationRecords.size();
        types.first = typeRecords.data();
        types.end = typeRecords.data() + typeRecords.size();
    }

    ARRAY operations {};
    ARRAY types {};

private:
    std::vector<OperationRecord> operationRecords;
    std::vector<TypeRecord> typeRecords;
};

} // namespace

class TestTabs : public QObject, protected WindowFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Opening and switching
    void openingTabLoadsProgramAndRecordsOpenedList();
    void eachProgramHasHighlighterAndCompleterFollowsCurrentTab();
    void currentTabSelectedAgainKeepsItsColours();
    void tabSwitchKeepsColoursWithoutRehighlighting();
    void switchingTabsBindsButtonsToCurrentEditor();
    void tabChangedWithoutTabChangesNothing();

    // Closing
    void closingUnmodifiedTabAsksNothing();
    void closingModifiedTabAsksToSave_data();
    void closingModifiedTabAsksToSave();
    void closingLastTabDisablesButtonsAndDropsHelpers();
    void reopenedFirstTabGetsFreshHelpersListingEachNameOnce();
    void closingFirstTabKeepsTheOtherColoured();
    void closedTabEditorStopsWatchingItsFile();
    void closedTabPageAndEditorAreDeleted();
    void reopeningProgramManyTimesLeavesNoEditorsBehind();

    // Lookups by name
    void programOpensInOneTabOnly();
    void namesDifferingInCaseAreDifferentTabs();
    void switchOrLoadGoesToOpensOrIgnores();
    void renamedTabSavesUnderNewName();
    void saveAsThroughButtonRenamesTab();

    // Requests from the lists and from the host
    void editButtonOpensCurrentProgram();
    void hostMenuOpensProgramOnlyOnce();
    void hostMenuOpensProjectPrograms();
    void hostMenuUnknownNameAsksAndCreatesProgram();
    void hostMenuUnknownNameCancelledCreatesNothing();
    void hostMenuProgramWrittenMeanwhileOpensUnchanged();
    void hostMenuBadNameIsRefusedWithOneBox_data();
    void hostMenuBadNameIsRefusedWithOneBox();
    void runReopensRememberedTabs();
    void runOpensRememberedProgramInOneTab();
    void runSkipsRememberedProgramWithoutFile();
    void runSkipsBadRememberedNamesWithOneBox_data();
    void runSkipsBadRememberedNamesWithOneBox();
    void runNamesUnreadableRememberedProgramsInOneBox();

    // Exit and saving
    void canExitWithoutTabsAgrees();
    void canExitCancelStopsAtFirstRefusal();
    void canExitDiscardingAsksEveryModifiedTab();
    void saveBeforeRunWithAutoSaveOffSavesNothing();
    void saveBeforeRunWithAutoSaveOnSavesNamedProgram();
    void saveBeforeRunRefusesBadNameOnce();
    void saveCurrentProgSavesOnlyModifiedCurrent();
    void saveChangedProgOrProjSavesProjectOnlyForItsProgram();

private:
    bool makeWindow();
    bool showWindow();
    bool showWindowOverTwoPrograms();
    bool openTabsOfTwoPrograms();
    QList<QVariant> reported(const QString &key) const;
    ZuSourceCode *editorAt(int index) const { return editorOf(tabs->widget(index)); }
    void typeInto(int index, const QString &text);
    QSyntaxHighlighter *highlighterOf(ZuSourceCode *editor) const;
    int pagesHeld() const;
    zuporzu *askForUnknownName(const QString &name);
    void runAsHost();
    bool enterProgramsDirWithProgramA();

    QScopedPointer<QSignalSpy> variants;
};

void TestTabs::init()
{
    QVERIFY(tempDir.make());
    QVERIFY(tempDir.enter());
}

void TestTabs::cleanup()
{
    variants.reset();
    deletePluginWindow();
    tempDir.leave();
}

// Makes the window in the current directory (its lists are filled from the
// files there) and starts recording what it reports to the host.
bool TestTabs::makeWindow()
{
    if (!makePluginWindow())
        return false;
    for (const char *name : { "saveProgramButton", "saveAsProgramButton", "undoButton", "redoButton",
                              "seacrhButton", "compileProgramButton", "editButton" }) {
        if (!button(name))
            return false;
    }
    variants.reset(new QSignalSpy(window, &EditWindow::changeVariant));
    return variants->isValid();
}

bool TestTabs::showWindow()
{
    return showAndActivate(window);
}

// Programs a and b open in two tabs of the shown window, b current.
bool TestTabs::openTabsOfTwoPrograms()
{
    if (!writeProgram(QStringLiteral("a"), "alpha\n") || !writeProgram(QStringLiteral("b"), "beta\n")
        || !makeWindow() || !showWindow())
        return false;
    window->addTextTab(QStringLiteral("a"));
    window->addTextTab(QStringLiteral("b"));
    return true;
}

// Programs a and b, and the window shown with the host's operations op1
// and op2 and its type t1.
bool TestTabs::showWindowOverTwoPrograms()
{
    if (!writeProgram(QStringLiteral("a"), "op1 a\n") || !writeProgram(QStringLiteral("b"), "op2 b\n")
        || !makeWindow())
        return false;
    HostTables tables({ "op1", "op2" }, { "t1" });
    window->tablesAnswer(&tables.operations, &tables.types);
    return showWindow();
}

// The values reported for one key, in order. Every report carries sync
// false and change true; a report that does not is returned as an invalid
// value, which no comparison accepts.
QList<QVariant> TestTabs::reported(const QString &key) const
{
    QList<QVariant> values;
    for (const QList<QVariant> &arguments : qAsConst(*variants)) {
        if (arguments.at(0).toString() != key)
            continue;
        const bool flagsRight = !arguments.at(2).toBool() && arguments.at(3).toBool();
        values << (flagsRight ? arguments.at(1) : QVariant());
    }
    return values;
}

// Types into the editor of a tab while it is the current one.
void TestTabs::typeInto(int index, const QString &text)
{
    tabs->setCurrentIndex(index);
    ZuSourceCode *editor = editorAt(index);
    QVERIFY(editor);
    QTest::keyClicks(editor, text);
}

// The editor's own highlighter; null when it has none or more than one,
// or when the window has one of its own.
QSyntaxHighlighter *TestTabs::highlighterOf(ZuSourceCode *editor) const
{
    if (!window->findChildren<QSyntaxHighlighter *>(QString(), Qt::FindDirectChildrenOnly).isEmpty())
        return nullptr;
    const QList<QSyntaxHighlighter *> own = editor->findChildren<QSyntaxHighlighter *>(QString(), Qt::FindDirectChildrenOnly);
    return own.size() == 1 ? own.first() : nullptr;
}

// The pages the tab widget holds, closed ones not yet deleted among them.
int TestTabs::pagesHeld() const
{
    auto *stack = tabs->findChild<QStackedWidget *>();
    return stack ? stack->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly).size() : -1;
}

// The host's menu asks for a name that has no file: the window asks what
// to make of it and returns at once. The question, once it is the active
// modal widget; null when none comes.
zuporzu *TestTabs::askForUnknownName(const QString &name)
{
    window->addProgListAndEdit(name);
    auto *dialog = window->findChild<zuporzu *>();
    if (!dialog || !QTest::qWaitFor([dialog] { return QApplication::activeModalWidget() == dialog; }, 5000))
        return nullptr;
    return dialog;
}

// The host starts the window as it starts the module: run() asks for the
// tables, which the host answers from a thread of its own, and then opens
// the programs remembered from the last session.
void TestTabs::runAsHost()
{
    HostTables tables({ "op1" }, { "t1" });
    ThreadedTablesHost host(window, tables.operations, tables.types);
    host.answerRequests();
    window->run();
    host.finish();
}

// <temp>/progs becomes the programs directory, holding program a, with
// programs beside it that a bad name could reach.
bool TestTabs::enterProgramsDirWithProgramA()
{
    return enterProgramsDirBesideVictims(tempDir.path()) && writeProgram(QStringLiteral("a"), "alpha\n");
}

// ---------------------------------------------------------------------------
// Opening and switching

void TestTabs::openingTabLoadsProgramAndRecordsOpenedList()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    clickTab(selector, 0);
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QVERIFY(button("editButton")->isEnabled());
    QVERIFY(!button("seacrhButton")->isEnabled());

    QWidget *page = window->addTextTab(QStringLiteral("a"));
    QVERIFY(page);
    QCOMPARE(tabs->count(), 1);
    QCOMPARE(tabs->tabText(0), QStringLiteral("a"));
    QCOMPARE(tabs->currentWidget(), page);
    ZuSourceCode *editor = editorOf(page);
    QVERIFY(editor);
    QCOMPARE(editor->objectName(), QStringLiteral("a"));
    QCOMPARE(editor->toPlainText(), QStringLiteral("alpha\n"));
    auto *layout = qobject_cast<QHBoxLayout *>(page->layout());
    QVERIFY(layout);
    QCOMPARE(layout->indexOf(editor), 0);

    // The program buttons were refreshed: the open program may not be
    // edited again, renamed or deleted.
    QVERIFY(!button("editButton")->isEnabled());
    QVERIFY(!button("renameButton")->isEnabled());
    QVERIFY(!button("delProgButton")->isEnabled());

    QVERIFY(!button("saveProgramButton")->isEnabled());
    QVERIFY(!button("saveAsProgramButton")->isEnabled());
    QVERIFY(!button("undoButton")->isEnabled());
    QVERIFY(!button("redoButton")->isEnabled());
    QVERIFY(button("compileProgramButton")->isEnabled());
    QVERIFY(button("seacrhButton")->isEnabled());
    QVERIFY(!button("seacrhButton")->isChecked());
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant> { QStringList { "a" } });
    QCOMPARE(reported(QStringLiteral("openedlist")).first().type(), QVariant::StringList);

    // The one completer works for the new editor.
    auto *completer = window->findChild<QCompleter *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(completer);
    QCOMPARE(completer->widget(), editor);

    // With the search on, the next tab turns it off again.
    QTest::mouseClick(button("seacrhButton"), Qt::LeftButton);
    QVERIFY(button("seacrhButton")->isChecked());
    QWidget *second = window->addTextTab(QStringLiteral("b"));
    QCOMPARE(tabs->currentWidget(), second);
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
    QCOMPARE(editorOf(second)->toPlainText(), QStringLiteral("beta\n"));
    QVERIFY(!button("seacrhButton")->isChecked());
    QVERIFY(button("seacrhButton")->isEnabled());
    QCOMPARE(reported(QStringLiteral("openedlist")),
             (QList<QVariant> { QStringList { "a" }, QStringList { "a", "b" } }));
    QCOMPARE(reported(QStringLiteral("openedtab")).last(), QVariant(QStringLiteral("b")));
    QCOMPARE(window->getOpenedList(), (QStringList { "a", "b" }));
    QCOMPARE(window->currTabName(), QStringLiteral("b"));
}

void TestTabs::eachProgramHasHighlighterAndCompleterFollowsCurrentTab()
{
    QVERIFY(showWindowOverTwoPrograms());

    ZuSourceCode *first = editorOf(window->addTextTab(QStringLiteral("a")));
    QVERIFY(first);
    QPointer<QSyntaxHighlighter> highlighter = highlighterOf(first);
    QVERIFY(highlighter);
    QCOMPARE(highlighter->document(), first->document());
    const QList<QCompleter *> completers = window->findChildren<QCompleter *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(completers.size(), 1);
    QPointer<QCompleter> completer = completers.first();
    QCOMPARE(completer->widget(), first);
    QCOMPARE(completer->caseSensitivity(), Qt::CaseSensitive);
    QVERIFY(!completer->wrapAround());
    QCOMPARE(completer->completionMode(), QCompleter::PopupCompletion);
    auto *model = qobject_cast<QStringListModel *>(completer->model());
    QVERIFY(model);
    QCOMPARE(model->stringList(), (QStringList { "op1", "op2", "t1" }));
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(first->document()->firstBlock(), 0), QColor(Qt::red), 2000);

    ZuSourceCode *second = editorOf(window->addTextTab(QStringLiteral("b")));
    QVERIFY(second);
    QCOMPARE(highlighterOf(first), highlighter.data());
    QPointer<QSyntaxHighlighter> secondHighlighter = highlighterOf(second);
    QVERIFY(secondHighlighter);
    QCOMPARE(secondHighlighter->document(), second->document());
    QCOMPARE(highlighter->document(), first->document());
    // Both colour by the one set of rules the window made.
    auto *firstSyntaxer = dynamic_cast<Syntaxer *>(highlighter.data());
    auto *secondSyntaxer = dynamic_cast<Syntaxer *>(secondHighlighter.data());
    QVERIFY(firstSyntaxer && secondSyntaxer);
    QCOMPARE(&firstSyntaxer->highRules(), &secondSyntaxer->highRules());
    QCOMPARE(window->findChildren<QCompleter *>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
    QVERIFY(completer);
    QCOMPARE(completer->widget(), second);
    QCOMPARE(model->stringList(), (QStringList { "op1", "op2", "t1" }));
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(second->document()->firstBlock(), 0), QColor(Qt::red), 2000);
    // A choice in the completer's list reaches the current editor.
    QVERIFY(takeCompletionLink(completer, second));
    window->changeCompleter(second);

    // Back to the first tab by its tab on the bar.
    clickTab(tabs, 0);
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(highlighterOf(first), highlighter.data());
    QCOMPARE(highlighterOf(second), secondHighlighter.data());
    QCOMPARE(completer->widget(), first);
    QVERIFY(takeCompletionLink(completer, first));
    QVERIFY(!takeCompletionLink(completer, second));
}

void TestTabs::currentTabSelectedAgainKeepsItsColours()
{
    QVERIFY(showWindowOverTwoPrograms());
    ZuSourceCode *editor = editorOf(window->addTextTab(QStringLiteral("a")));
    QVERIFY(editor);
    const QTextBlock line = editor->document()->firstBlock();
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(line, 0), QColor(Qt::red), 2000);

    // Asked for again, the open program's tab is selected again: its lines
    // are neither uncoloured nor laid out anew.
    QSignalSpy changes(editor->document(), &QTextDocument::contentsChange);
    QCOMPARE(editorOf(window->addTextTab(QStringLiteral("a"))), editor);
    QCOMPARE(colourAt(line, 0), QColor(Qt::red));
    QCOMPARE(changes.count(), 0);
}

// Colouring a program of megabytes again takes about a second. Each line
// is given formats no highlighter makes: a line coloured again would lose
// them.
void TestTabs::tabSwitchKeepsColoursWithoutRehighlighting()
{
    QVERIFY(showWindowOverTwoPrograms());
    // Each program is coloured as its tab shows it.
    ZuSourceCode *first = editorOf(window->addTextTab(QStringLiteral("a")));
    QVERIFY(first);
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(first->document()->firstBlock(), 0), QColor(Qt::red), 2000);
    ZuSourceCode *second = editorOf(window->addTextTab(QStringLiteral("b")));
    QVERIFY(second);
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(second->document()->firstBlock(), 0), QColor(Qt::red), 2000);
    QTextLayout::FormatRange marker;
    marker.start = 0;
    marker.length = 1;
    marker.format.setForeground(QColor(Qt::yellow));
    for (ZuSourceCode *editor : { first, second })
        editor->document()->firstBlock().layout()->setFormats({ marker });

    for (int i = 0; i < 4; ++i) {
        clickTab(tabs, i % 2);
        QCOMPARE(tabs->currentIndex(), i % 2);
        QCoreApplication::processEvents();
    }
    for (ZuSourceCode *editor : { first, second }) {
        QCOMPARE(editor->document()->firstBlock().layout()->formats().size(), 1);
        QCOMPARE(colourAt(editor->document()->firstBlock(), 0), QColor(Qt::yellow));
    }
}

void TestTabs::switchingTabsBindsButtonsToCurrentEditor()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(writeProgram(QStringLiteral("c"), "gamma\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("a"));
    window->addTextTab(QStringLiteral("b"));
    window->addTextTab(QStringLiteral("c"));
    typeInto(0, QStringLiteral("xx"));
    typeInto(1, QStringLiteral("yy"));
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("xxalpha\n"));
    QCOMPARE(editorAt(1)->toPlainText(), QStringLiteral("yybeta\n"));

    // The unmodified tab: nothing to save or undo.
    clickTab(tabs, 2);
    QCOMPARE(tabs->currentIndex(), 2);
    QVERIFY(!button("saveProgramButton")->isEnabled());
    QVERIFY(!button("saveAsProgramButton")->isEnabled());
    QVERIFY(!button("undoButton")->isEnabled());
    QVERIFY(!button("redoButton")->isEnabled());
    QVERIFY(button("compileProgramButton")->isEnabled());

    variants->clear();
    clickTab(tabs, 0);
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(reported(QStringLiteral("openedtab")), QList<QVariant> { QStringLiteral("a") });
    QVERIFY(button("saveProgramButton")->isEnabled());
    QVERIFY(button("saveAsProgramButton")->isEnabled());
    QVERIFY(button("undoButton")->isEnabled());
    QVERIFY(!button("redoButton")->isEnabled());

    // Save writes the current tab's program only.
    QTest::mouseClick(button("saveProgramButton"), Qt::LeftButton);
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("xxalpha\n"));
    QCOMPARE(programBytes(QStringLiteral("b")), QByteArray("beta\n"));
    QVERIFY(!writtenSinceCreated(QStringLiteral("b")));
    QVERIFY(!writtenSinceCreated(QStringLiteral("c")));
    QVERIFY(!editorAt(0)->isChanged());
    QVERIFY(editorAt(1)->isChanged());
    QVERIFY(!button("saveProgramButton")->isEnabled());

    // Undo and redo act on the current tab's text only.
    clickTab(tabs, 1);
    QCOMPARE(reported(QStringLiteral("openedtab")).last(), QVariant(QStringLiteral("b")));
    QVERIFY(button("saveProgramButton")->isEnabled());
    QTest::mouseClick(button("undoButton"), Qt::LeftButton);
    QCOMPARE(editorAt(1)->toPlainText(), QStringLiteral("beta\n"));
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("xxalpha\n"));
    QVERIFY(button("redoButton")->isEnabled());
    QTest::mouseClick(button("redoButton"), Qt::LeftButton);
    QCOMPARE(editorAt(1)->toPlainText(), QStringLiteral("yybeta\n"));
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("xxalpha\n"));
    QCOMPARE(programBytes(QStringLiteral("b")), QByteArray("beta\n"));
}

void TestTabs::tabChangedWithoutTabChangesNothing()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());

    // No tab at all.
    variants->clear();
    window->tabChanged(-1);
    QCOMPARE(variants->count(), 0);
    QVERIFY(!button("saveProgramButton")->isEnabled());
    QVERIFY(!button("compileProgramButton")->isEnabled());

    // A modified tab keeps its buttons and its wiring.
    window->addTextTab(QStringLiteral("a"));
    typeInto(0, QStringLiteral("zz"));
    window->setEditButtons(0, 1, 0, 1, 0);
    variants->clear();
    window->tabChanged(-1);
    QWidget stray;
    window->tabChanged(&stray);
    QCOMPARE(variants->count(), 0);
    QVERIFY(!button("saveProgramButton")->isEnabled());
    QVERIFY(button("saveAsProgramButton")->isEnabled());
    QVERIFY(!button("undoButton")->isEnabled());
    QVERIFY(button("redoButton")->isEnabled());
    QVERIFY(!button("compileProgramButton")->isEnabled());

    // The current page itself does set the buttons from its editor.
    window->tabChanged(tabs->currentWidget());
    QVERIFY(button("saveProgramButton")->isEnabled());
    QVERIFY(button("undoButton")->isEnabled());
    QVERIFY(!button("redoButton")->isEnabled());
    QVERIFY(button("compileProgramButton")->isEnabled());
    QCOMPARE(reported(QStringLiteral("openedtab")), QList<QVariant> { QStringLiteral("a") });
}

// ---------------------------------------------------------------------------
// Closing

void TestTabs::closingUnmodifiedTabAsksNothing()
{
    QVERIFY(openTabsOfTwoPrograms());
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);
    variants->clear();

    QAbstractButton *close = closeButtonOf(tabs, 0);
    QVERIFY(close);
    QTest::mouseClick(close, Qt::LeftButton);

    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QVERIFY(answerer.shown.isEmpty());
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant> { QStringList { "b" } });
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
    QVERIFY(!writtenSinceCreated(QStringLiteral("a")));
    QVERIFY(button("seacrhButton")->isEnabled());
}

void TestTabs::closingModifiedTabAsksToSave_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("titlesAfter");
    QTest::addColumn<QByteArray>("fileAfter");
    QTest::newRow("yes saves and closes")
        << int(QMessageBox::Yes) << QStringList { "b" } << QByteArray("zzalpha\n");
    QTest::newRow("no discards and closes")
        << int(QMessageBox::No) << QStringList { "b" } << QByteArray("alpha\n");
    QTest::newRow("cancel keeps the tab")
        << int(QMessageBox::Cancel) << QStringList { "a", "b" } << QByteArray("alpha\n");
}

void TestTabs::closingModifiedTabAsksToSave()
{
    QFETCH(int, answer);
    QFETCH(QStringList, titlesAfter);
    QFETCH(QByteArray, fileAfter);

    QVERIFY(openTabsOfTwoPrograms());
    typeInto(0, QStringLiteral("zz"));
    clickTab(tabs, 1);
    BoxAnswerer answerer { QMessageBox::StandardButton(answer), BoxAnswerer::AcceptInputs };
    variants->clear();

    QTest::mouseClick(closeButtonOf(tabs, 0), Qt::LeftButton);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, attentionTitle);
    QCOMPARE(answerer.shown.first().text,
             QStringLiteral("Текст программы a был изменен.\n\nСохранить изменения?"));
    QCOMPARE(answerer.shown.first().buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    QCOMPARE(tabTexts(tabs), titlesAfter);
    QCOMPARE(programBytes(QStringLiteral("a")), fileAfter);
    // The open programs are recorded also when the close was refused.
    QCOMPARE(reported(QStringLiteral("openedlist")).last(), QVariant(titlesAfter));
    QCOMPARE(programBytes(QStringLiteral("b")), QByteArray("beta\n"));
}

void TestTabs::closingLastTabDisablesButtonsAndDropsHelpers()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    ZuSourceCode *editor = editorOf(window->addTextTab(QStringLiteral("a")));
    QVERIFY(editor);
    QPointer<QSyntaxHighlighter> highlighter = highlighterOf(editor);
    QPointer<QCompleter> completer = window->findChild<QCompleter *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(highlighter);
    QVERIFY(completer);
    QTest::mouseClick(button("seacrhButton"), Qt::LeftButton);
    QVERIFY(button("seacrhButton")->isChecked());
    QVERIFY(window->searchPanel()->isVisible());
    QVERIFY(button("compileProgramButton")->isEnabled());
    variants->clear();

    QTest::mouseClick(closeButtonOf(tabs, 0), Qt::LeftButton);
    // The highlighter goes with the editor's page.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QCOMPARE(tabs->count(), 0);
    QCOMPARE(tabs->currentIndex(), -1);
    for (const char *name : { "saveProgramButton", "saveAsProgramButton", "undoButton", "redoButton",
                              "compileProgramButton", "seacrhButton" })
        QVERIFY2(!button(name)->isEnabled(), name);
    QVERIFY(!button("seacrhButton")->isChecked());
    QVERIFY(!window->searchPanel()->isVisible());
    QVERIFY(highlighter.isNull());
    QVERIFY(completer.isNull());
    QCOMPARE(window->findChildren<QCompleter *>(QString(), Qt::FindDirectChildrenOnly).size(), 0);
    QCOMPARE(window->findChildren<QSyntaxHighlighter *>().size(), 0);
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant> { QStringList() });
    QCOMPARE(window->currTabName(), QString());
    QCOMPARE(window->getOpenedList(), QStringList());
    // The program list shows the program as closed again.
    QVERIFY(button("editButton")->isEnabled());
}

void TestTabs::reopenedFirstTabGetsFreshHelpersListingEachNameOnce()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "op1 t1\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "op2 b\n"));
    QVERIFY(makeWindow());
    // The host lists op2 both as an operation and as a type.
    HostTables tables({ "op1", "op2" }, { "t1", "op2" });
    window->tablesAnswer(&tables.operations, &tables.types);
    const QStringList operations { "op1", "op2" };
    const QStringList types { "t1", "op2" };
    const QStringList names { "op1", "op2", "t1" };
    QCOMPARE(window->operationNames(), operations);
    QCOMPARE(window->typeNames(), types);
    QVERIFY(showWindow());

    QPointer<ZuSourceCode> first = editorOf(window->addTextTab(QStringLiteral("a")));
    window->addTextTab(QStringLiteral("b"));
    QVERIFY(first);
    QPointer<QSyntaxHighlighter> highlighter = highlighterOf(first);
    QPointer<QCompleter> completer = window->findChild<QCompleter *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(highlighter);
    QVERIFY(completer);
    QCOMPARE(qobject_cast<QStringListModel *>(completer->model())->stringList(), names);
    QCOMPARE(window->operationNames(), operations);
    QCOMPARE(window->typeNames(), types);

    // Closing one of two tabs keeps the other's highlighter and the completer.
    window->tabClose(1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(highlighter);
    QVERIFY(completer);
    window->tabClose(0);
    QVERIFY(completer.isNull());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(first.isNull());
    QVERIFY(highlighter.isNull());

    ZuSourceCode *again = editorOf(window->addTextTab(QStringLiteral("a")));
    QVERIFY(again);
    QSyntaxHighlighter *freshHighlighter = highlighterOf(again);
    QVERIFY(freshHighlighter);
    QCOMPARE(freshHighlighter->document(), again->document());
    const QList<QCompleter *> completers = window->findChildren<QCompleter *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(completers.size(), 1);
    QCOMPARE(completers.first()->widget(), again);
    auto *model = qobject_cast<QStringListModel *>(completers.first()->model());
    QVERIFY(model);
    QCOMPARE(model->stringList(), names);
    QCOMPARE(window->operationNames(), operations);
    QCOMPARE(window->typeNames(), types);

    // The operation is red and bold, the type blue and of normal weight.
    const QTextBlock line = again->document()->firstBlock();
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(line, 0), QColor(Qt::red), 2000);
    QCOMPARE(formatAt(line, 0).fontWeight(), int(QFont::Bold));
    QCOMPARE(colourAt(line, 4), QColor(Qt::blue));
    QCOMPARE(formatAt(line, 4).fontWeight(), int(QFont::Normal));
    QVERIFY(button("seacrhButton")->isEnabled());
}

// The rules were made with the first tab, and outlive it.
void TestTabs::closingFirstTabKeepsTheOtherColoured()
{
    QVERIFY(showWindowOverTwoPrograms());

    QPointer<ZuSourceCode> first = editorOf(window->addTextTab(QStringLiteral("a")));
    QVERIFY(first);
    QPointer<QSyntaxHighlighter> firstHighlighter = highlighterOf(first);
    QVERIFY(firstHighlighter);
    ZuSourceCode *second = editorOf(window->addTextTab(QStringLiteral("b")));
    QVERIFY(second);
    QPointer<QSyntaxHighlighter> highlighter = highlighterOf(second);
    QVERIFY(highlighter);

    QTest::mouseClick(closeButtonOf(tabs, 0), Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QVERIFY(first.isNull());
    QVERIFY(firstHighlighter.isNull());
    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QCOMPARE(highlighterOf(second), highlighter.data());
    QCOMPARE(highlighter->document(), second->document());
    // What is typed into the remaining tab is coloured.
    typeInto(0, QStringLiteral("t1 "));
    const QTextBlock line = second->document()->firstBlock();
    QCOMPARE(line.text(), QStringLiteral("t1 op2 b"));
    QTRY_COMPARE_WITH_TIMEOUT(colourAt(line, 0), QColor(Qt::blue), 2000);
    QCOMPARE(colourAt(line, 3), QColor(Qt::red));
}

void TestTabs::closedTabEditorStopsWatchingItsFile()
{
    QVERIFY(openTabsOfTwoPrograms());
    BoxAnswerer answerer(QMessageBox::No);

    QTest::mouseClick(closeButtonOf(tabs, 0), Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    // Both programs change outside before the event loop runs again, the
    // closed one first: its editor is still there until then.
    QVERIFY(writeFile(QStringLiteral("a.zu"), "changed a\n"));
    QVERIFY(writeFile(QStringLiteral("b.zu"), "changed b\n"));

    // The open program's question shows that notifications do arrive.
    QTRY_VERIFY_WITH_TIMEOUT(answerer.texts().contains(changedOutsideQuestion(QStringLiteral("b"))), watcherTimeout);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    deliverPending();
    QStringList asked = answerer.texts();
    asked.removeDuplicates();
    QCOMPARE(asked, QStringList { changedOutsideQuestion(QStringLiteral("b")) });
}

void TestTabs::closedTabPageAndEditorAreDeleted()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    QPointer<QWidget> page = window->addTextTab(QStringLiteral("a"));
    QPointer<ZuSourceCode> editor = editorOf(page);
    QVERIFY(editor);
    window->addTextTab(QStringLiteral("b"));

    QTest::mouseClick(closeButtonOf(tabs, 0), Qt::LeftButton);

    // A close may be asked for from inside the editor's own slot: the page
    // goes once the event loop deletes it.
    QVERIFY(editor);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(editor.isNull());
    QVERIFY(page.isNull());
    QCOMPARE(window->findChildren<ZuSourceCode *>().size(), 1);
    QCOMPARE(pagesHeld(), 1);
}

void TestTabs::reopeningProgramManyTimesLeavesNoEditorsBehind()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("b"));
    clickTab(selector, 0);
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QPushButton *edit = button("editButton");
    QVERIFY(edit->isEnabled());
    const int editors = window->findChildren<ZuSourceCode *>().size();
    const int pages = pagesHeld();
    const int documents = window->findChildren<QTextDocument *>().size();
    QCOMPARE(editors, 1);
    QCOMPARE(pages, 1);

    for (int i = 0; i < 500; ++i) {
        QTest::mouseClick(edit, Qt::LeftButton);
        QCOMPARE(tabTexts(tabs), (QStringList { "b", "a" }));
        QTest::mouseClick(closeButtonOf(tabs, 1), Qt::LeftButton);
        // What the event loop does between two clicks.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QCOMPARE(window->findChildren<ZuSourceCode *>().size(), editors);
    QCOMPARE(pagesHeld(), pages);
    QCOMPARE(window->findChildren<QTextDocument *>().size(), documents);
}

// ---------------------------------------------------------------------------
// Lookups by name

void TestTabs::programOpensInOneTabOnly()
{
    QVERIFY(openTabsOfTwoPrograms());
    QWidget *first = tabs->widget(0);
    QVERIFY(editorOf(first));
    typeInto(0, QStringLiteral("zz"));
    tabs->setCurrentIndex(1);
    variants->clear();

    // Asked again, the program's tab comes forward as it is; no second
    // editor reads the file.
    QCOMPARE(window->addTextTab(QStringLiteral("a")), first);
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
    QCOMPARE(tabs->currentWidget(), first);
    QCOMPARE(window->findChildren<ZuSourceCode *>().size(), 2);
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("zzalpha\n"));
    QVERIFY(editorAt(0)->isChanged());
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant>());
    QCOMPARE(reported(QStringLiteral("openedtab")).last(), QVariant(QStringLiteral("a")));
    QCOMPARE(window->getOpenedList(), (QStringList { "a", "b" }));

    // Every lookup by name finds that one tab.
    tabs->setCurrentIndex(1);
    QVERIFY(window->alreadyOpen(QStringLiteral("a")));
    QCOMPARE(tabs->currentWidget(), first);
    tabs->setCurrentIndex(1);
    QVERIFY(window->findOpenTab(QStringLiteral("a")));
    QCOMPARE(tabs->currentWidget(), first);
    tabs->setCurrentIndex(1);
    window->switchOrLoad(QStringLiteral("a"));
    QCOMPARE(tabs->currentWidget(), first);
    QCOMPARE(tabs->count(), 2);

    // Closed by name, the program has no tab left.
    BoxAnswerer answerer(QMessageBox::No);
    window->tabClose(QStringLiteral("a"));
    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QVERIFY(!window->findOpenTab(QStringLiteral("a")));
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
}

void TestTabs::namesDifferingInCaseAreDifferentTabs()
{
    QVERIFY(writeProgram(QStringLiteral("Alpha"), "upper\n"));
    QVERIFY(writeProgram(QStringLiteral("alpha"), "lower\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("Alpha"));
    window->addTextTab(QStringLiteral("alpha"));
    QCOMPARE(tabTexts(tabs), (QStringList { "Alpha", "alpha" }));
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("upper\n"));
    QCOMPARE(editorAt(1)->toPlainText(), QStringLiteral("lower\n"));

    QVERIFY(!window->findOpenTab(QStringLiteral("ALPHA")));
    QVERIFY(!window->alreadyOpen(QStringLiteral("ALPHA")));
    QCOMPARE(tabs->currentIndex(), 1);
    QVERIFY(window->findOpenTab(QStringLiteral("Alpha")));
    QCOMPARE(tabs->currentIndex(), 0);
    QVERIFY(window->findOpenTab(QStringLiteral("alpha")));
    QCOMPARE(tabs->currentIndex(), 1);

    window->tabClose(QStringLiteral("ALPHA"));
    QCOMPARE(tabs->count(), 2);
    window->tabClose(QStringLiteral("Alpha"));
    QCOMPARE(tabTexts(tabs), QStringList { "alpha" });
}

void TestTabs::switchOrLoadGoesToOpensOrIgnores()
{
    // Project p lists "a" and "q"; q has no file, so only the project
    // knows it. c is only in the program list.
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(writeProgram(QStringLiteral("c"), "gamma\n"));
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), "a.zu\nq.zu\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "q" }));
    QVERIFY(!itemNamed(programs, QStringLiteral("q")));
    window->addTextTab(QStringLiteral("a"));
    window->addTextTab(QStringLiteral("b"));
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);

    // An open program comes forward, its editor ready for typing.
    variants->clear();
    window->switchOrLoad(QStringLiteral("a"));
    QCOMPARE(tabs->currentIndex(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), static_cast<QWidget *>(editorAt(0)), 2000);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(reported(QStringLiteral("openedtab")).last(), QVariant(QStringLiteral("a")));

    // A program of the program list opens.
    window->switchOrLoad(QStringLiteral("c"));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b", "c" }));
    QCOMPARE(tabs->currentIndex(), 2);
    QCOMPARE(editorAt(2)->toPlainText(), QStringLiteral("gamma\n"));
    QVERIFY(answerer.shown.isEmpty());

    // A program of the current project opens, file or not.
    window->switchOrLoad(QStringLiteral("q"));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b", "c", "q" }));
    QCOMPARE(tabs->currentIndex(), 3);
    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, QStringLiteral("Ошибка открытия файла"));

    // A name nobody knows does nothing.
    variants->clear();
    window->switchOrLoad(QStringLiteral("nowhere"));
    window->switchOrLoad(QStringLiteral("A"));
    QCOMPARE(tabs->count(), 4);
    QCOMPARE(tabs->currentIndex(), 3);
    QCOMPARE(variants->count(), 0);
    QCOMPARE(answerer.shown.size(), 1);
}

void TestTabs::renamedTabSavesUnderNewName()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());

    // Without tabs there is nothing to rename.
    window->setEditTabName(QStringLiteral("nothing"));
    QCOMPARE(window->currTabName(), QString());
    QCOMPARE(tabs->count(), 0);

    window->addTextTab(QStringLiteral("a"));
    window->addTextTab(QStringLiteral("b"));
    typeInto(0, QStringLiteral("zz"));
    window->setEditTabName(QStringLiteral("renamed"));
    QCOMPARE(tabTexts(tabs), (QStringList { "renamed", "b" }));
    QCOMPARE(window->currTabName(), QStringLiteral("renamed"));
    QCOMPARE(window->getOpenedList(), (QStringList { "renamed", "b" }));
    QCOMPARE(editorAt(0)->objectName(), QStringLiteral("renamed"));
    QVERIFY(window->findOpenTab(QStringLiteral("renamed")));
    QVERIFY(!window->findOpenTab(QStringLiteral("a")));

    QTest::mouseClick(button("saveProgramButton"), Qt::LeftButton);
    QCOMPARE(programBytes(QStringLiteral("renamed")), QByteArray("zzalpha\n"));
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
    QVERIFY(!writtenSinceCreated(QStringLiteral("a")));
}

void TestTabs::saveAsThroughButtonRenamesTab()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("a"));
    typeInto(0, QStringLiteral("zz"));
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs, QStringLiteral("copy"));

    QTest::mouseClick(button("saveAsProgramButton"), Qt::LeftButton);

    QCOMPARE(answerer.inputs, 1);
    QVERIFY(answerer.shown.isEmpty());
    QCOMPARE(tabTexts(tabs), QStringList { "copy" });
    QCOMPARE(window->currTabName(), QStringLiteral("copy"));
    QCOMPARE(editorAt(0)->objectName(), QStringLiteral("copy"));
    QCOMPARE(programBytes(QStringLiteral("copy")), QByteArray("zzalpha\n"));
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
    QVERIFY(!button("saveProgramButton")->isEnabled());
}

// ---------------------------------------------------------------------------
// Requests from the lists and from the host

void TestTabs::editButtonOpensCurrentProgram()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    clickTab(selector, 0);
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("b"));
    QPushButton *edit = button("editButton");
    QVERIFY(edit->isEnabled());

    QTest::mouseClick(edit, Qt::LeftButton);

    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("beta\n"));
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant> { QStringList { "b" } });
    // The open program cannot be opened a second time from the list.
    QVERIFY(!edit->isEnabled());

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QVERIFY(edit->isEnabled());
    QTest::mouseClick(edit, Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "a" }));
    QCOMPARE(tabs->currentIndex(), 1);
}

void TestTabs::hostMenuOpensProgramOnlyOnce()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    QVERIFY(!window->isVisible());
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);

    window->addProgListAndEdit(QStringLiteral("a"));
    QVERIFY(window->isVisible());
    QCOMPARE(tabTexts(tabs), QStringList { "a" });
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("alpha\n"));

    window->addProgListAndEdit(QStringLiteral("b"));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
    QCOMPARE(tabs->currentIndex(), 1);

    // Asked again, the program's tab comes forward.
    window->addProgListAndEdit(QStringLiteral("a"));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(itemTexts(programs), (QStringList { "a", "b" }));
    QVERIFY(answerer.shown.isEmpty());
    QVERIFY(!window->findChild<QDialog *>(QStringLiteral("zuporzu")));
}

void TestTabs::hostMenuOpensProjectPrograms()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(writeProgram(QStringLiteral("c"), "gamma\n"));
    QVERIFY(writeAgedFile(QStringLiteral("o.zup"), "c.zu\n"));
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), "a.zu\nb.zu\n"));
    QVERIFY(makeWindow());
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("o"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "c" });

    window->addProgListAndEdit(QStringLiteral("p"));

    QVERIFY(window->isVisible());
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
    QVERIFY(itemNamed(programs, QStringLiteral("p")));
    QVERIFY(!window->findChild<QDialog *>(QStringLiteral("zuporzu")));

    // Asked again, no program opens twice.
    window->addProgListAndEdit(QStringLiteral("p"));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
}

void TestTabs::hostMenuUnknownNameAsksAndCreatesProgram()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());

    // The request returns at once; the question stays open.
    QPointer<zuporzu> dialog = askForUnknownName(QStringLiteral("fresh"));
    QVERIFY(dialog);
    QVERIFY(window->isVisible());
    QVERIFY(itemNamed(programs, QStringLiteral("fresh")));
    QCOMPARE(tabs->count(), 0);
    QVERIFY(!QFile::exists(QStringLiteral("fresh.zu")));
    QVERIFY(dialog->isVisible());
    QVERIFY(dialog->isModal());
    auto *programChoice = dialog->findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
    QVERIFY(programChoice);
    QCOMPARE(programChoice->text(), QStringLiteral("новую программу"));

    QVERIFY(answerWithProgram(dialog, QDialogButtonBox::Ok));

    QVERIFY(questionGoesAway(dialog));
    QVERIFY(QFile::exists(QStringLiteral("fresh.zu")));
    QCOMPARE(QFileInfo(QStringLiteral("fresh.zu")).size(), qint64(0));
    QVERIFY(!QFile::exists(QStringLiteral("fresh.zup")));
    QCOMPARE(tabTexts(tabs), QStringList { "fresh" });
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(editorAt(0)->toPlainText(), QString());
    QVERIFY(!editorAt(0)->isChanged());
}

void TestTabs::hostMenuUnknownNameCancelledCreatesNothing()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    QPointer<zuporzu> dialog = askForUnknownName(QStringLiteral("fresh"));
    QVERIFY(dialog);

    QVERIFY(answerWithProgram(dialog, QDialogButtonBox::Cancel));

    QVERIFY(questionGoesAway(dialog));
    QVERIFY(!QFile::exists(QStringLiteral("fresh.zu")));
    QVERIFY(!QFile::exists(QStringLiteral("fresh.zup")));
    QCOMPARE(tabs->count(), 0);
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant>());
}

void TestTabs::hostMenuProgramWrittenMeanwhileOpensUnchanged()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    QPointer<zuporzu> dialog = askForUnknownName(QStringLiteral("fresh"));
    QVERIFY(dialog);
    // Another tool makes the program while the question is open.
    QVERIFY(writeFile(QStringLiteral("fresh.zu"), "made outside\n"));

    QVERIFY(answerWithProgram(dialog, QDialogButtonBox::Ok));

    QVERIFY(questionGoesAway(dialog));
    QCOMPARE(programBytes(QStringLiteral("fresh")), QByteArray("made outside\n"));
    QCOMPARE(tabTexts(tabs), QStringList { "fresh" });
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("made outside\n"));
    QVERIFY(!editorAt(0)->isChanged());
}

void TestTabs::hostMenuBadNameIsRefusedWithOneBox_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("into parent") << QStringLiteral("../victim") << separatorNameReason();
    QTest::newRow("absolute") << QStringLiteral("<root>/abs/victim") << separatorNameReason();
    QTest::newRow("empty") << QString() << emptyNameReason();
    QTest::newRow("dot-dot") << QStringLiteral("..") << directoryNameReason();
    QTest::newRow("control character") << QStringLiteral("a\x01" "b") << controlCharacterReason();
    QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) + QStringLiteral("b") << controlCharacterReason();
    QTest::newRow("300 characters") << QString(300, QLatin1Char('n')) << tooLongNameReason();
}

// The host's menu asks for a name that is not one file name in the programs
// directory: one box says why, and no question, file, list item or tab
// comes of it.
void TestTabs::hostMenuBadNameIsRefusedWithOneBox()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    QVERIFY(enterProgramsDirWithProgramA());
    name.replace(QLatin1String("<root>"), tempDir.path());
    QVERIFY(makeWindow());
    BoxAnswerer answerer(QMessageBox::Ok);

    window->addProgListAndEdit(name);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, attentionTitle);
    QCOMPARE(answerer.shown.first().icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(answerer.shown.first().text, refusedNameBoxText(name, reason));
    QVERIFY(!window->findChild<zuporzu *>());
    QCOMPARE(tabs->count(), 0);
    QCOMPARE(itemTexts(programs), QStringList { "a" });
    QCOMPARE(entriesOf(), QStringList { "a.zu" });
    QCOMPARE(reported(QStringLiteral("openedlist")), QList<QVariant>());
    QCOMPARE(victimsChanged(tempDir.path()), QString());
}

void TestTabs::runReopensRememberedTabs()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(writeProgram(QStringLiteral("c"), "gamma\n"));
    QVERIFY(makeWindow());
    rememberOpenedTabs(plugin, QStringList { "b", "a" }, QStringLiteral("a"));
    QCOMPARE(window->storedOpenedList(), (QStringList { "b", "a" }));
    QCOMPARE(window->storedOpenedTab(), QStringLiteral("a"));

    QSignalSpy requests(window, &EditWindow::tablesRequest);
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);
    variants->clear();

    runAsHost();

    QCOMPARE(requests.count(), 1);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "a" }));
    QCOMPARE(tabs->currentIndex(), 1);
    QCOMPARE(window->currTabName(), QStringLiteral("a"));
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("beta\n"));
    QCOMPARE(editorAt(1)->toPlainText(), QStringLiteral("alpha\n"));
    QVERIFY(answerer.shown.isEmpty());
    QCOMPARE(reported(QStringLiteral("openedlist")),
             (QList<QVariant> { QStringList { "b" }, QStringList { "b", "a" } }));
    QCOMPARE(reported(QStringLiteral("openedtab")).last(), QVariant(QStringLiteral("a")));
    // The tables were in place before the first tab made the completer.
    auto *completer = window->findChild<QCompleter *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(completer);
    QCOMPARE(qobject_cast<QStringListModel *>(completer->model())->stringList(), (QStringList { "op1", "t1" }));
    QCOMPARE(completer->widget(), editorAt(1));
}

// A program remembered twice opens in one tab.
void TestTabs::runOpensRememberedProgramInOneTab()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    rememberOpenedTabs(plugin, QStringList { "a", "a", "b" }, QStringLiteral("a"));
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);
    variants->clear();

    runAsHost();

    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b" }));
    QCOMPARE(window->currTabName(), QStringLiteral("a"));
    QCOMPARE(window->findChildren<ZuSourceCode *>().size(), 2);
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("alpha\n"));
    QCOMPARE(editorAt(1)->toPlainText(), QStringLiteral("beta\n"));
    QVERIFY(answerer.shown.isEmpty());
    QCOMPARE(reported(QStringLiteral("openedlist")),
             (QList<QVariant> { QStringList { "a" }, QStringList { "a", "b" } }));
}

void TestTabs::runSkipsRememberedProgramWithoutFile()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    rememberOpenedTabs(plugin, QStringList { "gone", "a" }, QStringLiteral("gone"));

    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);

    runAsHost();

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, QStringLiteral("Ошибка открытия файла"));
    QCOMPARE(answerer.shown.first().text, QStringLiteral("gone\nNo such file or directory"));
    QCOMPARE(tabTexts(tabs), QStringList { "a" });
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("alpha\n"));
    QVERIFY(!QFile::exists(QStringLiteral("gone.zu")));
}

// Several remembered programs without files, and a bad name: one box for
// all of them, and tabs for the programs that are there.
void TestTabs::runNamesUnreadableRememberedProgramsInOneBox()
{
    QVERIFY(enterProgramsDirWithProgramA());
    QVERIFY(makeWindow());
    rememberOpenedTabs(plugin, QStringList { "gone", "a", "../victim", "lost" }, QStringLiteral("a"));
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);

    runAsHost();

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, attentionTitle);
    QCOMPARE(answerer.shown.first().text,
             skippedNamesBoxText(1, { "../victim" }) + QStringLiteral("\n\n")
                 + unreadProgramsBoxText(2, { "gone: No such file or directory",
                                              "lost: No such file or directory" }));
    QCOMPARE(tabTexts(tabs), QStringList { "a" });
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("alpha\n"));
    QCOMPARE(entriesOf(), QStringList { "a.zu" });
    QCOMPARE(victimsChanged(tempDir.path()), QString());
}

void TestTabs::runSkipsBadRememberedNamesWithOneBox_data()
{
    QTest::addColumn<QStringList>("remembered");
    QTest::addColumn<int>("skipped");
    QTest::addColumn<QStringList>("shownNames");

    QTest::newRow("outside the directory") << QStringList { "../victim", "a", "<root>/abs/victim" } << 2
                                           << QStringList { "../victim", "<root>/abs/victim" };
    QTest::newRow("empty, dots and too long")
        << QStringList { "", ".", "a", "..", QString(300, QLatin1Char('n')) } << 4
        << QStringList { "", ".", "..", QString(300, QLatin1Char('n')) };
    const QString nul = QStringLiteral("nul") + QChar(0);
    QTest::newRow("control characters") << QStringList { "tab\there", "a", nul, "line\nbreak" } << 3
                                        << QStringList { "tab\there", nul, "line\nbreak" };
    QStringList many;
    for (int i = 1; i <= 25; ++i)
        many << QStringLiteral("../victim%1").arg(i);
    QTest::newRow("more than twenty") << (QStringList(many) << "a") << 25 << QStringList(many.mid(0, 20));
}

// The programs remembered from the last session are opened again, but a
// name that is not one file name in the programs directory is skipped, and
// one box names all that were.
void TestTabs::runSkipsBadRememberedNamesWithOneBox()
{
    QFETCH(QStringList, remembered);
    QFETCH(int, skipped);
    QFETCH(QStringList, shownNames);
    QVERIFY(enterProgramsDirWithProgramA());
    remembered.replaceInStrings(QStringLiteral("<root>"), tempDir.path());
    shownNames.replaceInStrings(QStringLiteral("<root>"), tempDir.path());
    QVERIFY(makeWindow());
    rememberOpenedTabs(plugin, remembered, QStringLiteral("a"));
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);

    runAsHost();

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, attentionTitle);
    QCOMPARE(answerer.shown.first().icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.first().buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(answerer.shown.first().text, skippedNamesBoxText(skipped, shownNames));
    QCOMPARE(tabTexts(tabs), QStringList { "a" });
    QCOMPARE(window->findChildren<ZuSourceCode *>().size(), 1);
    QCOMPARE(editorAt(0)->toPlainText(), QStringLiteral("alpha\n"));
    QCOMPARE(entriesOf(), QStringList { "a.zu" });
    QCOMPARE(victimsChanged(tempDir.path()), QString());
}

// ---------------------------------------------------------------------------
// Exit and saving

void TestTabs::canExitWithoutTabsAgrees()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);
    QVERIFY(window->canExit());
    QVERIFY(answerer.shown.isEmpty());

    // Unmodified tabs agree without a question as well.
    window->addTextTab(QStringLiteral("a"));
    QVERIFY(window->canExit());
    QVERIFY(answerer.shown.isEmpty());
    QCOMPARE(tabs->count(), 1);
}

void TestTabs::canExitCancelStopsAtFirstRefusal()
{
    for (const char *name : { "a", "b", "c" })
        QVERIFY(writeProgram(QLatin1String(name), "text\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    for (const char *name : { "a", "b", "c" })
        window->addTextTab(QLatin1String(name));
    typeInto(1, QStringLiteral("x"));
    typeInto(2, QStringLiteral("y"));
    tabs->setCurrentIndex(0);
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);

    QVERIFY(!window->canExit());

    QCOMPARE(answerer.texts(), QStringList { QStringLiteral("Текст программы b был изменен.\n\nСохранить изменения?") });
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b", "c" }));
    QVERIFY(editorAt(1)->isChanged());
    QVERIFY(editorAt(2)->isChanged());
    for (const char *name : { "a", "b", "c" })
        QVERIFY2(!writtenSinceCreated(QLatin1String(name)), name);
}

void TestTabs::canExitDiscardingAsksEveryModifiedTab()
{
    for (const char *name : { "a", "b", "c" })
        QVERIFY(writeProgram(QLatin1String(name), "text\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    for (const char *name : { "a", "b", "c" })
        window->addTextTab(QLatin1String(name));
    typeInto(0, QStringLiteral("x"));
    typeInto(2, QStringLiteral("y"));
    BoxAnswerer answerer(QMessageBox::No, BoxAnswerer::AcceptInputs);

    QVERIFY(window->canExit());

    QCOMPARE(answerer.texts(),
             (QStringList { QStringLiteral("Текст программы a был изменен.\n\nСохранить изменения?"),
                            QStringLiteral("Текст программы c был изменен.\n\nСохранить изменения?") }));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b", "c" }));
    for (const char *name : { "a", "b", "c" })
        QCOMPARE(programBytes(QLatin1String(name)), QByteArray("text\n"));
}

void TestTabs::saveBeforeRunWithAutoSaveOffSavesNothing()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(makeWindow());
    SettingElement autoSave;
    autoSave.key = QStringLiteral("AutoSaveOnExec");
    autoSave.value = false;
    plugin->exchangeSettings({ autoSave }, nullptr, nullptr);
    QVERIFY(!window->isAutoSaveOnExec());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("a"));
    typeInto(0, QStringLiteral("zz"));
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);

    window->saveFileIfChanged(QStringLiteral("a"));

    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
    QVERIFY(!writtenSinceCreated(QStringLiteral("a")));
    QVERIFY(editorAt(0)->isChanged());
    QVERIFY(button("saveProgramButton")->isEnabled());
    QVERIFY(answerer.shown.isEmpty());
}

void TestTabs::saveBeforeRunWithAutoSaveOnSavesNamedProgram()
{
    QVERIFY(writeProgram(QStringLiteral("a"), "alpha\n"));
    QVERIFY(writeProgram(QStringLiteral("b"), "beta\n"));
    QVERIFY(makeWindow());
    SettingElement autoSave;
    autoSave.key = QStringLiteral("AutoSaveOnExec");
    autoSave.value = true;
    plugin->exchangeSettings({ autoSave }, nullptr, nullptr);
    QVERIFY(window->isAutoSaveOnExec());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("a"));
    window->addTextTab(QStringLiteral("b"));
    typeInto(0, QStringLiteral("xx"));
    typeInto(1, QStringLiteral("yy"));
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);

    // "a" is not the current tab: it comes forward and is saved alone.
    window->saveFileIfChanged(QStringLiteral("a"));

    QVERIFY(answerer.shown.isEmpty());
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("xxalpha\n"));
    QVERIFY(!editorAt(0)->isChanged());
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(programBytes(QStringLiteral("b")), QByteArray("beta\n"));
    QVERIFY(editorAt(1)->isChanged());

    // A name that is not open saves nothing.
    window->saveFileIfChanged(QStringLiteral("other"));
    QCOMPARE(programBytes(QStringLiteral("b")), QByteArray("beta\n"));
    QVERIFY(answerer.shown.isEmpty());
}

// The host asks to save what it is about to run on every run: a name that
// is not one file name in the programs directory is refused with a box the
// first time, and quietly after that.
void TestTabs::saveBeforeRunRefusesBadNameOnce()
{
    QVERIFY(enterProgramsDirWithProgramA());
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    window->addTextTab(QStringLiteral("a"));
    typeInto(0, QStringLiteral("zz"));
    BoxAnswerer answerer(QMessageBox::Ok, BoxAnswerer::AcceptInputs);
    const QString absolute = tempDir.path() + QStringLiteral("/abs/victim");

    window->saveFileIfChanged(QStringLiteral("../victim"));
    window->saveFileIfChanged(QStringLiteral("../victim"));
    window->saveFileIfChanged(absolute);
    window->saveFileIfChanged(QStringLiteral("../victim"));
    window->saveFileIfChanged(absolute);

    QCOMPARE(answerer.texts(), (QStringList { refusedNameBoxText(QStringLiteral("../victim"), separatorNameReason()),
                                              refusedNameBoxText(absolute, separatorNameReason()) }));
    for (const ShownBox &box : qAsConst(answerer.shown)) {
        QCOMPARE(box.title, attentionTitle);
        QCOMPARE(box.icon, QMessageBox::Critical);
    }
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
    QVERIFY(!writtenSinceCreated(QStringLiteral("a")));
    QVERIFY(editorAt(0)->isChanged());
    QCOMPARE(entriesOf(), QStringList { "a.zu" });
    QCOMPARE(victimsChanged(tempDir.path()), QString());
}

void TestTabs::saveCurrentProgSavesOnlyModifiedCurrent()
{
    QVERIFY(openTabsOfTwoPrograms());
    typeInto(0, QStringLiteral("xx"));
    tabs->setCurrentIndex(1);

    // The current tab is unmodified: nothing is written at all.
    window->saveCurrentProg();
    QVERIFY(!writtenSinceCreated(QStringLiteral("a")));
    QVERIFY(!writtenSinceCreated(QStringLiteral("b")));

    typeInto(1, QStringLiteral("yy"));
    window->saveCurrentProg();
    QCOMPARE(programBytes(QStringLiteral("b")), QByteArray("yybeta\n"));
    QVERIFY(!editorAt(1)->isChanged());
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("alpha\n"));
    QVERIFY(editorAt(0)->isChanged());
}

// What compiling the current program saves: the program, and the changed
// programs of the current project only when the program is one of them.
void TestTabs::saveChangedProgOrProjSavesProjectOnlyForItsProgram()
{
    // Project p holds a and b; c and d are outside it.
    for (const char *name : { "a", "b", "c", "d" })
        QVERIFY(writeProgram(QLatin1String(name), "text\n"));
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), "a.zu\nb.zu\n"));
    QVERIFY(makeWindow());
    QVERIFY(showWindow());
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    for (const char *name : { "a", "b", "c", "d" })
        window->addTextTab(QLatin1String(name));
    typeInto(0, QStringLiteral("1"));
    typeInto(2, QStringLiteral("3"));
    typeInto(3, QStringLiteral("4"));
    QCOMPARE(tabs->currentIndex(), 3);
    BoxAnswerer answerer(QMessageBox::Cancel, BoxAnswerer::AcceptInputs);

    window->saveChangedProgOrProj();
    QCOMPARE(programBytes(QStringLiteral("d")), QByteArray("4text\n"));
    QVERIFY(!editorAt(3)->isChanged());
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("text\n"));
    QVERIFY(editorAt(0)->isChanged());

    // b, unchanged, is of the project: a is saved with it, c is not.
    tabs->setCurrentIndex(1);
    window->saveChangedProgOrProj();
    QCOMPARE(programBytes(QStringLiteral("a")), QByteArray("1text\n"));
    QVERIFY(!editorAt(0)->isChanged());
    QVERIFY(!writtenSinceCreated(QStringLiteral("b")));
    QCOMPARE(programBytes(QStringLiteral("c")), QByteArray("text\n"));
    QVERIFY(editorAt(2)->isChanged());
    QVERIFY(answerer.shown.isEmpty());
}

QTEST_MAIN(TestTabs)
#include "tst_tabs.moc"
