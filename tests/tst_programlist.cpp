// The program and project lists of the programs directory, driven as a user
// drives them: clicks on the list buttons and items, in-place naming through
// the lists' own editors, answers to the message boxes, and files that
// appear or vanish behind the window's back.

#include <QtTest>

#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMap>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolTip>

#include "boxanswerer.h"
#include "editwindow.h"
#include "settingelement.h"
#include "testsupport.h"
#include "textedit.h"
#include "windowfixture.h"

Q_DECLARE_METATYPE(QListWidgetItem *)

namespace {

const QString placeholderText = QStringLiteral("Задайте имя");
const QString attentionTitle = QStringLiteral("ВНИМАНИЕ!");

QString takenText(const QString &kind, const QString &name)
{
    return kind + QStringLiteral(" с именем ") + name
           + QStringLiteral(" уже существует.\nНеобходимо создавать с другим именем.");
}

// Return commits the name; the item delegate commits and closes the editor
// from the event loop.
#define COMMIT_NAME(list, editor) \
    do { \
        QTest::keyClick(editor, Qt::Key_Return); \
        QTRY_VERIFY(!openEditor(list)); \
    } while (false)

QString canonical(const QString &path)
{
    return QFileInfo(path).canonicalFilePath();
}

QString expectedToolTip(const QString &fileName)
{
    const QFileInfo file(fileName);
    const QDateTime born = file.birthTime().isValid() ? file.birthTime() : file.metadataChangeTime();
    return QStringList { file.absoluteFilePath(),
                         QStringLiteral("Владелец:\t") + file.owner(),
                         QStringLiteral("Изменен:\t") + file.lastModified().toString(Qt::TextDate),
                         QStringLiteral("Прочитан:\t") + file.lastRead().toString(Qt::TextDate),
                         QStringLiteral("Создан:\t") + born.toString(Qt::TextDate) }
        .join(QLatin1Char('\n'));
}

// Where the user types a name in place.
enum NameEntry { NewProgram, NewProject, RenameProject, NewProjectProgram };

struct OddNameScene;

} // namespace

class TestProgramList : public QObject, protected WindowFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Listing the directory
    void listCutsAtLastExtension();
    void listKeepsCurrentNameAfterRefill();
    void watcherRefillsListsOnOutsideChanges();

    // Buttons
    void programButtonsFollowCurrentItem();
    void addToProjectFollowsProjectBox();

    // New programs and projects
    void newProgramNamedInPlaceCreatesEmptyFile();
    void escapeDropsUnnamedItemAndWritesNothing();
    void secondNewPressEditsTheOnePlaceholder();
    void newProjectCreatesFileAndShowsPrograms();
    void takenNewNameWarnsAndKeepsNewItemMode();
    void newProgramWithOddName_data();
    void newProgramWithOddName();
    void everyListRefusesBadNamesCountingItsExtension_data();
    void everyListRefusesBadNamesCountingItsExtension();

    // Renaming
    void renameInPlaceRenamesOnlyProgramFile();
    void unchangedNameChangesNothing();
    void renameToTakenNameWarnsAndRestoresList();
    void takenProjectNameWarnsBeforeComparingWithOldName();
    void renamePreselectedProgramRenamesItsFile();
    void renameToOddName_data();
    void renameToOddName();

    // Open programs
    void selectingOpenProgramBringsItsTabToFront();
    void activatingProgramShowsOrOpensItsTab();

    // Deleting
    void deletingCurrentProjectDisablesProjectBoxFirst();
    void deletingProjectAnsweredNoKeepsFile();
    void projectFileThatCannotBeRemovedIsReported();
    void deletingProgramRemovesCheckedFiles();

    // Tool tips
    void hoverShowsFileDetails();

    // Programs directory
    void newProgramsDirFromHostRefillsLists();
    void programsDirSettingRefillsLists();
    void missingProgramsDirSettingReportedOnce();
    void missingProgramsDirFromHostNotTaken();
    void listsFollowDiskInNewProgramsDir_data();
    void listsFollowDiskInNewProgramsDir();

private:
    bool openWindow();
    void oddNameColumns();
    void oddNameRows(const QStringList &refusedList, const QStringList &acceptedList);
    bool openWindowInOddNameScene(OddNameScene &scene, const QMap<QString, QByteArray> &files);
    void nameInPlace(QListWidget *list, const char *buttonName, const QString &name);
    void setProgramsDirSetting(const QString &dir);

    QGroupBox *projectBox = nullptr;
};

void TestProgramList::init()
{
    qRegisterMetaType<QListWidgetItem *>();
    QVERIFY(tempDir.make());
    // The window lists the current directory when it is made and watches it.
    QVERIFY(tempDir.enter());
}

void TestProgramList::cleanup()
{
    QToolTip::hideText();
    deletePluginWindow();
    projectBox = nullptr;
    tempDir.leave();
}

// Makes the window in the current directory, shows and activates it.
bool TestProgramList::openWindow()
{
    if (!makePluginWindow())
        return false;
    projectBox = window->findChild<QGroupBox *>(QStringLiteral("currProjBox"));
    if (!projectBox)
        return false;
    for (const char *name : { "newProgButton", "editButton", "renameButton", "addprjButton", "delProgButton",
                              "newprjButton", "delprjButton" }) {
        if (!button(name))
            return false;
    }
    if (!showAndActivate(window))
        return false;
    // The window opens on the projects page; the user turns to the programs.
    clickTab(selector, 0);
    return selector->currentIndex() == 0 && programs->isVisible();
}

// ---------------------------------------------------------------------------
// Listing the directory

void TestProgramList::listCutsAtLastExtension()
{
    for (const char *name : { "a.zu", "b.zu.zu", "A.ZU", "C.zu", "x.zup", ".h.zu", ".k.zup", "notes.txt" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(QDir().mkdir(QStringLiteral("d.zu")));
    QVERIFY(QDir().mkdir(QStringLiteral("e.zup")));
    QVERIFY(QFile::link(QStringLiteral("a.zu"), QStringLiteral("l.zu")));
    QVERIFY(QFile::link(QStringLiteral("x.zup"), QStringLiteral("m.zup")));
    QVERIFY(openWindow());

    // Sorted by file name with upper case first; "A.ZU" passes the filter
    // but keeps its name; b.zu.zu loses only its last ".zu".
    QCOMPARE(itemTexts(programs), (QStringList { "A.ZU", "C", "a", "b.zu" }));
    QCOMPARE(itemTexts(projects), QStringList { "x" });
    QCOMPARE(programs->currentRow(), 0);
    QCOMPARE(projects->currentRow(), 0);
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled;
    for (QListWidget *list : { programs, projects }) {
        for (int row = 0; row < list->count(); ++row)
            QCOMPARE(list->item(row)->flags(), flags);
    }
}

void TestProgramList::listKeepsCurrentNameAfterRefill()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(openWindow());
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QCOMPARE(programs->currentRow(), 1);

    // A file sorted before it moves it down a row; it stays current.
    QVERIFY(writeFile(QStringLiteral("aa.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "a", "aa", "b", "c" }), watcherTimeout);
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("b"));
    QCOMPARE(programs->currentRow(), 2);

    // Once its file is gone, the first row is current.
    QVERIFY(QFile::remove(QStringLiteral("b.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "a", "aa", "c" }), watcherTimeout);
    QCOMPARE(programs->currentRow(), 0);
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("a"));
}

void TestProgramList::watcherRefillsListsOnOutsideChanges()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(programs), QStringList { "a" });
    QCOMPARE(itemTexts(projects), QStringList());

    QVERIFY(writeFile(QStringLiteral("z.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "a", "z" }), watcherTimeout);
    QVERIFY(writeFile(QStringLiteral("z.zup")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "z" }, watcherTimeout);
    QCOMPARE(itemTexts(programs), (QStringList { "a", "z" }));

    QVERIFY(QFile::remove(QStringLiteral("z.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), QStringList { "a" }, watcherTimeout);
    QVERIFY(QFile::remove(QStringLiteral("z.zup")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList(), watcherTimeout);
}

// ---------------------------------------------------------------------------
// Buttons

void TestProgramList::programButtonsFollowCurrentItem()
{
    QVERIFY(openWindow());
    QPushButton *newProg = button("newProgButton");
    QPushButton *edit = button("editButton");
    QPushButton *rename = button("renameButton");
    QPushButton *addToProject = button("addprjButton");
    QPushButton *del = button("delProgButton");
    auto states = [&] {
        return QVector<bool> { newProg->isEnabled(), edit->isEnabled(), rename->isEnabled(),
                               addToProject->isEnabled(), del->isEnabled() };
    };
    using States = QVector<bool>;

    // A program that is current and not open may be edited, renamed and
    // deleted; without a current project it cannot be added to one.
    QVERIFY(writeFile(QStringLiteral("z.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), QStringList { "z" }, watcherTimeout);
    QCOMPARE(programs->currentRow(), 0);
    QCOMPARE(states(), (States { true, true, true, false, true }));

    // No current item: only a new program can be made.
    QVERIFY(QFile::remove(QStringLiteral("z.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(programs->count(), 0, watcherTimeout);
    QCOMPARE(programs->currentRow(), -1);
    QCOMPARE(states(), (States { true, false, false, false, false }));

    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "a", "b" }), watcherTimeout);
    deliverPending();
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("b"));
    QCOMPARE(states(), (States { true, true, true, false, true }));

    // Open in a tab: no editing again, no renaming, no deleting.
    QTest::mouseClick(edit, Qt::LeftButton);
    QCOMPARE(tabs->count(), 1);
    QCOMPARE(tabs->tabText(0), QStringLiteral("b"));
    QCOMPARE(states(), (States { true, false, false, false, false }));

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QCOMPARE(states(), (States { true, true, true, false, true }));
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QCOMPARE(states(), (States { true, false, false, false, false }));

    // The unnamed new item.
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(newProg, Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    QCOMPARE(programs->currentItem()->text(), placeholderText);
    QCOMPARE(states(), (States { true, false, false, false, false }));
    QTest::keyClick(editor, Qt::Key_Escape);
    QCOMPARE(itemTexts(programs), (QStringList { "a", "b" }));
}

void TestProgramList::addToProjectFollowsProjectBox()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(openWindow());
    QPushButton *addToProject = button("addprjButton");

    // No project: the box is off and nothing can be added.
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QVERIFY(!projectBox->isEnabled());
    QVERIFY(!addToProject->isEnabled());
    QVERIFY(button("editButton")->isEnabled());

    // A project holding "a" appears and becomes the current project.
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "p" }, watcherTimeout);
    deliverPending();
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });

    clickItem(programs, itemNamed(programs, QStringLiteral("c")));
    QVERIFY(addToProject->isEnabled());
    // A program already in the project cannot be added again.
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QVERIFY(!addToProject->isEnabled());
    QVERIFY(button("editButton")->isEnabled());
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QVERIFY(addToProject->isEnabled());

    // The project goes: so does the box, and the button stays off.
    QVERIFY(QFile::remove(QStringLiteral("p.zup")));
    QTRY_COMPARE_WITH_TIMEOUT(projects->count(), 0, watcherTimeout);
    deliverPending();
    QVERIFY(!projectBox->isEnabled());
    clickItem(programs, itemNamed(programs, QStringLiteral("c")));
    QVERIFY(!addToProject->isEnabled());
    QVERIFY(button("editButton")->isEnabled());
}

// ---------------------------------------------------------------------------
// New programs and projects

void TestProgramList::newProgramNamedInPlaceCreatesEmptyFile()
{
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QVERIFY(openWindow());
    const QStringList before = entriesOf(QStringLiteral("."));

    QTest::mouseClick(button("newProgButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    // The editor is the list's own, has the focus and shows the placeholder.
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(editor));
    QCOMPARE(editor->text(), placeholderText);
    QCOMPARE(itemTexts(programs), (QStringList { "b", placeholderText }));
    QCOMPARE(programs->currentItem()->text(), placeholderText);

    replaceText(editor, QStringLiteral("alpha"));
    QCOMPARE(editor->text(), QStringLiteral("alpha"));
    COMMIT_NAME(programs, editor);

    QVERIFY(QFileInfo::exists(QStringLiteral("alpha.zu")));
    QCOMPARE(QFileInfo(QStringLiteral("alpha.zu")).size(), 0);
    QStringList after = QStringList(before) << "alpha.zu";
    after.sort();
    QCOMPARE(entriesOf(QStringLiteral(".")), after);
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "alpha", "b" }), watcherTimeout);
    QVERIFY(!openEditor(programs));
}

void TestProgramList::escapeDropsUnnamedItemAndWritesNothing()
{
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QVERIFY(openWindow());
    const QStringList before = entriesOf(QStringLiteral("."));

    QTest::mouseClick(button("newProgButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    QCOMPARE(programs->count(), 2);
    typeText(editor, QStringLiteral("omega"));
    QTest::keyClick(editor, Qt::Key_Escape);

    QCOMPARE(itemTexts(programs), QStringList { "b" });
    QVERIFY(!openEditor(programs));
    deliverPending();
    QCOMPARE(entriesOf(QStringLiteral(".")), before);
    QCOMPARE(itemTexts(programs), QStringList { "b" });
}

void TestProgramList::secondNewPressEditsTheOnePlaceholder()
{
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QVERIFY(openWindow());
    QPushButton *newProg = button("newProgButton");

    QTest::mouseClick(newProg, Qt::LeftButton);
    QTRY_VERIFY(openEditor(programs) != nullptr);
    QTest::mouseClick(newProg, Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);

    QCOMPARE(itemTexts(programs), (QStringList { "b", placeholderText }));
    QCOMPARE(programs->currentItem()->text(), placeholderText);
    QCOMPARE(editor->text(), placeholderText);
    int visibleEditors = 0;
    for (const QLineEdit *open : programs->viewport()->findChildren<QLineEdit *>())
        visibleEditors += open->isVisible() ? 1 : 0;
    QCOMPARE(visibleEditors, 1);

    // Asked again for the placeholder, the list hands back the same item.
    QListWidgetItem *placeholder = itemNamed(programs, placeholderText);
    QCOMPARE(window->newItemInList(programs, placeholderText), placeholder);
    QCOMPARE(programs->count(), 2);

    // The one placeholder takes the name.
    replaceText(editor, QStringLiteral("gamma"));
    COMMIT_NAME(programs, editor);
    QVERIFY(QFileInfo::exists(QStringLiteral("gamma.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "b", "gamma" }), watcherTimeout);
}

void TestProgramList::newProjectCreatesFileAndShowsPrograms()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(openWindow());
    QVERIFY(!projectBox->isEnabled());

    clickTab(selector, 1);
    QCOMPARE(selector->currentIndex(), 1);
    QTest::mouseClick(button("newprjButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(projects)) != nullptr);
    QCOMPARE(itemTexts(projects), QStringList { placeholderText });
    QCOMPARE(itemTexts(programs), QStringList { "a" });

    replaceText(editor, QStringLiteral("x"));
    COMMIT_NAME(projects, editor);

    QVERIFY(QFileInfo::exists(QStringLiteral("x.zup")));
    QCOMPARE(QFileInfo(QStringLiteral("x.zup")).size(), 0);
    QVERIFY(!QFileInfo::exists(QStringLiteral("x.zu")));
    QCOMPARE(selector->currentIndex(), 0);
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QStringLiteral("x"));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "x" }, watcherTimeout);
    QCOMPARE(itemTexts(programs), QStringList { "a" });
    deliverPending();
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QStringLiteral("x"));
}

// A new name that is taken is refused; the list still takes the next commit
// for a new name, so a rename after it makes a new empty file.
void TestProgramList::takenNewNameWarnsAndKeepsNewItemMode()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "text of a"));
    QVERIFY(writeFile(QStringLiteral("b.zu"), "text of b"));
    QVERIFY(openWindow());

    BoxAnswerer answerer(QMessageBox::Ok);
    QTest::mouseClick(button("newProgButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    replaceText(editor, QStringLiteral("b"));
    COMMIT_NAME(programs, editor);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.at(0).title, attentionTitle);
    QCOMPARE(answerer.shown.at(0).text, takenText(QStringLiteral("Программа"), QStringLiteral("b")));
    QCOMPARE(answerer.shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(itemTexts(programs), (QStringList { "a", "b" }));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "b.zu" }));

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(button("renameButton"), Qt::LeftButton);
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    QCOMPARE(editor->text(), QStringLiteral("a"));
    replaceText(editor, QStringLiteral("c"));
    COMMIT_NAME(programs, editor);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "b.zu", "c.zu" }));
    QCOMPARE(QFileInfo(QStringLiteral("c.zu")).size(), 0);
    QCOMPARE(QFileInfo(QStringLiteral("a.zu")).size(), qint64(9));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "a", "b", "c" }), watcherTimeout);
}

// ---------------------------------------------------------------------------
// Names that are not one file name in the programs directory, as new
// program names and as renames: each is refused with one box that says
// why, and nothing is created or renamed, inside the directory or out.

namespace {

const char rootToken[] = "<root>";

QString longName()
{
    return QString(300, QLatin1Char('n'));
}

// The one box that refuses the name and says why, or no box at all when
// there is no reason to refuse it.
void checkNameBox(const BoxAnswerer &answerer, const QString &name, const QString &reason)
{
    if (reason.isEmpty()) {
        QVERIFY(answerer.shown.isEmpty());
        return;
    }
    QCOMPARE(answerer.shown.size(), 1);
    const ShownBox &box = answerer.shown.at(0);
    QCOMPARE(box.title, attentionTitle);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(box.text, refusedNameBoxText(name, reason));
}

// The programs directory of these tests, <temp>/progs, and what it and
// the directories around it held before the user named anything.
struct OddNameScene
{
    QString root;
    QString progs;
    QStringList rootBefore;
    QStringList progsBefore;
    bool tmpFileExisted = false;
};

// Nothing was made outside the programs directory: not beside it, not in
// its subdirectories, not in /tmp.
void checkNothingOutside(const OddNameScene &scene)
{
    QCOMPARE(entriesOf(scene.root), scene.rootBefore);
    QCOMPARE(entriesOf(scene.progs + QStringLiteral("/a")), QStringList());
    QCOMPARE(entriesOf(scene.progs + QStringLiteral("/sub")), QStringList());
    QCOMPARE(QFileInfo::exists(QStringLiteral("/tmp/x.zu")), scene.tmpFileExisted);
}

} // namespace

// Makes <temp>/progs the programs directory, with the files given and the
// subdirectories "a" and "sub" (so that "a/b" would succeed if it were
// taken as a path), notes what is where, and opens the window there.
// The programs directory holds what it held and, when a name was taken,
// the empty file made for it; nothing changed outside.
void checkOnlyCreated(const OddNameScene &scene, const QString &createdFile)
{
    QStringList progsAfter = scene.progsBefore;
    if (!createdFile.isEmpty()) {
        progsAfter << createdFile;
        progsAfter.sort();
        QCOMPARE(QFileInfo(createdFile).size(), 0);
    }
    QCOMPARE(entriesOf(scene.progs), progsAfter);
    checkNothingOutside(scene);
}

bool TestProgramList::openWindowInOddNameScene(OddNameScene &scene, const QMap<QString, QByteArray> &files)
{
    scene.root = tempDir.path();
    scene.progs = scene.root + QStringLiteral("/progs");
    if (!QDir(scene.root).mkpath(QStringLiteral("progs/a")) || !QDir(scene.root).mkpath(QStringLiteral("progs/sub"))
        || !QDir::setCurrent(scene.progs))
        return false;
    for (auto file = files.begin(); file != files.end(); ++file) {
        if (!writeFile(file.key(), file.value()))
            return false;
    }
    scene.tmpFileExisted = QFileInfo::exists(QStringLiteral("/tmp/x.zu"));
    scene.rootBefore = entriesOf(scene.root);
    scene.progsBefore = entriesOf(scene.progs);
    return openWindow();
}

// Clicks the button that opens the list's in-place editor, types the name
// over what the editor shows and commits it.
void TestProgramList::nameInPlace(QListWidget *list, const char *buttonName, const QString &name)
{
    QTest::mouseClick(button(buttonName), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(list)) != nullptr);
    replaceText(editor, name);
    QCOMPARE(editor->text(), name);
    COMMIT_NAME(list, editor);
}

void TestProgramList::oddNameColumns()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("createdFile"); // in the programs directory, empty for none
    QTest::addColumn<QString>("reason");      // why the name is refused, empty when it is taken
    QTest::addColumn<QStringList>("expectedList");
}

void TestProgramList::oddNameRows(const QStringList &refusedList, const QStringList &acceptedList)
{
    const QString root = QString::fromLatin1(rootToken);
    QTest::newRow("empty") << QString() << QString() << emptyNameReason() << refusedList;
    QTest::newRow("dot") << "." << QString() << directoryNameReason() << refusedList;
    QTest::newRow("dot-dot") << ".." << QString() << directoryNameReason() << refusedList;
    QTest::newRow("into-subdirectory") << "a/b" << QString() << separatorNameReason() << refusedList;
    QTest::newRow("backslash") << "a\\b" << QString() << separatorNameReason() << refusedList;
    QTest::newRow("into-parent") << "../escape" << QString() << separatorNameReason() << refusedList;
    QTest::newRow("absolute-sandbox") << root + "/abs" << QString() << separatorNameReason() << refusedList;
    QTest::newRow("absolute-tmp") << "/tmp/x" << QString() << separatorNameReason() << refusedList;
    QTest::newRow("300-characters") << longName() << QString() << tooLongNameReason() << refusedList;
    // Odd, but one file name each.
    QTest::newRow("three-dots") << "..." << "....zu" << QString() << acceptedList;
    QTest::newRow("cyrillic") << "программа" << "программа.zu" << QString()
                              << (QStringList(acceptedList) << "программа");
    QTest::newRow("chinese") << "程序" << "程序.zu" << QString() << (QStringList(acceptedList) << "程序");
    QTest::newRow("emoji") << "😀" << "😀.zu" << QString() << (QStringList(acceptedList) << "😀");
}

void TestProgramList::newProgramWithOddName_data()
{
    oddNameColumns();
    // "...." is hidden: the list does not show it.
    oddNameRows(QStringList { "keep" }, QStringList { "keep" });
}

void TestProgramList::newProgramWithOddName()
{
    QFETCH(QString, name);
    QFETCH(QString, createdFile);
    QFETCH(QString, reason);
    QFETCH(QStringList, expectedList);

    OddNameScene scene;
    QVERIFY(openWindowInOddNameScene(scene, { { QStringLiteral("keep.zu"), QByteArray() } }));
    name.replace(QLatin1String(rootToken), scene.root);

    BoxAnswerer answerer(QMessageBox::Ok);
    nameInPlace(programs, "newProgButton", name);

    if (!reason.isEmpty()) {
        // Nothing written: the list at once shows what is on disk.
        QCOMPARE(itemTexts(programs), expectedList);
    }
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), expectedList, watcherTimeout);
    QVERIFY(!itemNamed(programs, placeholderText));
    QVERIFY(!openEditor(programs));
    deliverPending();

    checkOnlyCreated(scene, createdFile);
    checkNameBox(answerer, name, reason);
    QCOMPARE(itemTexts(programs), expectedList);
}

void TestProgramList::everyListRefusesBadNamesCountingItsExtension_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("createdFile"); // empty for none
    QTest::addColumn<QString>("reason");      // empty when the name is taken

    const QString root = QString::fromLatin1(rootToken);
    QTest::newRow("new project into parent") << int(NewProject) << "../escape" << QString()
                                             << separatorNameReason();
    QTest::newRow("new project dot") << int(NewProject) << "." << QString() << directoryNameReason();
    QTest::newRow("renamed project empty") << int(RenameProject) << QString() << QString() << emptyNameReason();
    QTest::newRow("renamed project absolute") << int(RenameProject) << root + "/abs" << QString()
                                              << separatorNameReason();
    QTest::newRow("renamed project backslash") << int(RenameProject) << "a\\b" << QString()
                                               << separatorNameReason();
    QTest::newRow("project program into subdirectory") << int(NewProjectProgram) << "a/b" << QString()
                                                       << separatorNameReason();
    QTest::newRow("project program dot-dot") << int(NewProjectProgram) << ".." << QString()
                                             << directoryNameReason();
    // At most 200 bytes once the list's extension is added.
    const QString n196(196, QLatin1Char('n'));
    QTest::newRow("program of 200 bytes") << int(NewProgram) << n196 + "n" << n196 + "n.zu" << QString();
    QTest::newRow("program of 201 bytes") << int(NewProgram) << n196 + "nn" << QString() << tooLongNameReason();
    QTest::newRow("project of 200 bytes") << int(NewProject) << n196 << n196 + ".zup" << QString();
    QTest::newRow("project of 201 bytes") << int(NewProject) << n196 + "n" << QString() << tooLongNameReason();
}

// The program list, the project list and the current project's list each
// check a name the user types in place, with the extension of their files.
void TestProgramList::everyListRefusesBadNamesCountingItsExtension()
{
    QFETCH(int, entry);
    QFETCH(QString, name);
    QFETCH(QString, createdFile);
    QFETCH(QString, reason);

    OddNameScene scene;
    QVERIFY(openWindowInOddNameScene(scene, { { QStringLiteral("a.zu"), QByteArray("text of a\n") },
                                              { QStringLiteral("p.zup"), QByteArray("a.zu\n") } }));
    name.replace(QLatin1String(rootToken), scene.root);
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });

    BoxAnswerer answerer(QMessageBox::Ok);
    switch (entry) {
    case NewProgram:
        nameInPlace(programs, "newProgButton", name);
        break;
    case NewProject:
        clickTab(selector, 1);
        nameInPlace(projects, "newprjButton", name);
        break;
    case RenameProject:
        clickTab(selector, 1);
        clickItem(projects, itemNamed(projects, QStringLiteral("p")));
        nameInPlace(projects, "renamePrjButton", name);
        break;
    case NewProjectProgram:
        clickRow(projectPrograms, 0);
        nameInPlace(projectPrograms, "newProgPrjButton", name);
        break;
    }
    deliverPending();

    checkNameBox(answerer, name, reason);
    checkOnlyCreated(scene, createdFile);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\n"));
    QCOMPARE(fileBytes(QStringLiteral("a.zu")), QByteArray("text of a\n"));
    if (reason.isEmpty())
        return;
    // The lists show what is on disk, at once.
    QCOMPARE(itemTexts(programs), QStringList { "a" });
    QCOMPARE(itemTexts(projects), QStringList { "p" });
    if (entry != NewProject)
        QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
}

// ---------------------------------------------------------------------------
// Renaming

void TestProgramList::renameInPlaceRenamesOnlyProgramFile()
{
    for (const char *name : { "a.zu", "a.st", "a.vn", "b.zu" })
        QVERIFY(writeFile(QLatin1String(name), name));
    QVERIFY(openWindow());

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(button("renameButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    QCOMPARE(editor->text(), QStringLiteral("a"));
    replaceText(editor, QStringLiteral("c"));
    COMMIT_NAME(programs, editor);

    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.st", "a.vn", "b.zu", "c.zu" }));
    QFile renamed(QStringLiteral("c.zu"));
    QVERIFY(renamed.open(QIODevice::ReadOnly));
    QCOMPARE(renamed.readAll(), QByteArray("a.zu"));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "b", "c" }), watcherTimeout);
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("c"));
}

void TestProgramList::unchangedNameChangesNothing()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QVERIFY(openWindow());
    const QStringList before = entriesOf(QStringLiteral("."));
    QSignalSpy changed(programs, &QListWidget::itemChanged);
    BoxAnswerer answerer(QMessageBox::Ok);

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(button("renameButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    QCOMPARE(editor->text(), QStringLiteral("a"));
    COMMIT_NAME(programs, editor);

    QVERIFY(!openEditor(programs));
    QCOMPARE(changed.count(), 0);
    QVERIFY(answerer.shown.isEmpty());
    deliverPending();
    QCOMPARE(entriesOf(QStringLiteral(".")), before);
    QCOMPARE(itemTexts(programs), (QStringList { "a", "b" }));
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("a"));
}

void TestProgramList::renameToTakenNameWarnsAndRestoresList()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "text of a"));
    QVERIFY(writeFile(QStringLiteral("a.st")));
    QVERIFY(writeFile(QStringLiteral("b.zu"), "text of b"));
    QVERIFY(openWindow());
    const QStringList before = entriesOf(QStringLiteral("."));
    BoxAnswerer answerer(QMessageBox::Ok);

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(button("renameButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    replaceText(editor, QStringLiteral("b"));
    COMMIT_NAME(programs, editor);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.at(0).title, attentionTitle);
    QCOMPARE(answerer.shown.at(0).text, takenText(QStringLiteral("Программа"), QStringLiteral("b")));
    QCOMPARE(answerer.shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    // The list is read again: the edited text is gone.
    QCOMPARE(itemTexts(programs), (QStringList { "a", "b" }));
    deliverPending();
    QCOMPARE(entriesOf(QStringLiteral(".")), before);
    QFile b(QStringLiteral("b.zu"));
    QVERIFY(b.open(QIODevice::ReadOnly));
    QCOMPARE(b.readAll(), QByteArray("text of b"));
}

// The old name of a rename is the text of the item made current last in any
// list. Renaming the project that stayed current while a program was chosen
// meets a name that equals that old name: the name test comes first, so a
// taken name is refused all the same.
void TestProgramList::takenProjectNameWarnsBeforeComparingWithOldName()
{
    for (const char *name : { "a.zu", "b.zu", "a.zup", "q.zup" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(openWindow());
    const QStringList before = entriesOf(QStringLiteral("."));
    BoxAnswerer answerer(QMessageBox::Ok);

    clickTab(selector, 1);
    QListWidgetItem *q = itemNamed(projects, QStringLiteral("q"));
    QVERIFY(q);
    clickItem(projects, q);
    QCOMPARE(projects->currentItem(), q);
    clickTab(selector, 0);
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    clickTab(selector, 1);
    QCOMPARE(projects->currentItem(), q);

    QPushButton *renameProject = window->findChild<QPushButton *>(QStringLiteral("renamePrjButton"));
    QVERIFY(renameProject);
    QVERIFY(renameProject->isEnabled());
    QTest::mouseClick(renameProject, Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(projects)) != nullptr);
    QCOMPARE(editor->text(), QStringLiteral("q"));
    replaceText(editor, QStringLiteral("a"));
    COMMIT_NAME(projects, editor);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.at(0).title, attentionTitle);
    QCOMPARE(answerer.shown.at(0).text, takenText(QStringLiteral("Проект"), QStringLiteral("a")));
    QCOMPARE(answerer.shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(itemTexts(projects), (QStringList { "a", "q" }));
    deliverPending();
    QCOMPARE(entriesOf(QStringLiteral(".")), before);
}

// The program that is current when the window opens is the one the rename
// button renames, although the project list chose its own current item
// after it; a program named like that project is left alone.
void TestProgramList::renamePreselectedProgramRenamesItsFile()
{
    for (const char *name : { "a.zu", "b.zu", "q.zu", "q.zup" })
        QVERIFY(writeFile(QLatin1String(name), name));
    QVERIFY(openWindow());
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("a"));
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("q"));

    QTest::mouseClick(button("renameButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(programs)) != nullptr);
    QCOMPARE(editor->text(), QStringLiteral("a"));
    replaceText(editor, QStringLiteral("c"));
    COMMIT_NAME(programs, editor);

    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "b.zu", "c.zu", "q.zu", "q.zup" }));
    QFile renamed(QStringLiteral("c.zu"));
    QVERIFY(renamed.open(QIODevice::ReadOnly));
    QCOMPARE(renamed.readAll(), QByteArray("a.zu"));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "b", "c", "q" }), watcherTimeout);
}

void TestProgramList::renameToOddName_data()
{
    oddNameColumns();
    // Renamed to "...", the program is hidden: the list does not show it.
    oddNameRows(QStringList { "r" }, QStringList());
}

void TestProgramList::renameToOddName()
{
    QFETCH(QString, name);
    QFETCH(QString, createdFile);
    QFETCH(QString, reason);
    QFETCH(QStringList, expectedList);

    OddNameScene scene;
    QVERIFY(openWindowInOddNameScene(scene, { { QStringLiteral("r.zu"), QByteArray("source") } }));
    name.replace(QLatin1String(rootToken), scene.root);

    BoxAnswerer answerer(QMessageBox::Ok);
    clickItem(programs, itemNamed(programs, QStringLiteral("r")));
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("r"));
    nameInPlace(programs, "renameButton", name);

    if (!reason.isEmpty()) {
        // The item gets its old text back at once; nothing was renamed.
        QCOMPARE(itemTexts(programs), expectedList);
    }
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), expectedList, watcherTimeout);
    QVERIFY(!openEditor(programs));
    deliverPending();

    QStringList progsAfter = scene.progsBefore;
    if (!createdFile.isEmpty()) {
        progsAfter.removeOne(QStringLiteral("r.zu"));
        progsAfter << createdFile;
        progsAfter.sort();
    }
    // The text moved with the name, or stayed where it was.
    QCOMPARE(fileBytes(createdFile.isEmpty() ? QStringLiteral("r.zu") : createdFile), QByteArray("source"));
    QCOMPARE(entriesOf(scene.progs), progsAfter);
    checkNothingOutside(scene);
    checkNameBox(answerer, name, reason);
    QCOMPARE(itemTexts(programs), expectedList);
}

// ---------------------------------------------------------------------------
// Open programs

void TestProgramList::selectingOpenProgramBringsItsTabToFront()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(openWindow());
    QPushButton *edit = button("editButton");

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(edit, Qt::LeftButton);
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QTest::mouseClick(edit, Qt::LeftButton);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("a"));
    QCOMPARE(tabs->count(), 2);
    QVERIFY(!edit->isEnabled());

    clickItem(programs, itemNamed(programs, QStringLiteral("c")));
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("a"));
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));
    QCOMPARE(tabs->count(), 2);
}

void TestProgramList::activatingProgramShowsOrOpensItsTab()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(openWindow());
    QPushButton *edit = button("editButton");
    QSignalSpy activated(programs, &QListWidget::itemActivated);

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(edit, Qt::LeftButton);
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QTest::mouseClick(edit, Qt::LeftButton);
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QCOMPARE(tabs->count(), 2);

    // The user brings the other tab to the front, then double-clicks the
    // program that is already current in the list.
    clickTab(tabs, 1);
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("a"));
    doubleClickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QCOMPARE(activated.count(), 1);
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("a"));
    QCOMPARE(tabs->count(), 2);

    // A program that is not open opens in a new tab, once.
    doubleClickItem(programs, itemNamed(programs, QStringLiteral("c")));
    QCOMPARE(activated.count(), 2);
    QCOMPARE(tabs->count(), 3);
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("c"));
    doubleClickItem(programs, itemNamed(programs, QStringLiteral("c")));
    QCOMPARE(activated.count(), 3);
    QCOMPARE(tabs->count(), 3);
    QCOMPARE(window->getOpenedList(), (QStringList { "a", "b", "c" }));
}

// ---------------------------------------------------------------------------
// Deleting

namespace {

const QString deleteProjectQuestion = QStringLiteral(
    "При удалении проекта не удаляются программы входящие в него.\n"
    "Программы следует удалять по-отдельности.Восстановление удаленного проекта "
    "возможно средствами операционной системы\n\nУдалить проект p ?");

} // namespace

void TestProgramList::deletingCurrentProjectDisablesProjectBoxFirst()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    QPushButton *deleteProject = button("delprjButton");

    clickTab(selector, 1);
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    QVERIFY(deleteProject->isEnabled());

    // When the project's programs are dropped, the file must still be there.
    QVector<bool> fileWhenDropped;
    QObject connectionScope;
    connect(projectPrograms->model(), &QAbstractItemModel::modelAboutToBeReset, &connectionScope,
            [&fileWhenDropped] { fileWhenDropped << QFileInfo::exists(QStringLiteral("p.zup")); });

    BoxAnswerer answerer(QMessageBox::Yes);
    QTest::mouseClick(deleteProject, Qt::LeftButton);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.at(0).title, attentionTitle);
    QCOMPARE(answerer.shown.at(0).text, deleteProjectQuestion);
    QCOMPARE(answerer.shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Yes | QMessageBox::No));
    QCOMPARE(projectBox->title(), QString());
    QVERIFY(!projectBox->isEnabled());
    QCOMPARE(projectPrograms->count(), 0);
    QVERIFY(!QFileInfo::exists(QStringLiteral("p.zup")));
    QVERIFY(QFileInfo::exists(QStringLiteral("a.zu")));
    QVERIFY(!fileWhenDropped.isEmpty());
    QCOMPARE(fileWhenDropped.first(), true);
    QTRY_COMPARE_WITH_TIMEOUT(projects->count(), 0, watcherTimeout);
    QCOMPARE(itemTexts(programs), QStringList { "a" });
}

void TestProgramList::deletingProjectAnsweredNoKeepsFile()
{
    QVERIFY(writeFile(QStringLiteral("p.zup")));
    QVERIFY(openWindow());
    QPushButton *deleteProject = button("delprjButton");

    clickTab(selector, 1);
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QVERIFY(projectBox->isEnabled());
    QVERIFY(deleteProject->isEnabled());

    BoxAnswerer answerer(QMessageBox::No);
    QTest::mouseClick(deleteProject, Qt::LeftButton);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.at(0).text, deleteProjectQuestion);
    QVERIFY(QFileInfo::exists(QStringLiteral("p.zup")));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QVERIFY(projectBox->isEnabled());
    deliverPending();
    QCOMPARE(itemTexts(projects), QStringList { "p" });
}

// The user agrees to delete the current project; just then its file turns
// into a directory with something in it, which cannot be removed.
void TestProgramList::projectFileThatCannotBeRemovedIsReported()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "b.zu\n"));
    QVERIFY(openWindow());
    clickTab(selector, 1);
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));

    BoxAnswerer answerer(QMessageBox::Yes);
    bool questionAnswered = false;
    bool replaced = false;
    QElapsedTimer errorShown;
    answerer.answerWhen = [this, &questionAnswered, &replaced, &errorShown] {
        if (!questionAnswered) {
            questionAnswered = true;
            replaced = QFile::remove(QStringLiteral("p.zup")) && QDir().mkpath(QStringLiteral("p.zup/inside"));
            return true;
        }
        // The error is answered once the window has read the directory
        // again (or, failing that, after the watcher's time).
        if (!errorShown.isValid())
            errorShown.start();
        return !itemNamed(projects, QStringLiteral("p")) || errorShown.hasExpired(watcherTimeout);
    };
    QTest::mouseClick(button("delprjButton"), Qt::LeftButton);

    QVERIFY(replaced);
    QCOMPARE(answerer.shown.size(), 2);
    QCOMPARE(answerer.shown.at(0).text, deleteProjectQuestion);
    const ShownBox &error = answerer.shown.at(1);
    QCOMPARE(error.title, QStringLiteral("Ошибка удаления файла"));
    QFile stillThere(QStringLiteral("p.zup"));
    QVERIFY(!stillThere.remove());
    QCOMPARE(error.text, QStringLiteral("p.zup\n") + stillThere.errorString());
    QCOMPARE(error.icon, QMessageBox::Critical);
    QCOMPARE(error.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(entriesOf(QStringLiteral("p.zup")), QStringList { "inside" });
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "p.zup", "q.zup" }));
    // The project box shows the project the list now holds, not an empty one.
    QCOMPARE(itemTexts(projects), QStringList { "q" });
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("q"));
    QCOMPARE(projectBox->title(), QStringLiteral("q"));
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(itemTexts(projectPrograms), QStringList { "b" });
}

void TestProgramList::deletingProgramRemovesCheckedFiles()
{
    for (const char *name : { "a.zu", "a.st", "b.zu" })
        QVERIFY(writeFile(QLatin1String(name)));
    QVERIFY(openWindow());
    // The host announces the programs directory before the user works.
    window->newSettingsProgramsDir(QString(), tempDir.path());
    QCOMPARE(itemTexts(programs), (QStringList { "a", "b" }));

    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTest::mouseClick(button("delProgButton"), Qt::LeftButton);
    QPointer<QDialog> dialog;
    QTRY_VERIFY((dialog = window->findChild<QDialog *>(QStringLiteral("ProgDelete"))) != nullptr);
    QVERIFY(dialog->isVisible());
    QVERIFY(dialog->isModal());
    auto *nameLabel = dialog->findChild<QLabel *>(QStringLiteral("nameLabel"));
    auto *sourceBox = dialog->findChild<QCheckBox *>(QStringLiteral("sourceBox"));
    auto *stringsBox = dialog->findChild<QCheckBox *>(QStringLiteral("stringsBox"));
    auto *varnamesBox = dialog->findChild<QCheckBox *>(QStringLiteral("varnamesBox"));
    auto *buttonBox = dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QVERIFY(nameLabel && sourceBox && stringsBox && varnamesBox && buttonBox);
    QCOMPARE(nameLabel->text(), QStringLiteral("a"));
    QVERIFY(sourceBox->isEnabled());
    QVERIFY(stringsBox->isEnabled());
    QVERIFY(!varnamesBox->isEnabled());

    clickCheck(sourceBox);
    QVERIFY(sourceBox->isChecked());
    QVERIFY(!stringsBox->isChecked());
    QTest::mouseClick(buttonBox->button(QDialogButtonBox::Ok), Qt::LeftButton);

    QVERIFY(!QFileInfo::exists(QStringLiteral("a.zu")));
    QVERIFY(QFileInfo::exists(QStringLiteral("a.st")));
    QVERIFY(QFileInfo::exists(QStringLiteral("b.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), QStringList { "b" }, watcherTimeout);
    QTRY_VERIFY(dialog.isNull());
}

// ---------------------------------------------------------------------------
// Tool tips

void TestProgramList::hoverShowsFileDetails()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "program a"));
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "p.zu\n"));
    QVERIFY(openWindow());
    QTRY_VERIFY(!QToolTip::isVisible());

    // The project's program list looks for a program file: "p" has only a
    // project file, so nothing is shown for it.
    clickTab(selector, 1);
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "p" });
    QVERIFY(projectPrograms->isEnabled());
    QSignalSpy enteredMember(projectPrograms, &QListWidget::itemEntered);
    hoverItem(projectPrograms, projectPrograms->item(0));
    QTRY_COMPARE(enteredMember.count(), 1);
    QVERIFY(!QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), QString());

    // A project: its .zup file.
    QSignalSpy enteredProject(projects, &QListWidget::itemEntered);
    hoverItem(projects, itemNamed(projects, QStringLiteral("p")));
    QTRY_COMPARE(enteredProject.count(), 1);
    QTRY_COMPARE(QToolTip::text(), expectedToolTip(QStringLiteral("p.zup")));
    QCOMPARE(QToolTip::text().section(QLatin1Char('\n'), 0, 0),
             QDir(tempDir.path()).absoluteFilePath(QStringLiteral("p.zup")));

    // A program.
    clickTab(selector, 0);
    QSignalSpy enteredProgram(programs, &QListWidget::itemEntered);
    hoverItem(programs, itemNamed(programs, QStringLiteral("a")));
    QTRY_COMPARE(enteredProgram.count(), 1);
    const QString expected = expectedToolTip(QStringLiteral("a.zu"));
    QTRY_COMPARE(QToolTip::text(), expected);
    const QStringList lines = QToolTip::text().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 5);
    QCOMPARE(lines.at(0), QFileInfo(QStringLiteral("a.zu")).absoluteFilePath());
    QVERIFY(lines.at(1).startsWith(QStringLiteral("Владелец:\t")));
    QVERIFY(lines.at(2).startsWith(QStringLiteral("Изменен:\t")));
    QVERIFY(lines.at(3).startsWith(QStringLiteral("Прочитан:\t")));
    QVERIFY(lines.at(4).startsWith(QStringLiteral("Создан:\t")));
    QVERIFY(!lines.at(4).endsWith(QStringLiteral("\t")));
}

// ---------------------------------------------------------------------------
// Programs directory

void TestProgramList::newProgramsDirFromHostRefillsLists()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(writeFile(QStringLiteral("a.zup")));
    const QString other = tempDir.path() + QStringLiteral("/other");
    QVERIFY(QDir().mkpath(other));
    QVERIFY(writeFile(other + QStringLiteral("/o1.zu")));
    QVERIFY(writeFile(other + QStringLiteral("/o2.zu")));
    QVERIFY(writeFile(other + QStringLiteral("/op.zup")));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(programs), QStringList { "a" });
    QCOMPARE(itemTexts(projects), QStringList { "a" });

    QSignalSpy changes(window, &EditWindow::changeVariant);
    window->newSettingsProgramsDir(QStringLiteral("hostArg"), other);

    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.at(0).at(0).toString(), QStringLiteral("programsDir"));
    QCOMPARE(changes.at(0).at(1).value<QVariant>(), QVariant(other));
    QCOMPARE(changes.at(0).at(2).toBool(), false);
    QCOMPARE(changes.at(0).at(3).toBool(), true);
    QCOMPARE(canonical(QDir::currentPath()), canonical(other));
    QCOMPARE(window->currentProgramsDir(), other);
    QCOMPARE(itemTexts(programs), (QStringList { "o1", "o2" }));
    QCOMPARE(itemTexts(projects), QStringList { "op" });
    QCOMPARE(programs->currentRow(), 0);
}

void TestProgramList::programsDirSettingRefillsLists()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    const QString other = tempDir.path() + QStringLiteral("/other");
    QVERIFY(QDir().mkpath(other));
    QVERIFY(writeFile(other + QStringLiteral("/o1.zu")));
    QVERIFY(writeFile(other + QStringLiteral("/op.zup")));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(programs), QStringList { "a" });

    QSignalSpy changes(window, &EditWindow::changeVariant);
    setProgramsDirSetting(other);

    for (const QList<QVariant> &change : qAsConst(changes))
        QVERIFY(change.at(0).toString() != QLatin1String("programsDir"));
    QCOMPARE(canonical(QDir::currentPath()), canonical(other));
    QCOMPARE(window->currentProgramsDir(), other);
    QCOMPARE(itemTexts(programs), QStringList { "o1" });
    QCOMPARE(itemTexts(projects), QStringList { "op" });
}

// A programs directory that is not there is reported once, however often
// the settings name it; the editor goes on in the directory it had.
void TestProgramList::missingProgramsDirSettingReportedOnce()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(openWindow());
    const QString before = QDir::currentPath();
    const QString missing = tempDir.path() + QStringLiteral("/nowhere");
    BoxAnswerer answerer(QMessageBox::Ok);

    setProgramsDirSetting(missing);
    setProgramsDirSetting(missing);

    QCOMPARE(answerer.shown.size(), 1);
    QCOMPARE(answerer.shown.first().title, QStringLiteral("ВНИМАНИЕ!"));
    QCOMPARE(answerer.shown.first().icon, QMessageBox::Critical);
    QCOMPARE(answerer.shown.first().text,
             QStringLiteral("Каталог программ «") + missing
                 + QStringLiteral("» не найден или недоступен.\nПрограммы остаются в каталоге «")
                 + before + QStringLiteral("»."));
    QCOMPARE(QDir::currentPath(), before);
    QVERIFY(window->currentProgramsDir() != missing);
    QCOMPARE(itemTexts(programs), QStringList { "a" });
    // The old directory is still watched.
    QVERIFY(writeFile(QStringLiteral("b.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "a", "b" }), watcherTimeout);

    // Once a directory was entered, the missing one is news again.
    setProgramsDirSetting(tempDir.path());
    setProgramsDirSetting(missing);
    QCOMPARE(answerer.shown.size(), 2);
}

// The host's new directory is taken only if it can be entered: the host
// hears no change of the setting otherwise.
void TestProgramList::missingProgramsDirFromHostNotTaken()
{
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QVERIFY(openWindow());
    const QString before = QDir::currentPath();
    const QString file = tempDir.path() + QStringLiteral("/a.zu");
    BoxAnswerer answerer(QMessageBox::Ok);
    QSignalSpy changes(window, &EditWindow::changeVariant);

    window->newSettingsProgramsDir(QStringLiteral("hostArg"), file);

    QCOMPARE(answerer.shown.size(), 1);
    QVERIFY(answerer.shown.first().text.contains(file));
    QCOMPARE(changes.count(), 0);
    QCOMPARE(QDir::currentPath(), before);
    QVERIFY(window->currentProgramsDir() != file);
    QCOMPARE(itemTexts(programs), QStringList { "a" });
}

// The host hands the plug-in its settings with the programs directory.
void TestProgramList::setProgramsDirSetting(const QString &dir)
{
    SettingElement element;
    element.key = QStringLiteral("programsDir");
    element.value = dir;
    element.type = QVariant::String;
    plugin->exchangeSettings(SettingsList { element }, nullptr, nullptr);
}

void TestProgramList::listsFollowDiskInNewProgramsDir_data()
{
    QTest::addColumn<bool>("announcedByHost");
    QTest::newRow("announced by the host") << true;
    QTest::newRow("given in the settings") << false;
}

// Once the programs directory has changed, files made there by other
// programs show up by themselves; the old directory no longer counts.
void TestProgramList::listsFollowDiskInNewProgramsDir()
{
    QFETCH(bool, announcedByHost);
    QVERIFY(writeFile(QStringLiteral("a.zu")));
    QTemporaryDir other;
    QVERIFY(other.isValid());
    QVERIFY(writeFile(other.filePath(QStringLiteral("o1.zu"))));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(programs), QStringList { "a" });

    if (announcedByHost)
        window->newSettingsProgramsDir(QString(), other.path());
    else
        setProgramsDirSetting(other.path());
    QCOMPARE(itemTexts(programs), QStringList { "o1" });

    // Only the new directory changes here: only a watch on it brings these in.
    QVERIFY(writeFile(other.filePath(QStringLiteral("o2.zu"))));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "o1", "o2" }), watcherTimeout);
    QVERIFY(writeFile(other.filePath(QStringLiteral("op.zup"))));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "op" }, watcherTimeout);
    QVERIFY(QFile::remove(other.filePath(QStringLiteral("o1.zu"))));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), QStringList { "o2" }, watcherTimeout);

    // A program made in the old directory is not one of the list's.
    QVERIFY(writeFile(tempDir.path() + QStringLiteral("/old.zu")));
    QVERIFY(writeFile(other.filePath(QStringLiteral("o3.zu"))));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), (QStringList { "o2", "o3" }), watcherTimeout);
    QCOMPARE(itemTexts(projects), QStringList { "op" });
}

QTEST_MAIN(TestProgramList)
#include "tst_programlist.moc"
