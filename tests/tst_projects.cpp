// Projects, driven as a user drives them: the projects page of the selector,
// the current project's box and its buttons, the add button of the programs
// page, answers to the message boxes and to the new-item dialog, and project
// files written behind the window's back, well formed or not.

#include <QtTest>

#include <QAbstractButton>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QScopedPointer>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QToolTip>

#include <cerrno>
#include <functional>

#include "boxanswerer.h"
#include "editwindow.h"
#include "testsupport.h"
#include "textedit.h"
#include "windowfixture.h"
#include "zusourcecode.h"

Q_DECLARE_METATYPE(QListWidgetItem *)

namespace {

const QString placeholderText = QStringLiteral("Задайте имя");
const QString attentionTitle = QStringLiteral("ВНИМАНИЕ!");
const QString projectFileErrorText = QStringLiteral("Ошибка при открытии файла проекта!");

QString removeQuestion(const QString &program)
{
    return QStringLiteral("Программа будет удалена только из списка текущего проекта.\n"
                          "Программа сохранена на постоянном носителе и может быть включена в проект снова.\n\n"
                          "Удалить программу ")
           + program + QStringLiteral(" из проекта?");
}

QString projectOpenErrorText(const QString &fileName, const QString &reason)
{
    return projectFileErrorText + QLatin1Char('\n') + fileName + QLatin1Char('\n') + reason;
}

// Why the file cannot be opened for reading, in the system's words.
QString readOpenError(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QStringLiteral("<opened>") : file.errorString();
}

// Why the file cannot be replaced by a new one, in the system's words.
QString replaceOpenError(const QString &path)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) ? QStringLiteral("<opened>") : file.errorString();
}

// "программа" and "проект" in windows-1251.
const QByteArray programCp1251("\xef\xf0\xee\xe3\xf0\xe0\xec\xec\xe0");
const QByteArray projectCp1251("\xef\xf0\xee\xe5\xea\xf2");

// What the reading rules make of a project file: CR, LF and CR LF each
// end a line, reading stops at the first empty line, names are
// windows-1251, and a line that ends in ".zu" loses that ending while any
// other line is a name as it stands.
QStringList namesByReadingRules(const QByteArray &data)
{
    QByteArray text = data;
    text.replace("\r\n", "\n");
    text.replace('\r', '\n');
    QList<QByteArray> lines = text.split('\n');
    if (text.endsWith('\n'))
        lines.removeLast();
    QTextCodec *codec = QTextCodec::codecForName("windows-1251");
    QStringList names;
    for (const QByteArray &line : lines) {
        if (line.isEmpty())
            break;
        QString name = codec->toUnicode(line);
        if (name.endsWith(QStringLiteral(".zu")))
            name.chop(3);
        names << name;
    }
    return names;
}

} // namespace

class TestProjects : public QObject, protected WindowFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Enabled states
    void projectButtonsWithoutProject();
    void projectButtonsOnPlaceholder();
    void wholeProjectNeedsNonEmptyProgram();
    void programButtonsFollowRowInProject();
    void openProgramCannotBeRemovedFromProject();

    // Reading the project file
    void emptyLineEndsProjectFile();
    void projectLineLosesOnlyItsExtension_data();
    void projectLineLosesOnlyItsExtension();
    void projectLineWithoutExtensionIsTakenWhole_data();
    void projectLineWithoutExtensionIsTakenWhole();
    void anyLineEndEndsProjectLine_data();
    void anyLineEndEndsProjectLine();
    void binaryProjectFileIsReadByTheRules();
    void veryLongLinesAreRead();
    void tenMegabyteProjectFileOpens();
    void unreadableProjectFileShowsError();

    // Editing the project
    void addingAppendsProgramToFile();
    void addingSameProgramTwiceGivesTwoLines();
    void removingAsksAndRewritesFile();
    void removingLastProgramLeavesEmptyFile();
    void movingUpAndDownRewritesFile();
    void movingPastEitherEndChangesNothing();
    void movedProgramStaysSelectedForNextMove();
    void cyrillicProgramNameSurvivesProjectFile();
    void unwritableProjectFileShowsError();
    void projectWhereNoFileCanBeMadeIsNotRewrittenInPlace();
    void rewriteKeepsWhatFollowsTheList_data();
    void rewriteKeepsWhatFollowsTheList();
    void failedProjectWriteKeepsOldFile_data();
    void failedProjectWriteKeepsOldFile();
    void unencodableProgramNameIsNotWrittenToProject_data();
    void unencodableProgramNameIsNotWrittenToProject();

    // Opening programs
    void openAllOpensEachProgramOnceInOrder();
    void openAllSkipsBadProgramLinesWithOneBox();
    void openAllNamesMissingProgramsInOneBox();
    void activatingProjectOpensItsPrograms();
    void activatingProjectProgramShowsOrOpensIt();

    // Names
    void renamingProjectInPlaceRenamesOnlyItsFile();
    void selectingProjectByNameMatchesExactly();
    void programInProjectMatchesExactly();

    // New project or program from the new-item dialog
    void newProjectFromDialog_data();
    void newProjectFromDialog();
    void newProgramFromDialogMakesNoProject();
    void programAppearingUnderDialogKeepsItsText();
    void projectAppearingUnderDialogIsNotRewritten();

    // Saving
    void savingChangedProgramsSkipsCurrentTab();
    void savingEntireProjectSavesCurrentAndProjectFile();

    // Last: a failure here may end the process.
    void removingSurvivesRefillDuringQuestion();

private:
    bool openWindow();
    bool settle();
    ZuSourceCode *editorOf(const QString &name) const;
    void checkProjectButtons(bool newProject, bool openAll, bool rename, bool debug, bool remove);
    void checkProgramButtons(bool edit, bool up, bool down, bool remove);
    void addProgram(const QString &name);
    void checkProjectReadAs(const QByteArray &content, const QStringList &names);
    void chooseInNewItemDialog(const QString &name, bool project,
                               const std::function<void()> &whileOpen = nullptr);

    QScopedPointer<QTemporaryDir> syncDir;
    QScopedPointer<QFileSystemWatcher> syncWatcher;
    QScopedPointer<BoxAnswerer> boxes;
    int syncCount = 0;
    QGroupBox *projectBox = nullptr;
    QWidget *projectsPage = nullptr;
    QWidget *programsPage = nullptr;
};

void TestProjects::init()
{
    qRegisterMetaType<QListWidgetItem *>();
    QVERIFY(tempDir.make());
    syncDir.reset(new QTemporaryDir);
    QVERIFY(syncDir->isValid());
    syncWatcher.reset(new QFileSystemWatcher({ syncDir->path() }));
    // Any box nobody expects is closed with Ok and shows in the record.
    boxes.reset(new BoxAnswerer(QMessageBox::Ok, BoxAnswerer::RecordWhenShown));
    // The window lists the current directory when it is made and watches it.
    QVERIFY(tempDir.enter());
}

void TestProjects::cleanup()
{
    QToolTip::hideText();
    deletePluginWindow();
    projectBox = nullptr;
    projectsPage = programsPage = nullptr;
    boxes.reset();
    syncWatcher.reset();
    syncDir.reset();
    tempDir.leave();
}

// Makes the window in the current directory, shows and activates it, and
// turns the selector to the projects page.
bool TestProjects::openWindow()
{
    if (!makePluginWindow())
        return false;
    projectBox = window->findChild<QGroupBox *>(QStringLiteral("currProjBox"));
    projectsPage = window->findChild<QWidget *>(QStringLiteral("projectsTab"));
    programsPage = window->findChild<QWidget *>(QStringLiteral("programsTab"));
    if (!projectBox || !projectsPage || !programsPage)
        return false;
    for (const char *name : { "newprjButton", "editAllPrjButton", "renamePrjButton", "debugProjButton",
                              "delprjButton", "newProgPrjButton", "editProgPrjButton", "upInPrjButton",
                              "downInPrjButton", "removeProgPrjButton", "addprjButton", "editButton" }) {
        if (!button(name))
            return false;
    }
    if (!showAndActivate(window))
        return false;
    clickTab(selector, selector->indexOf(projectsPage));
    return selector->currentWidget() == projectsPage && projects->isVisible();
}

// Waits until the file-system notifications already queued, the window's
// among them, have been delivered: a file made now in a directory of the
// test's own is reported together with or after them.
bool TestProjects::settle()
{
    QSignalSpy changed(syncWatcher.data(), &QFileSystemWatcher::directoryChanged);
    if (!writeFile(syncDir->filePath(QString::number(++syncCount))))
        return false;
    if (!QTest::qWaitFor([&changed] { return !changed.isEmpty(); }, watcherTimeout))
        return false;
    deliverPending();
    return true;
}

ZuSourceCode *TestProjects::editorOf(const QString &name) const
{
    for (int i = 0; i < tabs->count(); ++i) {
        if (tabs->tabText(i) == name)
            return tabs->widget(i)->findChild<ZuSourceCode *>();
    }
    return nullptr;
}

void TestProjects::checkProjectButtons(bool newProject, bool openAll, bool rename, bool debug, bool remove)
{
    QCOMPARE(button("newprjButton")->isEnabled(), newProject);
    QCOMPARE(button("editAllPrjButton")->isEnabled(), openAll);
    QCOMPARE(button("renamePrjButton")->isEnabled(), rename);
    QCOMPARE(button("debugProjButton")->isEnabled(), debug);
    QCOMPARE(button("delprjButton")->isEnabled(), remove);
}

void TestProjects::checkProgramButtons(bool edit, bool up, bool down, bool remove)
{
    QVERIFY(button("newProgPrjButton")->isEnabled());
    QCOMPARE(button("editProgPrjButton")->isEnabled(), edit);
    QCOMPARE(button("upInPrjButton")->isEnabled(), up);
    QCOMPARE(button("downInPrjButton")->isEnabled(), down);
    QCOMPARE(button("removeProgPrjButton")->isEnabled(), remove);
}

// Turns to the programs page, selects the program, clicks the add button
// and turns back to the projects page.
void TestProjects::addProgram(const QString &name)
{
    clickTab(selector, selector->indexOf(programsPage));
    QListWidgetItem *item = itemNamed(programs, name);
    QVERIFY2(item, qPrintable(name));
    clickItem(programs, item);
    QVERIFY(button("addprjButton")->isEnabled());
    QTest::mouseClick(button("addprjButton"), Qt::LeftButton);
    clickTab(selector, selector->indexOf(projectsPage));
}

// The host asks for a program that does not exist: the new-item dialog
// opens, offering a project. Once `whileOpen` has run the user chooses a
// project or a program and clicks OK.
void TestProjects::chooseInNewItemDialog(const QString &name, bool project, const std::function<void()> &whileOpen)
{
    window->addProgListAndEdit(name);
    QPointer<QDialog> dialog;
    QTRY_VERIFY((dialog = window->findChild<QDialog *>(QStringLiteral("zuporzu"))) && dialog->isVisible());
    auto *asProject = dialog->findChild<QRadioButton *>(QStringLiteral("radioButton"));
    auto *asProgram = dialog->findChild<QRadioButton *>(QStringLiteral("radioButton_2"));
    QVERIFY(asProject && asProgram);
    QVERIFY(asProject->isChecked());
    if (!project) {
        clickRadio(asProgram);
        QVERIFY(asProgram->isChecked());
    }
    if (whileOpen)
        whileOpen();
    auto *buttons = dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"));
    QVERIFY(buttons);
    QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QTRY_VERIFY(!dialog || !dialog->isVisible());
}

// ---------------------------------------------------------------------------
// Enabled states

void TestProjects::projectButtonsWithoutProject()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(openWindow());

    // No project at all: only a new one can be made.
    checkProjectButtons(true, false, false, false, false);
    QVERIFY(!projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QString());
    QCOMPARE(projectPrograms->count(), 0);
    clickTab(selector, selector->indexOf(programsPage));
    clickItem(programs, itemNamed(programs, QStringLiteral("a")));
    QVERIFY(button("editButton")->isEnabled());
    QVERIFY(!button("addprjButton")->isEnabled());

    // A project appears from outside and becomes current.
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "p" }, watcherTimeout);
    QVERIFY(settle());
    checkProjectButtons(true, true, true, true, true);
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });

    // It goes again: back to no project.
    QVERIFY(QFile::remove(QStringLiteral("p.zup")));
    QTRY_COMPARE_WITH_TIMEOUT(projects->count(), 0, watcherTimeout);
    QVERIFY(settle());
    checkProjectButtons(true, false, false, false, false);
    QVERIFY(!projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QString());
    QCOMPARE(projectPrograms->count(), 0);
    QVERIFY(!button("addprjButton")->isEnabled());
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::projectButtonsOnPlaceholder()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    checkProjectButtons(true, true, true, true, true);
    QVERIFY(projectBox->isEnabled());

    // The new project's unnamed item is no project.
    QTest::mouseClick(button("newprjButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(projects)) != nullptr);
    QCOMPARE(projects->currentItem()->text(), placeholderText);
    checkProjectButtons(true, false, false, false, false);
    QVERIFY(!projectBox->isEnabled());
    QCOMPARE(projectBox->title(), QString());
    QCOMPARE(projectPrograms->count(), 0);
    QVERIFY(!button("addprjButton")->isEnabled());

    // Escape drops it; the project file was not touched.
    QTest::keyClick(editor, Qt::Key_Escape);
    QTRY_VERIFY(!openEditor(projects));
    QCOMPARE(itemTexts(projects), QStringList { "p" });
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\n"));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "p.zup" }));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::wholeProjectNeedsNonEmptyProgram()
{
    QVERIFY(writeFile(QStringLiteral("empty.zu")));
    QVERIFY(writeFile(QStringLiteral("full.zu"), "F\n"));
    QVERIFY(writeFile(QStringLiteral("absent.zup"), "missing.zu\n"));
    QVERIFY(writeFile(QStringLiteral("blank.zup"), "missing.zu\nempty.zu\n"));
    QVERIFY(writeFile(QStringLiteral("filled.zup"), "missing.zu\nempty.zu\nfull.zu\n"));
    QVERIFY(writeFile(QStringLiteral("nothing.zup")));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(projects), (QStringList { "absent", "blank", "filled", "nothing" }));

    struct Case
    {
        const char *project;
        QStringList programs;
        bool whole;
    };
    const Case cases[] = {
        { "blank", { "missing", "empty" }, false },
        { "filled", { "missing", "empty", "full" }, true },
        { "absent", { "missing" }, false },
        { "nothing", {}, false },
        { "filled", { "missing", "empty", "full" }, true },
    };
    for (const Case &c : cases) {
        const QString name = QLatin1String(c.project);
        clickItem(projects, itemNamed(projects, name));
        QCOMPARE(projects->currentItem()->text(), name);
        QCOMPARE(projectBox->title(), name);
        QVERIFY(projectBox->isEnabled());
        QCOMPARE(itemTexts(projectPrograms), c.programs);
        checkProjectButtons(true, c.whole, true, c.whole, true);
        // No program of the project is selected yet.
        QCOMPARE(projectPrograms->currentRow(), -1);
        QVERIFY(!button("editProgPrjButton")->isEnabled());
        QVERIFY(!button("upInPrjButton")->isEnabled());
        QVERIFY(!button("downInPrjButton")->isEnabled());
        QVERIFY(!button("removeProgPrjButton")->isEnabled());
    }
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::programButtonsFollowRowInProject()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\n"));
    QVERIFY(writeFile(QStringLiteral("s.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));

    clickRow(projectPrograms, 0);
    checkProgramButtons(true, false, true, true);
    clickRow(projectPrograms, 1);
    checkProgramButtons(true, true, true, true);
    clickRow(projectPrograms, 2);
    checkProgramButtons(true, true, false, true);

    // Another project: its list comes without a selection.
    clickItem(projects, itemNamed(projects, QStringLiteral("s")));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    QCOMPARE(projectPrograms->currentRow(), -1);
    QVERIFY(!button("editProgPrjButton")->isEnabled());
    QVERIFY(!button("upInPrjButton")->isEnabled());
    QVERIFY(!button("downInPrjButton")->isEnabled());
    QVERIFY(!button("removeProgPrjButton")->isEnabled());
    // Its only program is both first and last.
    clickRow(projectPrograms, 0);
    checkProgramButtons(true, false, false, true);

    // A program open in a tab can be moved but neither opened nor removed.
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    clickRow(projectPrograms, 1);
    QTest::mouseClick(button("editProgPrjButton"), Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    clickRow(projectPrograms, 0);
    checkProgramButtons(true, false, true, true);
    clickRow(projectPrograms, 1);
    checkProgramButtons(false, true, true, false);
    clickRow(projectPrograms, 2);
    checkProgramButtons(true, true, false, true);
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::openProgramCannotBeRemovedFromProject()
{
    for (const char *name : { "a.zu", "b.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\n"));
    QVERIFY(openWindow());
    boxes->answer = QMessageBox::Yes;

    clickRow(projectPrograms, 0);
    QTest::mouseClick(button("editProgPrjButton"), Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), QStringList { "a" });
    QVERIFY(settle());
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("a")));
    QVERIFY(!button("removeProgPrjButton")->isEnabled());
    QVERIFY(!button("editProgPrjButton")->isEnabled());

    // The click on the disabled button asks nothing and changes nothing.
    QTest::mouseClick(button("removeProgPrjButton"), Qt::LeftButton);
    deliverPending();
    QVERIFY(boxes->shown.isEmpty());
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\n"));

    // Once its tab is closed, it can be removed.
    QAbstractButton *close = closeButtonOf(tabs, 0);
    QVERIFY(close);
    QTest::mouseClick(close, Qt::LeftButton);
    QCOMPARE(tabs->count(), 0);
    QVERIFY(settle());
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("a")));
    QVERIFY(button("removeProgPrjButton")->isEnabled());
    QVERIFY(button("editProgPrjButton")->isEnabled());
    QTest::mouseClick(button("removeProgPrjButton"), Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).text, removeQuestion(QStringLiteral("a")));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "b" });
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("b.zu\n"));
    QCOMPARE(fileBytes(QStringLiteral("a.zu")), QByteArray("X\n"));
}

// ---------------------------------------------------------------------------
// Reading the project file

void TestProjects::emptyLineEndsProjectFile()
{
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\n\nc.zu\nd.zu\n"));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "\na.zu\n"));
    QVERIFY(openWindow());

    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    // A leading empty line leaves the project empty, but still current.
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    QCOMPARE(projectBox->title(), QStringLiteral("q"));
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(projectPrograms->count(), 0);
    // Reading changed nothing on disk.
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\n\nc.zu\nd.zu\n"));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::projectLineLosesOnlyItsExtension_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("alpha.zu") << QByteArray("alpha.zu\n") << QStringList { "alpha" };
    QTest::newRow("a.zu.zu") << QByteArray("a.zu.zu\n") << QStringList { "a.zu" };
    QTest::newRow("extension inside too") << QByteArray("pre.zu post.zu\n") << QStringList { "pre.zu post" };
    QTest::newRow("extension only") << QByteArray(".zu\nz.zu\n") << (QStringList { "", "z" });
    QTest::newRow("no final line feed") << QByteArray("a.zu\nb.zu") << (QStringList { "a", "b" });
    QTest::newRow("empty file") << QByteArray() << QStringList();
}

void TestProjects::projectLineLosesOnlyItsExtension()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, names);
    checkProjectReadAs(content, names);
}

void TestProjects::projectLineWithoutExtensionIsTakenWhole_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("alpha") << QByteArray("alpha\n") << QStringList { "alpha" };
    QTest::newRow("case matters") << QByteArray("A.ZU\n") << QStringList { "A.ZU" };
    QTest::newRow("no dot") << QByteArray("azu\n") << QStringList { "azu" };
    QTest::newRow("project extension") << QByteArray("x.zup\n") << QStringList { "x.zup" };
    QTest::newRow("text after extension") << QByteArray("pre.zu post\n") << QStringList { "pre.zu post" };
    QTest::newRow("one character") << QByteArray("b\nc.zu\n") << (QStringList { "b", "c" });
    QTest::newRow("blank is not empty") << QByteArray("a.zu\n \nc.zu\n") << (QStringList { "a", " ", "c" });
    QTest::newRow("no final line feed or extension") << QByteArray("a.zu\nbeta") << (QStringList { "a", "beta" });
}

void TestProjects::projectLineWithoutExtensionIsTakenWhole()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, names);
    checkProjectReadAs(content, names);
}

// The project p, read when the window opens, lists the names; the
// reference reader agrees.
void TestProjects::checkProjectReadAs(const QByteArray &content, const QStringList &names)
{
    QVERIFY(writeFile(QStringLiteral("p.zup"), content));
    QVERIFY(openWindow());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), names);
    QCOMPARE(namesByReadingRules(content), names);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::anyLineEndEndsProjectLine_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("names");

    // With or without the extension, the name ends before the line end.
    QTest::newRow("CR LF") << QByteArray("a.zu\r\nbb\r\nc.zu\r\n") << QStringList { "a", "bb", "c" };
    QTest::newRow("CR alone") << QByteArray("a.zu\rb.zu\r") << QStringList { "a", "b" };
    QTest::newRow("all three") << QByteArray("a.zu\rbb\r\nc.zu\nd") << QStringList { "a", "bb", "c", "d" };
    // A line holding only a line end is an empty line, whichever it is.
    QTest::newRow("CR LF empty line") << QByteArray("a.zu\r\n\r\nz.zu\r\n") << QStringList { "a" };
    QTest::newRow("CR empty line") << QByteArray("a.zu\r\rz.zu\r") << QStringList { "a" };
    QTest::newRow("CR, then CR LF") << QByteArray("a.zu\r\r\nz.zu\n") << QStringList { "a" };
    QTest::newRow("LF, then CR") << QByteArray("a.zu\n\rz.zu\n") << QStringList { "a" };
}

void TestProjects::anyLineEndEndsProjectLine()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, names);
    checkProjectReadAs(content, names);
}

void TestProjects::binaryProjectFileIsReadByTheRules()
{
    // Bytes a text editor would not write: NUL, control characters, 0xFF
    // and the upper half of windows-1251, in lines that end in LF, CR and
    // CR LF.
    const QByteArray crafted = QByteArray("x\0y.zu\n", 7) + QByteArray("\xff.zu\r")
                               + QByteArray("\x01\x7f\x80\xa8.zu\n") + QByteArray("\xe0\0.zu\r\n", 7)
                               + QByteArray("\xff\xfe\n");
    QVERIFY(writeFile(QStringLiteral("a.zup"), crafted));

    // A pseudo-random blob of every byte value.
    QRandomGenerator generator(20240611);
    QByteArray blob;
    for (int i = 0; i < 256 * 1024; ++i)
        blob += char(generator.bounded(256));
    // Long enough a run of lines that the first empty one comes late.
    QByteArray noEmptyStart;
    for (int i = 0; i < 200; ++i)
        noEmptyStart += blob.mid(i * 97, 96).replace('\n', 'n').replace('\r', 'r') + '\n';
    blob.prepend(noEmptyStart);
    QVERIFY(writeFile(QStringLiteral("b.zup"), blob));
    QVERIFY(openWindow());

    QCOMPARE(projectBox->title(), QStringLiteral("a"));
    const QStringList expected { QStringLiteral("x") + QChar(0) + QStringLiteral("y"), QString(QChar(0x044f)),
                                 QString(QChar(0x01)) + QChar(0x7f) + QChar(0x0402) + QChar(0x0401),
                                 QString(QChar(0x0430)) + QChar(0), QString(QChar(0x044f)) + QChar(0x044e) };
    QCOMPARE(itemTexts(projectPrograms), expected);
    QCOMPARE(namesByReadingRules(crafted), expected);

    clickItem(projects, itemNamed(projects, QStringLiteral("b")));
    QCOMPARE(projectBox->title(), QStringLiteral("b"));
    const QStringList blobNames = namesByReadingRules(blob);
    QVERIFY(blobNames.size() > 200);
    QCOMPARE(itemTexts(projectPrograms), blobNames);
    // Nothing of it names an existing program.
    checkProjectButtons(true, false, true, false, true);
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::veryLongLinesAreRead()
{
    const QByteArray longName(1024 * 1024, 'a');
    const QByteArray otherName(1024 * 1024, 'b');
    QVERIFY(writeFile(QStringLiteral("a.zup"), "x.zu\n"));
    QVERIFY(writeFile(QStringLiteral("long.zup"), longName + ".zu\n" + otherName + "\nc.zu\n" + longName + ".zu"));
    QVERIFY(openWindow());

    QElapsedTimer timer;
    timer.start();
    clickItem(projects, itemNamed(projects, QStringLiteral("long")));
    const qint64 elapsed = timer.elapsed();
    qInfo("Project of three 1 MB lines read in %lld ms", elapsed);
    QVERIFY2(elapsed < 60000, qPrintable(QStringLiteral("%1 ms").arg(elapsed)));

    QCOMPARE(projectBox->title(), QStringLiteral("long"));
    QCOMPARE(projectPrograms->count(), 4);
    QCOMPARE(projectPrograms->item(0)->text(), QString::fromLatin1(longName));
    // Without ".zu" the line is the name as it stands.
    QCOMPARE(projectPrograms->item(1)->text(), QString::fromLatin1(otherName));
    QCOMPARE(projectPrograms->item(2)->text(), QStringLiteral("c"));
    QCOMPARE(projectPrograms->item(3)->text(), QString::fromLatin1(longName));

    clickItem(projects, itemNamed(projects, QStringLiteral("a")));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "x" });
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::tenMegabyteProjectFileOpens()
{
    const int size = 10 * 1024 * 1024;
    QByteArray big;
    big.reserve(size + 16);
    int lines = 0;
    while (big.size() + 13 <= size) {
        big += QByteArray::number(lines).rightJustified(8, '0').prepend('p') + ".zu\n";
        ++lines;
    }
    QCOMPARE(big.size() / 13, lines);
    QVERIFY(writeFile(QStringLiteral("big.zup"), big));
    QVERIFY(writeFile(QStringLiteral("a.zup"), "x.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(projectBox->title(), QStringLiteral("a"));

    QElapsedTimer timer;
    timer.start();
    clickItem(projects, itemNamed(projects, QStringLiteral("big")));
    const qint64 opened = timer.elapsed();
    QCOMPARE(projectBox->title(), QStringLiteral("big"));
    QCOMPARE(projectPrograms->count(), lines);
    QCOMPARE(projectPrograms->item(0)->text(), QStringLiteral("p00000000"));
    QCOMPARE(projectPrograms->item(lines - 1)->text(),
             QStringLiteral("p") + QString::number(lines - 1).rightJustified(8, QLatin1Char('0')));
    // None of the programs exists.
    checkProjectButtons(true, false, true, false, true);

    // Back to the small project: the big list goes.
    timer.restart();
    clickItem(projects, itemNamed(projects, QStringLiteral("a")));
    const qint64 left = timer.elapsed();
    QCOMPARE(itemTexts(projectPrograms), QStringList { "x" });
    qInfo("10 MB project (%d lines) opened in %lld ms, left in %lld ms", lines, opened, left);
    QVERIFY2(opened < 120000, qPrintable(QStringLiteral("%1 ms").arg(opened)));
    QVERIFY2(left < 120000, qPrintable(QStringLiteral("%1 ms").arg(left)));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::unreadableProjectFileShowsError()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    boxes->snapshot = [this] { return itemTexts(projectPrograms); };

    // A listed project whose file has no file behind it.
    projects->addItem(QStringLiteral("ghost"));
    clickItem(projects, itemNamed(projects, QStringLiteral("ghost")));
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).text,
             projectOpenErrorText(QStringLiteral("ghost.zup"), readOpenError(QStringLiteral("ghost.zup"))));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(boxes->shown.at(0).snapshot, QStringList());
    QCOMPARE(projectPrograms->count(), 0);
    checkProjectButtons(true, false, true, false, true);
    QVERIFY(!QFile::exists(QStringLiteral("ghost.zup")));

    // A project file that vanishes just before the user selects it.
    QVERIFY(settle());
    QVERIFY(QFile::remove(QStringLiteral("q.zup")));
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    QCOMPARE(boxes->shown.size(), 2);
    QCOMPARE(boxes->shown.at(1).title, attentionTitle);
    QCOMPARE(boxes->shown.at(1).text,
             projectOpenErrorText(QStringLiteral("q.zup"), readOpenError(QStringLiteral("q.zup"))));
    QCOMPARE(boxes->shown.at(1).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(1).snapshot, QStringList());
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "p" }, watcherTimeout);
    QVERIFY(settle());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "p.zup" }));
}

// ---------------------------------------------------------------------------
// Editing the project

void TestProjects::addingAppendsProgramToFile()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(openWindow());

    addProgram(QStringLiteral("c"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "c" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nc.zu\n"));
    QVERIFY(settle());
    addProgram(QStringLiteral("b"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "c", "b" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nc.zu\nb.zu\n"));
    QVERIFY(settle());

    // The project read back shows the same.
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "c", "b" }));
    // A program of the project cannot be added from the list again.
    clickTab(selector, selector->indexOf(programsPage));
    clickItem(programs, itemNamed(programs, QStringLiteral("c")));
    QVERIFY(!button("addprjButton")->isEnabled());
    // The programs were not touched.
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QCOMPARE(fileBytes(QLatin1String(name)), QByteArray("X\n"));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::addingSameProgramTwiceGivesTwoLines()
{
    for (const char *name : { "a.zu", "b.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(openWindow());

    clickTab(selector, selector->indexOf(programsPage));
    clickItem(programs, itemNamed(programs, QStringLiteral("b")));
    QPushButton *add = button("addprjButton");
    QVERIFY(add->isEnabled());
    QTest::mouseClick(add, Qt::LeftButton);
    QTest::mouseClick(add, Qt::LeftButton);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b", "b" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\nb.zu\n"));

    // Read back, both stay.
    QVERIFY(settle());
    clickTab(selector, selector->indexOf(projectsPage));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b", "b" }));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::removingAsksAndRewritesFile()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), name));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\n"));
    QVERIFY(openWindow());
    QPushButton *remove = button("removeProgPrjButton");

    // No keeps it.
    boxes->answer = QMessageBox::No;
    clickRow(projectPrograms, 1);
    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).text, removeQuestion(QStringLiteral("b")));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Question);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b", "c" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\nc.zu\n"));

    // Yes takes it out; the first row becomes current.
    boxes->answer = QMessageBox::Yes;
    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 2);
    QCOMPARE(boxes->shown.at(1).text, removeQuestion(QStringLiteral("b")));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "c" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nc.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 0);
    checkProgramButtons(true, false, true, true);

    // The first row itself.
    QVERIFY(settle());
    clickRow(projectPrograms, 0);
    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 3);
    QCOMPARE(boxes->shown.at(2).text, removeQuestion(QStringLiteral("a")));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "c" });
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("c.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 0);
    checkProgramButtons(true, false, false, true);

    // The program files stay as they were.
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "b.zu", "c.zu", "p.zup" }));
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QCOMPARE(fileBytes(QLatin1String(name)), QByteArray(name));
}

void TestProjects::removingLastProgramLeavesEmptyFile()
{
    QVERIFY(writeFile(QStringLiteral("solo.zu"), "S\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "solo.zu\n"));
    QVERIFY(openWindow());
    boxes->answer = QMessageBox::Yes;

    clickRow(projectPrograms, 0);
    QTest::mouseClick(button("removeProgPrjButton"), Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).text, removeQuestion(QStringLiteral("solo")));
    QCOMPARE(projectPrograms->count(), 0);
    QCOMPARE(QFileInfo(QStringLiteral("p.zup")).size(), 0);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray(""));
    QCOMPARE(fileBytes(QStringLiteral("solo.zu")), QByteArray("S\n"));

    // The empty project is still a project.
    QVERIFY(settle());
    QCOMPARE(itemTexts(projects), QStringList { "p" });
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(projectPrograms->count(), 0);
    checkProjectButtons(true, false, true, false, true);
}

void TestProjects::movingUpAndDownRewritesFile()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu", "d.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\nd.zu\n"));
    QVERIFY(openWindow());
    QPushButton *up = button("upInPrjButton");
    QPushButton *down = button("downInPrjButton");

    clickRow(projectPrograms, 2);
    QTest::mouseClick(up, Qt::LeftButton);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "c", "b", "d" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nc.zu\nb.zu\nd.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 1);
    QCOMPARE(projectPrograms->currentItem()->text(), QStringLiteral("c"));
    checkProgramButtons(true, true, true, true);

    QTest::mouseClick(up, Qt::LeftButton);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "c", "a", "b", "d" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("c.zu\na.zu\nb.zu\nd.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 0);
    checkProgramButtons(true, false, true, true);

    QVERIFY(settle());
    clickRow(projectPrograms, 1);
    QTest::mouseClick(down, Qt::LeftButton);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "c", "b", "a", "d" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("c.zu\nb.zu\na.zu\nd.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 2);
    QCOMPARE(projectPrograms->currentItem()->text(), QStringLiteral("a"));

    QTest::mouseClick(down, Qt::LeftButton);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "c", "b", "d", "a" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("c.zu\nb.zu\nd.zu\na.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 3);
    checkProgramButtons(true, true, false, true);

    // Read back, the order holds.
    QVERIFY(settle());
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "c", "b", "d", "a" }));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::movingPastEitherEndChangesNothing()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    const QByteArray content("a.zu\nb.zu\nc.zu\n");
    QVERIFY(writeFile(QStringLiteral("p.zup"), content));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    QVERIFY(ageFile(QStringLiteral("p.zup")));
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QPushButton *up = button("upInPrjButton");
    QPushButton *down = button("downInPrjButton");

    // Up on the first row: the button is off, and the move itself refuses.
    clickRow(projectPrograms, 0);
    QVERIFY(!up->isEnabled());
    QTest::mouseClick(up, Qt::LeftButton);
    QVERIFY(QMetaObject::invokeMethod(window, "on_upInPrjButton_clicked"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b", "c" }));
    QCOMPARE(projectPrograms->currentRow(), 0);

    // Down on the last row.
    clickRow(projectPrograms, 2);
    QVERIFY(!down->isEnabled());
    QTest::mouseClick(down, Qt::LeftButton);
    QVERIFY(QMetaObject::invokeMethod(window, "on_downInPrjButton_clicked"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b", "c" }));
    QCOMPARE(projectPrograms->currentRow(), 2);

    // Without a selection (the project read again) neither moves anything.
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(projectPrograms->currentRow(), -1);
    QVERIFY(QMetaObject::invokeMethod(window, "on_upInPrjButton_clicked"));
    QVERIFY(QMetaObject::invokeMethod(window, "on_downInPrjButton_clicked"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b", "c" }));

    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "b.zu", "c.zu", "p.zup", "q.zup" }));
    QVERIFY(boxes->shown.isEmpty());
}

// The user moves a program down, then down again: the moved program stays
// selected once the window has written the project file.
void TestProjects::movedProgramStaysSelectedForNextMove()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\n"));
    QVERIFY(openWindow());
    QPushButton *down = button("downInPrjButton");

    clickRow(projectPrograms, 0);
    QTest::mouseClick(down, Qt::LeftButton);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("b.zu\na.zu\nc.zu\n"));
    QCOMPARE(projectPrograms->currentRow(), 1);
    // Whatever the window's own write stirred up has been delivered.
    QVERIFY(settle());
    QCOMPARE(projectPrograms->currentRow(), 1);
    QVERIFY(down->isEnabled());
    QTest::mouseClick(down, Qt::LeftButton);
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "b", "c", "a" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("b.zu\nc.zu\na.zu\n"));
}

void TestProjects::cyrillicProgramNameSurvivesProjectFile()
{
    const QString program = QStringLiteral("программа");
    const QString project = QStringLiteral("проект");
    QVERIFY(writeFile(program + QStringLiteral(".zu"), "X\n"));
    QVERIFY(writeFile(project + QStringLiteral(".zup")));
    QVERIFY(writeFile(QStringLiteral("другой.zup"), "x.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(projects), (QStringList { "другой", "проект" }));

    clickItem(projects, itemNamed(projects, project));
    QCOMPARE(projectBox->title(), project);
    QCOMPARE(projectPrograms->count(), 0);
    addProgram(program);
    QCOMPARE(itemTexts(projectPrograms), QStringList { program });
    QCOMPARE(fileBytes(project + QStringLiteral(".zup")), programCp1251 + ".zu\n");
    QVERIFY(window->isProgInProj(program));
    QVERIFY(settle());

    // Away and back: the name is read as it was written.
    clickItem(projects, itemNamed(projects, QStringLiteral("другой")));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "x" });
    clickItem(projects, itemNamed(projects, project));
    QCOMPARE(projectBox->title(), project);
    QCOMPARE(itemTexts(projectPrograms), QStringList { program });
    // Its program exists and is not empty.
    checkProjectButtons(true, true, true, true, true);
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::unwritableProjectFileShowsError()
{
    for (const char *name : { "a.zu", "b.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\n"));
    QVERIFY(openWindow());
    boxes->snapshot = [this] { return itemTexts(projectPrograms); };

    clickRow(projectPrograms, 0);
    // The project file becomes a directory behind the window's back, just
    // before the user moves a program.
    QVERIFY(QFile::remove(QStringLiteral("p.zup")));
    QVERIFY(QDir().mkdir(QStringLiteral("p.zup")));
    QTest::mouseClick(button("downInPrjButton"), Qt::LeftButton);

    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).text,
             projectOpenErrorText(QStringLiteral("p.zup"), replaceOpenError(QStringLiteral("p.zup"))));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    // The list shows the new order while nothing was written.
    QCOMPARE(boxes->shown.at(0).snapshot, (QStringList { "b", "a" }));
    QVERIFY(QFileInfo(QStringLiteral("p.zup")).isDir());
    QCOMPARE(entriesOf(QStringLiteral("p.zup")), QStringList());
    QVERIFY(settle());
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "b.zu", "p.zup" }));
}

// The directory holds no temporary file, so the project file could only be
// written in place: a write that failed half-way would leave half a
// project. Nothing is written; the user learns why and sees the project as
// its file holds it.
void TestProjects::projectWhereNoFileCanBeMadeIsNotRewrittenInPlace()
{
    for (const char *name : { "a.zu", "b.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    const QByteArray content("a.zu\nb.zu\n\nnotes\n");
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), content));
    QVERIFY(QFile::setPermissions(QStringLiteral("p.zup"), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                      | QFileDevice::ReadGroup | QFileDevice::WriteGroup
                                      | QFileDevice::ReadOther | QFileDevice::WriteOther));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    const QStringList before = entriesOf(QStringLiteral("."));
    boxes->snapshot = [this] { return itemTexts(projectPrograms); };
    clickRow(projectPrograms, 0);

    {
        const SealedDirectory sealed(tempDir.path());
        QVERIFY(sealed.isSealed());
        const UnprivilegedScope unprivileged;
        QVERIFY(unprivileged.isActive());
        QVERIFY(!canMakeFileIn(tempDir.path()));
        QVERIFY(canWriteInPlace(QStringLiteral("p.zup")));
        QTest::mouseClick(button("downInPrjButton"), Qt::LeftButton);
    }

    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).text, projectOpenErrorText(QStringLiteral("p.zup"), systemErrorText(EACCES)));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(boxes->shown.at(0).snapshot, (QStringList { "b", "a" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(entriesOf(QStringLiteral(".")), before);
}

void TestProjects::rewriteKeepsWhatFollowsTheList_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QStringList>("programs");
    QTest::addColumn<QByteArray>("after");

    const QByteArray notes("\nnotes\r\nmore\n");
    QTest::newRow("removed") << "remove b" << QByteArray("a.zu\nb.zu\n" + notes) << QStringList { "a" }
                             << QByteArray("a.zu\n" + notes);
    QTest::newRow("added") << "add c" << QByteArray("a.zu\nb.zu\n" + notes)
                           << QStringList { "a", "b", "c" } << QByteArray("a.zu\nb.zu\nc.zu\n" + notes);
    QTest::newRow("moved") << "move b up" << QByteArray("a.zu\nb.zu\n" + notes) << QStringList { "b", "a" }
                           << QByteArray("b.zu\na.zu\n" + notes);
    QTest::newRow("CR LF list") << "remove b" << QByteArray("a.zu\r\nb.zu\r\n\r\nnotes\r\n")
                                << QStringList { "a" } << QByteArray("a.zu\n\r\nnotes\r\n");
    QTest::newRow("CR list, bytes of any value after it")
        << "remove b" << QByteArray("a.zu\rb.zu\r\r\0\xff\n", 14) << QStringList { "a" }
        << QByteArray("a.zu\n\r\0\xff\n", 9);
    QTest::newRow("nothing after the list") << "add c" << QByteArray("a.zu\nb.zu") << QStringList { "a", "b", "c" }
                                            << QByteArray("a.zu\nb.zu\nc.zu\n");
}

// What follows the first empty line is not the window's: adding, removing
// or moving a program rewrites the list before it and leaves the rest byte
// for byte. Another project gets none of it.
void TestProjects::rewriteKeepsWhatFollowsTheList()
{
    QFETCH(QString, change);
    QFETCH(QByteArray, before);
    QFETCH(QStringList, programs);
    QFETCH(QByteArray, after);
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), before));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    boxes->answer = QMessageBox::Yes;

    if (change == QLatin1String("remove b")) {
        clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
        QTest::mouseClick(button("removeProgPrjButton"), Qt::LeftButton);
    } else if (change == QLatin1String("add c")) {
        addProgram(QStringLiteral("c"));
    } else {
        clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
        QTest::mouseClick(button("upInPrjButton"), Qt::LeftButton);
    }

    QCOMPARE(itemTexts(projectPrograms), programs);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), after);

    // Read back, the project lists the same; the other project's file
    // gains nothing of the rest.
    QVERIFY(settle());
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    addProgram(QStringLiteral("b"));
    QCOMPARE(fileBytes(QStringLiteral("q.zup")), QByteArray("a.zu\nb.zu\n"));
    QVERIFY(settle());
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(itemTexts(projectPrograms), programs);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), after);
    for (const ShownBox &box : qAsConst(boxes->shown))
        QCOMPARE(box.icon, QMessageBox::Question);
}

void TestProjects::failedProjectWriteKeepsOldFile_data()
{
    QTest::addColumn<int>("limit");
    QTest::newRow("no byte fits") << 0;
    QTest::newRow("project larger than the limit") << 4096;
}

// The disk fills up while the project file is written: the old file stays
// as it was and the user learns why.
void TestProjects::failedProjectWriteKeepsOldFile()
{
    QFETCH(int, limit);
    QByteArray content;
    for (int i = 0; i < 400; ++i)
        content += "program" + QByteArray::number(i).rightJustified(3, '0') + ".zu\n";
    QVERIFY(content.size() > 4096);
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), content));
    QVERIFY(writeFile(QStringLiteral("z.zu"), "Z\n"));
    QVERIFY(openWindow());
    QCOMPARE(projectPrograms->count(), 400);
    clickTab(selector, selector->indexOf(programsPage));
    clickItem(programs, itemNamed(programs, QStringLiteral("z")));
    QPushButton *add = button("addprjButton");
    QVERIFY(add->isEnabled());

    {
        const FileSizeLimit sizeLimit { quint64(limit) };
        QVERIFY(sizeLimit.isActive());
        QTest::mouseClick(add, Qt::LeftButton);
    }

    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, QStringLiteral("Ошибка записи файла"));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(boxes->shown.at(0).text, QStringLiteral("p.zup\n") + systemErrorText(EFBIG));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "p.zup", "z.zu" }));
}

void TestProjects::unencodableProgramNameIsNotWrittenToProject_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("codePoint");
    QTest::newRow("ideograph") << QStringLiteral("中") << QStringLiteral("4E2D");
    QTest::newRow("emoji") << QStringLiteral("😀") << QStringLiteral("1F600");
}

// Written in windows-1251 the name would come back as another one: the
// project file is left as it is.
void TestProjects::unencodableProgramNameIsNotWrittenToProject()
{
    QFETCH(QString, program);
    QFETCH(QString, codePoint);
    for (const QString &name : { QStringLiteral("a"), QStringLiteral("b"), program })
        QVERIFY(writeFile(name + QStringLiteral(".zu"), "X\n"));
    const QByteArray content("a.zu\nb.zu\n");
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), content));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    const QStringList before = entriesOf(QStringLiteral("."));

    addProgram(program);

    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, QStringLiteral("Ошибка записи файла"));
    QCOMPARE(boxes->shown.at(0).text, QStringLiteral("p.zup\n") + unencodableCharacterText(program, codePoint, 3)
                                          + QStringLiteral("\nПроект не сохранён."));
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(entriesOf(QStringLiteral(".")), before);

    // Read again, the project holds what its file holds.
    QVERIFY(settle());
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "b" }));
    QCOMPARE(boxes->shown.size(), 1);
}

// ---------------------------------------------------------------------------
// Opening programs

void TestProjects::openAllOpensEachProgramOnceInOrder()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu", "d.zu" })
        QVERIFY(writeFile(QLatin1String(name), name));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "c.zu\na.zu\nb.zu\na.zu\n"));
    QVERIFY(openWindow());
    QPushButton *openAll = button("editAllPrjButton");
    QVERIFY(openAll->isEnabled());

    // b is open already.
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    QTest::mouseClick(button("editProgPrjButton"), Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), QStringList { "b" });

    QTest::mouseClick(openAll, Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c", "a" }));
    QCOMPARE(editorOf(QStringLiteral("c"))->toPlainText(), QStringLiteral("c.zu"));
    QCOMPARE(editorOf(QStringLiteral("a"))->toPlainText(), QStringLiteral("a.zu"));

    // Again: nothing new opens.
    QTest::mouseClick(openAll, Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c", "a" }));
    QVERIFY(boxes->shown.isEmpty());
}

// However many listed programs have no file, "Open all" raises one box: it
// names the bad lines and the first twenty programs it could not read, and
// counts the rest. Only the programs it could read get tabs.
void TestProjects::openAllNamesMissingProgramsInOneBox()
{
    QByteArray content = "ok.zu\n../victim.zu\n";
    QStringList missing;
    for (int i = 1; i <= 25; ++i) {
        missing << QStringLiteral("gone%1").arg(i);
        content += missing.last().toLatin1() + ".zu\n";
    }
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), content));
    QVERIFY(writeFile(QStringLiteral("ok.zu"), "fine\n"));
    QVERIFY(openWindow());

    QTest::mouseClick(button("editAllPrjButton"), Qt::LeftButton);

    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QStringList shownLines;
    for (const QString &name : missing.mid(0, 20))
        shownLines << name + QStringLiteral(": No such file or directory");
    QCOMPARE(boxes->shown.at(0).text, skippedNamesBoxText(1, { "../victim" }) + QStringLiteral("\n\n")
                                          + unreadProgramsBoxText(25, shownLines));
    QCOMPARE(tabTexts(tabs), QStringList { "ok" });
    QCOMPARE(window->findChildren<ZuSourceCode *>().size(), 1);
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "ok.zu", "p.zup" }));

}

// A project's lines are names no one typed just now: "Open all" opens the
// programs of the programs directory and skips, with one box, the lines
// that would reach outside it. A bad line opened on its own is refused.
void TestProjects::openAllSkipsBadProgramLinesWithOneBox()
{
    QVERIFY(enterProgramsDirBesideVictims(tempDir.path()));
    const QString absolute = tempDir.path() + QStringLiteral("/abs/victim");
    const QByteArray content = "../victim.zu\n" + QFile::encodeName(absolute) + ".zu\nok.zu\n";
    QVERIFY(writeAgedFile(QStringLiteral("p.zup"), content));
    QVERIFY(writeFile(QStringLiteral("ok.zu"), "fine\n"));
    QVERIFY(openWindow());
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "../victim", absolute, "ok" }));
    QPushButton *openAll = button("editAllPrjButton");
    QVERIFY(openAll->isEnabled());

    QTest::mouseClick(openAll, Qt::LeftButton);

    QCOMPARE(tabTexts(tabs), QStringList { "ok" });
    QCOMPARE(editorOf(QStringLiteral("ok"))->toPlainText(), QStringLiteral("fine\n"));
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).title, attentionTitle);
    QCOMPARE(boxes->shown.at(0).icon, QMessageBox::Critical);
    QCOMPARE(boxes->shown.at(0).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(boxes->shown.at(0).text, skippedNamesBoxText(2, { "../victim", absolute }));

    // The bad line on its own.
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("../victim")));
    QVERIFY(button("editProgPrjButton")->isEnabled());
    QTest::mouseClick(button("editProgPrjButton"), Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 2);
    QCOMPARE(boxes->shown.at(1).title, attentionTitle);
    QCOMPARE(boxes->shown.at(1).text, refusedNameBoxText(QStringLiteral("../victim"), separatorNameReason()));
    QCOMPARE(tabTexts(tabs), QStringList { "ok" });

    QCOMPARE(fileBytes(QStringLiteral("p.zup")), content);
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "ok.zu", "p.zup" }));
    QCOMPARE(victimsChanged(tempDir.path()), QString());
}

void TestProjects::activatingProjectOpensItsPrograms()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "c.zu\na.zu\n"));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "b.zu\nc.zu\nb.zu\n"));
    QVERIFY(openWindow());
    QSignalSpy activated(projects, &QListWidget::itemActivated);

    doubleClickItem(projects, itemNamed(projects, QStringLiteral("q")));
    QCOMPARE(activated.count(), 1);
    QCOMPARE(projectBox->title(), QStringLiteral("q"));
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c" }));

    doubleClickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(activated.count(), 2);
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c", "a" }));

    doubleClickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(activated.count(), 3);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c", "a" }));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::activatingProjectProgramShowsOrOpensIt()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), name));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\n"));
    QVERIFY(openWindow());
    QSignalSpy activated(projectPrograms, &QListWidget::itemActivated);

    doubleClickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    QCOMPARE(activated.count(), 1);
    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QCOMPARE(editorOf(QStringLiteral("b"))->toPlainText(), QStringLiteral("b.zu"));

    doubleClickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("c")));
    QCOMPARE(activated.count(), 2);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c" }));
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("c"));

    // An open one is brought to the front, not opened again.
    doubleClickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    QCOMPARE(activated.count(), 3);
    QCOMPARE(tabTexts(tabs), (QStringList { "b", "c" }));
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));
    QVERIFY(boxes->shown.isEmpty());
}

// ---------------------------------------------------------------------------
// Names

void TestProjects::renamingProjectInPlaceRenamesOnlyItsFile()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(writeFile(QStringLiteral("p.zu"), "P\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(writeFile(QStringLiteral("other.zup"), "p.zu\n"));
    QVERIFY(openWindow());

    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QVERIFY(button("renamePrjButton")->isEnabled());
    QTest::mouseClick(button("renamePrjButton"), Qt::LeftButton);
    QLineEdit *editor = nullptr;
    QTRY_VERIFY((editor = openEditor(projects)) != nullptr);
    QCOMPARE(editor->text(), QStringLiteral("p"));
    replaceText(editor, QStringLiteral("q"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_VERIFY(!openEditor(projects));

    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "other.zup", "p.zu", "q.zup" }));
    QCOMPARE(fileBytes(QStringLiteral("q.zup")), QByteArray("a.zu\n"));
    QCOMPARE(fileBytes(QStringLiteral("p.zu")), QByteArray("P\n"));
    QCOMPARE(fileBytes(QStringLiteral("other.zup")), QByteArray("p.zu\n"));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), (QStringList { "other", "q" }), watcherTimeout);
    QVERIFY(settle());
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("q"));
    QCOMPARE(projectBox->title(), QStringLiteral("q"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::selectingProjectByNameMatchesExactly()
{
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\n"));
    QVERIFY(writeFile(QStringLiteral("pp.zup"), "b.zu\n"));
    QVERIFY(openWindow());
    clickTab(selector, selector->indexOf(programsPage));
    clickItem(projects, itemNamed(projects, QStringLiteral("pp")));

    QVERIFY(window->selectProjByName(QStringLiteral("p")));
    QCOMPARE(selector->currentWidget(), projectsPage);
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });

    clickTab(selector, selector->indexOf(programsPage));
    QVERIFY(!window->selectProjByName(QStringLiteral("P")));
    QVERIFY(!window->selectProjByName(QStringLiteral("ppp")));
    QVERIFY(!window->selectProjByName(QString()));
    // Even a miss shows the projects page; the current project stays.
    QCOMPARE(selector->currentWidget(), projectsPage);
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("p"));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));

    QVERIFY(window->selectProjByName(QStringLiteral("pp")));
    QCOMPARE(projectBox->title(), QStringLiteral("pp"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "b" });
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::programInProjectMatchesExactly()
{
    QVERIFY(writeFile(QStringLiteral("p.zup"), "ab.zu\nb.zu\n"));
    QVERIFY(writeFile(QStringLiteral("q.zup"), "c.zu\n"));
    QVERIFY(openWindow());
    QVERIFY(window->isProgInProj(QStringLiteral("ab")));
    QVERIFY(window->isProgInProj(QStringLiteral("b")));
    QVERIFY(!window->isProgInProj(QStringLiteral("a")));
    QVERIFY(!window->isProgInProj(QStringLiteral("B")));
    QVERIFY(!window->isProgInProj(QStringLiteral("b.zu")));
    QVERIFY(!window->isProgInProj(QStringLiteral("c")));
    // Only the current project counts.
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    QVERIFY(window->isProgInProj(QStringLiteral("c")));
    QVERIFY(!window->isProgInProj(QStringLiteral("b")));
}

// ---------------------------------------------------------------------------
// New project or program from the new-item dialog

void TestProjects::newProjectFromDialog_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("p") << QStringLiteral("p") << QByteArray("p.zu\n");
    QTest::newRow("cyrillic") << QStringLiteral("проект") << QByteArray(projectCp1251 + ".zu\n");
}

void TestProjects::newProjectFromDialog()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, line);
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(writeFile(QStringLiteral("old.zup"), "a.zu\n"));
    QVERIFY(openWindow());
    clickTab(selector, selector->indexOf(programsPage));

    chooseInNewItemDialog(name, true);

    // The project file names the program of the same name; that program is
    // empty and open; the project is current.
    QCOMPARE(fileBytes(name + QStringLiteral(".zup")), line);
    QVERIFY(QFileInfo(name + QStringLiteral(".zu")).isFile());
    QCOMPARE(QFileInfo(name + QStringLiteral(".zu")).size(), 0);
    QCOMPARE(entriesOf(QStringLiteral(".")),
             (QStringList { "a.zu", "old.zup", name + QStringLiteral(".zu"), name + QStringLiteral(".zup") }));
    QCOMPARE(tabTexts(tabs), QStringList { name });
    QCOMPARE(tabs->tabText(tabs->currentIndex()), name);
    QCOMPARE(selector->currentWidget(), projectsPage);
    QCOMPARE(projects->currentItem()->text(), name);
    QCOMPARE(projectBox->title(), name);
    QVERIFY(projectBox->isEnabled());
    QCOMPARE(itemTexts(projectPrograms), QStringList { name });

    // After the directory watcher has had its say it is still so.
    QVERIFY(settle());
    QCOMPARE(itemTexts(projects), (QStringList { "old", name }));
    QCOMPARE(projects->currentItem()->text(), name);
    QCOMPARE(projectBox->title(), name);
    QCOMPARE(itemTexts(projectPrograms), QStringList { name });
    QCOMPARE(fileBytes(name + QStringLiteral(".zup")), line);
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::newProgramFromDialogMakesNoProject()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(writeFile(QStringLiteral("old.zup"), "a.zu\n"));
    QVERIFY(openWindow());

    chooseInNewItemDialog(QStringLiteral("n"), false);

    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "n.zu", "old.zup" }));
    QCOMPARE(QFileInfo(QStringLiteral("n.zu")).size(), 0);
    QCOMPARE(tabTexts(tabs), QStringList { "n" });
    QCOMPARE(selector->currentWidget(), programsPage);
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("n"));
    // The current project is untouched.
    QCOMPARE(projectBox->title(), QStringLiteral("old"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    QCOMPARE(fileBytes(QStringLiteral("old.zup")), QByteArray("a.zu\n"));
    QVERIFY(boxes->shown.isEmpty());
}

// Another program makes the file while the dialog is open: the answer
// opens the program as it is on disk.
void TestProjects::programAppearingUnderDialogKeepsItsText()
{
    QVERIFY(writeFile(QStringLiteral("old.zup"), "a.zu\n"));
    QVERIFY(openWindow());

    chooseInNewItemDialog(QStringLiteral("x"), false,
                          [] { QVERIFY(writeAgedFile(QStringLiteral("x.zu"), "text of x\n")); });

    QCOMPARE(fileBytes(QStringLiteral("x.zu")), QByteArray("text of x\n"));
    QVERIFY(isAged(QStringLiteral("x.zu")));
    QCOMPARE(tabTexts(tabs), QStringList { "x" });
    ZuSourceCode *editor = editorOf(QStringLiteral("x"));
    QVERIFY(editor);
    QCOMPARE(editor->toPlainText(), QStringLiteral("text of x\n"));
    QVERIFY(!editor->isChanged());
    QCOMPARE(selector->currentWidget(), programsPage);
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("x"));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "old.zup", "x.zu" }));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::projectAppearingUnderDialogIsNotRewritten()
{
    QVERIFY(writeFile(QStringLiteral("a.zu"), "A\n"));
    QVERIFY(writeFile(QStringLiteral("old.zup"), "a.zu\n"));
    QVERIFY(openWindow());

    chooseInNewItemDialog(QStringLiteral("p"), true, [] {
        QVERIFY(writeAgedFile(QStringLiteral("p.zup"), "a.zu\n"));
        QVERIFY(writeAgedFile(QStringLiteral("p.zu"), "text of p\n"));
    });

    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\n"));
    QVERIFY(isAged(QStringLiteral("p.zup")));
    QCOMPARE(fileBytes(QStringLiteral("p.zu")), QByteArray("text of p\n"));
    QVERIFY(isAged(QStringLiteral("p.zu")));
    QCOMPARE(selector->currentWidget(), projectsPage);
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("p"));
    QCOMPARE(projectBox->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });
    QCOMPARE(tabTexts(tabs), QStringList { "p" });
    QCOMPARE(editorOf(QStringLiteral("p"))->toPlainText(), QStringLiteral("text of p\n"));
    QCOMPARE(entriesOf(QStringLiteral(".")), (QStringList { "a.zu", "old.zup", "p.zu", "p.zup" }));
    QVERIFY(boxes->shown.isEmpty());
}

// ---------------------------------------------------------------------------
// Saving

void TestProjects::savingChangedProgramsSkipsCurrentTab()
{
    for (const char *name : { "a", "b", "c", "x" })
        QVERIFY(writeFile(QLatin1String(name) + QStringLiteral(".zu"), QByteArray(name).toUpper() + "\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\n"));
    QVERIFY(openWindow());

    QTest::mouseClick(button("editAllPrjButton"), Qt::LeftButton);
    clickTab(selector, selector->indexOf(programsPage));
    clickItem(programs, itemNamed(programs, QStringLiteral("x")));
    QTest::mouseClick(button("editButton"), Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b", "c", "x" }));

    // The user edits a, b and x, and ends on b.
    for (const auto &edit : { qMakePair(0, QStringLiteral("1")), qMakePair(3, QStringLiteral("9")),
                              qMakePair(1, QStringLiteral("2")) }) {
        clickTab(tabs, edit.first);
        QCOMPARE(tabs->currentIndex(), edit.first);
        ZuSourceCode *editor = editorOf(tabs->tabText(edit.first));
        QVERIFY(editor);
        editor->setFocus();
        typeText(editor, edit.second);
        QVERIFY(editor->isChanged());
    }
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));
    QVERIFY(settle());

    window->saveChangedInProj();
    // a: changed, in the project, not current -> saved.
    QCOMPARE(fileBytes(QStringLiteral("a.zu")), QByteArray("1A\n"));
    QVERIFY(!editorOf(QStringLiteral("a"))->isChanged());
    // b: current -> left for its own save.
    QCOMPARE(fileBytes(QStringLiteral("b.zu")), QByteArray("B\n"));
    QVERIFY(editorOf(QStringLiteral("b"))->isChanged());
    // c: unchanged; x: not in the project.
    QCOMPARE(fileBytes(QStringLiteral("c.zu")), QByteArray("C\n"));
    QCOMPARE(fileBytes(QStringLiteral("x.zu")), QByteArray("X\n"));
    QVERIFY(editorOf(QStringLiteral("x"))->isChanged());
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\nc.zu\n"));
    QVERIFY(boxes->shown.isEmpty());
}

void TestProjects::savingEntireProjectSavesCurrentAndProjectFile()
{
    for (const char *name : { "a", "b", "x" })
        QVERIFY(writeFile(QLatin1String(name) + QStringLiteral(".zu"), QByteArray(name).toUpper() + "\n"));
    QVERIFY(writeFile(QStringLiteral("o.zup"), "x.zu\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\n"));
    QVERIFY(openWindow());
    clickItem(projects, itemNamed(projects, QStringLiteral("p")));
    QTest::mouseClick(button("editAllPrjButton"), Qt::LeftButton);
    clickTab(selector, selector->indexOf(programsPage));
    clickItem(programs, itemNamed(programs, QStringLiteral("x")));
    QTest::mouseClick(button("editButton"), Qt::LeftButton);
    QCOMPARE(tabTexts(tabs), (QStringList { "a", "b", "x" }));

    for (const auto &edit : { qMakePair(0, QStringLiteral("1")), qMakePair(2, QStringLiteral("9")),
                              qMakePair(1, QStringLiteral("2")) }) {
        clickTab(tabs, edit.first);
        ZuSourceCode *editor = editorOf(tabs->tabText(edit.first));
        QVERIFY(editor);
        editor->setFocus();
        typeText(editor, edit.second);
        QVERIFY(editor->isChanged());
    }
    QVERIFY(settle());
    QVERIFY(ageFile(QStringLiteral("p.zup")));

    // The host asks to save project p before running it; b is current.
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("b"));
    window->saveFileIfChanged(QStringLiteral("p"));
    QCOMPARE(selector->currentWidget(), projectsPage);
    QCOMPARE(fileBytes(QStringLiteral("a.zu")), QByteArray("1A\n"));
    QCOMPARE(fileBytes(QStringLiteral("b.zu")), QByteArray("2B\n"));
    QVERIFY(!editorOf(QStringLiteral("a"))->isChanged());
    QVERIFY(!editorOf(QStringLiteral("b"))->isChanged());
    QCOMPARE(fileBytes(QStringLiteral("x.zu")), QByteArray("X\n"));
    QVERIFY(editorOf(QStringLiteral("x"))->isChanged());
    // The project file was written again, with the same content.
    QVERIFY(!isAged(QStringLiteral("p.zup")));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\n"));

    // With a program outside the project current, that one is not saved.
    QVERIFY(settle());
    clickTab(tabs, 0);
    typeText(editorOf(QStringLiteral("a")), QStringLiteral("3"));
    clickTab(tabs, 2);
    QCOMPARE(tabs->tabText(tabs->currentIndex()), QStringLiteral("x"));
    QVERIFY(ageFile(QStringLiteral("p.zup")));
    window->saveEntireProject();
    QCOMPARE(fileBytes(QStringLiteral("a.zu")), QByteArray("13A\n"));
    QCOMPARE(fileBytes(QStringLiteral("x.zu")), QByteArray("X\n"));
    QVERIFY(editorOf(QStringLiteral("x"))->isChanged());
    QVERIFY(!isAged(QStringLiteral("p.zup")));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nb.zu\n"));
    QVERIFY(boxes->shown.isEmpty());
}

// ---------------------------------------------------------------------------
// A refill under the removal question

// The directory may change while the question is open (another program
// writes there, the editor saves): the lists are refilled under the box.
void TestProjects::removingSurvivesRefillDuringQuestion()
{
    for (const char *name : { "a.zu", "b.zu", "c.zu" })
        QVERIFY(writeFile(QLatin1String(name), "X\n"));
    QVERIFY(writeFile(QStringLiteral("p.zup"), "a.zu\nb.zu\nc.zu\n"));
    QVERIFY(openWindow());
    boxes->answer = QMessageBox::Yes;

    clickRow(projectPrograms, 1);
    // While the question is open, a file appears in the directory; the box
    // is answered once the window has seen it.
    bool written = false;
    boxes->answerWhen = [this, &written] {
        if (!written)
            written = writeFile(QStringLiteral("new.zu"), "N\n");
        return itemNamed(programs, QStringLiteral("new")) != nullptr;
    };
    QTest::mouseClick(button("removeProgPrjButton"), Qt::LeftButton);
    QCOMPARE(boxes->shown.size(), 1);
    QCOMPARE(boxes->shown.at(0).text, removeQuestion(QStringLiteral("b")));
    QVERIFY(itemNamed(programs, QStringLiteral("new")));
    // The program the user agreed to remove is the one removed.
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "a", "c" }));
    QCOMPARE(fileBytes(QStringLiteral("p.zup")), QByteArray("a.zu\nc.zu\n"));
}

QTEST_MAIN(TestProjects)
#include "tst_projects.moc"
