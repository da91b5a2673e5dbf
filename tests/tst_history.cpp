// The history of cursor places across the open programs: places recorded
// through the window's slot as the editors report them, and the steps back
// and forward that the editors' keys ask for, seen in the current tab and
// its editor's cursor.

#include <QtTest>

#include <QTabWidget>
#include <QTextCursor>

#include "editwindow.h"
#include "testsupport.h"
#include "windowfixture.h"
#include "zusourcecode.h"

namespace {

// Long enough for every place the tests go to.
const int programLength = 2000;

struct Place
{
    QString name;
    int position;
};

} // namespace

class TestHistory : public QObject, protected WindowFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void nearbyPlaceInSameProgramAddsNothing_data();
    void nearbyPlaceInSameProgramAddsNothing();
    void nearbyPlaceInOtherProgramIsRecorded();
    void nearnessIsJudgedAgainstCurrentPlaceNotNewest();
    void maximumOfThreeDropsOldestForFourth();
    void maximumOfTwoStepsBackOnlyToSecondOfThree();
    void maximumOfZeroKeepsEveryPlace();
    void newPlaceAfterSteppingBackGoesAfterCurrentAndKeepsNewer();
    void placeOfClosedProgramIsSkippedAndRemoved();
    void placeBeyondLimitIsSkippedAndRemoved();
    void backAtFirstPlaceDoesNothing();
    void forwardAtLastPlaceDoesNothing();
    void stepsInEmptyHistoryDoNothing();
    void steppingPutsCursorWithoutSelection();

private:
    // Programs a, b and c, each open in a tab, c current.
    bool openThreePrograms();
    void record(const QList<Place> &places);
    ZuSourceCode *editorOf(const QString &name) const;
    ZuSourceCode *currentEditor() const;
    QString currentName() const;
    int currentCursor() const;
    // The steps as the editor's keys ask for them: limited by the end of
    // the document of the current editor.
    void back();
    void forward();
};

void TestHistory::init()
{
    QVERIFY(tempDir.make());
    QVERIFY(tempDir.enter());
}

void TestHistory::cleanup()
{
    deletePluginWindow();
    tempDir.leave();
}

bool TestHistory::openThreePrograms()
{
    const QByteArray text = QByteArray(programLength - 1, 'x') + '\n';
    for (const char *name : { "a", "b", "c" }) {
        if (!writeFile(QLatin1String(name) + QStringLiteral(".zu"), text))
            return false;
    }
    if (!makePluginWindow())
        return false;
    for (const char *name : { "a", "b", "c" }) {
        if (!window->addTextTab(QLatin1String(name)))
            return false;
    }
    return tabTexts(tabs) == QStringList { "a", "b", "c" } && currentName() == QStringLiteral("c");
}

void TestHistory::record(const QList<Place> &places)
{
    for (const Place &place : places)
        window->storeCursorToHistory(place.name, place.position);
}

ZuSourceCode *TestHistory::editorOf(const QString &name) const
{
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->tabText(i) == name)
            return tabs->widget(i)->findChild<ZuSourceCode *>();
    }
    return nullptr;
}

ZuSourceCode *TestHistory::currentEditor() const
{
    QWidget *page = tabs->currentWidget();
    return page ? page->findChild<ZuSourceCode *>() : nullptr;
}

QString TestHistory::currentName() const
{
    return tabs->tabText(tabs->currentIndex());
}

int TestHistory::currentCursor() const
{
    ZuSourceCode *editor = currentEditor();
    return editor ? editor->textCursor().position() : -1;
}

void TestHistory::back()
{
    window->cursorPrevPosition(currentEditor()->document()->characterCount() - 1);
}

void TestHistory::forward()
{
    window->cursorNextPosition(currentEditor()->document()->characterCount() - 1);
}

// ---------------------------------------------------------------------------

void TestHistory::nearbyPlaceInSameProgramAddsNothing_data()
{
    QTest::addColumn<int>("offset");
    QTest::newRow("9 on") << 9;
    QTest::newRow("9 back") << -9;
    QTest::newRow("10 on") << 10;
    QTest::newRow("10 back") << -10;
}

// Typing moves the cursor a character at a time: within 9 characters of
// the place recorded last, the place stays as it was; from 10 on, the new
// place is recorded as well.
void TestHistory::nearbyPlaceInSameProgramAddsNothing()
{
    QFETCH(int, offset);
    QVERIFY(openThreePrograms());

    record({ { "a", 100 }, { "a", 500 }, { "a", 500 + offset }, { "b", 300 } });
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    const bool near = qAbs(offset) <= 9;
    QCOMPARE(currentCursor(), near ? 500 : 500 + offset);
    back();
    QCOMPARE(currentCursor(), near ? 100 : 500);
}

void TestHistory::nearbyPlaceInOtherProgramIsRecorded()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 500 }, { "b", 503 }, { "c", 100 } });
    back();
    QCOMPARE(currentName(), QStringLiteral("b"));
    QCOMPARE(currentCursor(), 503);
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 500);
}

// Back at a, a place near it is no new place, although the newest place
// (in b) is elsewhere: nothing is inserted before b.
void TestHistory::nearnessIsJudgedAgainstCurrentPlaceNotNewest()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 500 }, { "b", 300 } });
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    record({ { "a", 505 } });
    forward();
    QCOMPARE(currentName(), QStringLiteral("b"));
    QCOMPARE(currentCursor(), 300);
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 500);
}

void TestHistory::maximumOfThreeDropsOldestForFourth()
{
    QVERIFY(openThreePrograms());
    window->setMaxPosHistoryLength(3);

    record({ { "a", 100 }, { "b", 200 }, { "c", 300 }, { "a", 400 } });
    const QList<Place> expected { { "c", 300 }, { "b", 200 }, { "b", 200 } };
    for (const Place &place : expected) {
        back();
        QCOMPARE(currentName(), place.name);
        QCOMPARE(currentCursor(), place.position);
    }
    QCOMPARE(editorOf(QStringLiteral("a"))->textCursor().position(), 0);
}

void TestHistory::maximumOfTwoStepsBackOnlyToSecondOfThree()
{
    QVERIFY(openThreePrograms());
    window->setMaxPosHistoryLength(2);

    record({ { "a", 100 }, { "b", 200 }, { "c", 300 } });
    back();
    back();
    QCOMPARE(currentName(), QStringLiteral("b"));
    QCOMPARE(currentCursor(), 200);
    QCOMPARE(editorOf(QStringLiteral("a"))->textCursor().position(), 0);
}

void TestHistory::maximumOfZeroKeepsEveryPlace()
{
    QVERIFY(openThreePrograms());
    window->setMaxPosHistoryLength(0);

    // More places than the default length of 50.
    const int count = 60;
    for (int i = 0; i < count; ++i)
        record({ { "a", i * 20 } });
    for (int i = count - 2; i >= 0; --i) {
        back();
        QCOMPARE(currentCursor(), i * 20);
    }
    back();
    QCOMPARE(currentCursor(), 0);
    forward();
    QCOMPARE(currentCursor(), 20);
}

// A, B, C; two steps back to A; D is recorded after A, and B and C stay
// ahead of it.
void TestHistory::newPlaceAfterSteppingBackGoesAfterCurrentAndKeepsNewer()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 100 }, { "b", 200 }, { "c", 300 } });
    back();
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 100);

    record({ { "c", 700 } });
    const QList<Place> ahead { { "b", 200 }, { "c", 300 }, { "c", 300 } };
    for (const Place &place : ahead) {
        forward();
        QCOMPARE(currentName(), place.name);
        QCOMPARE(currentCursor(), place.position);
    }
    const QList<Place> behind { { "b", 200 }, { "c", 700 }, { "a", 100 } };
    for (const Place &place : behind) {
        back();
        QCOMPARE(currentName(), place.name);
        QCOMPARE(currentCursor(), place.position);
    }
}

// The history never opens a program again: a place of a closed program is
// dropped when a step meets it, and does not come back once the program is
// open again.
void TestHistory::placeOfClosedProgramIsSkippedAndRemoved()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 100 }, { "b", 200 }, { "c", 300 } });
    window->tabClose(QStringLiteral("b"));
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "c" }));
    QVERIFY(window->findOpenTab(QStringLiteral("c")));

    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 100);
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "c" }));

    QVERIFY(window->addTextTab(QStringLiteral("b")));
    QVERIFY(window->findOpenTab(QStringLiteral("a")));
    forward();
    QCOMPARE(currentName(), QStringLiteral("c"));
    QCOMPARE(currentCursor(), 300);
    QCOMPARE(editorOf(QStringLiteral("b"))->textCursor().position(), 0);
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
}

// The limit is the end of the document the step is asked from; a place
// beyond it is dropped like that of a closed program.
void TestHistory::placeBeyondLimitIsSkippedAndRemoved()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 100 }, { "b", 1500 }, { "c", 300 } });
    window->cursorPrevPosition(1000);
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 100);
    QCOMPARE(editorOf(QStringLiteral("b"))->textCursor().position(), 0);

    forward();
    QCOMPARE(currentName(), QStringLiteral("c"));
    QCOMPARE(currentCursor(), 300);
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
}

void TestHistory::backAtFirstPlaceDoesNothing()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 100 }, { "b", 200 } });
    back();
    QVERIFY(window->findOpenTab(QStringLiteral("c")));
    back();
    back();
    QCOMPARE(currentName(), QStringLiteral("c"));
    QCOMPARE(currentCursor(), 0);
    QCOMPARE(editorOf(QStringLiteral("a"))->textCursor().position(), 100);

    // Still at the first place: the next step forward is the second one.
    forward();
    QCOMPARE(currentName(), QStringLiteral("b"));
    QCOMPARE(currentCursor(), 200);
}

void TestHistory::forwardAtLastPlaceDoesNothing()
{
    QVERIFY(openThreePrograms());

    record({ { "a", 100 }, { "b", 200 } });
    forward();
    forward();
    QCOMPARE(currentName(), QStringLiteral("c"));
    QCOMPARE(editorOf(QStringLiteral("b"))->textCursor().position(), 0);

    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 100);
}

// Stepping in an empty history leaves it empty: places recorded afterwards
// are stepped through as usual.
void TestHistory::stepsInEmptyHistoryDoNothing()
{
    QVERIFY(openThreePrograms());

    back();
    back();
    forward();
    QCOMPARE(currentName(), QStringLiteral("c"));
    QCOMPARE(currentCursor(), 0);

    record({ { "a", 100 }, { "b", 200 } });
    back();
    QCOMPARE(currentName(), QStringLiteral("a"));
    QCOMPARE(currentCursor(), 100);
    forward();
    QCOMPARE(currentName(), QStringLiteral("b"));
    QCOMPARE(currentCursor(), 200);
}

void TestHistory::steppingPutsCursorWithoutSelection()
{
    QVERIFY(openThreePrograms());
    ZuSourceCode *a = editorOf(QStringLiteral("a"));
    QTextCursor selection = a->textCursor();
    selection.setPosition(10);
    selection.setPosition(40, QTextCursor::KeepAnchor);
    a->setTextCursor(selection);
    QVERIFY(a->textCursor().hasSelection());

    record({ { "a", 100 }, { "b", 200 } });
    back();
    QCOMPARE(currentEditor(), a);
    QCOMPARE(a->textCursor().position(), 100);
    QVERIFY(!a->textCursor().hasSelection());
}

QTEST_MAIN(TestHistory)
#include "tst_history.moc"
