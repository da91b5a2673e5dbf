// The editor's main window driven directly: its widget tree, texts, icons,
// wiring, the enabled-state helpers, run() and stop(), and the search panel.

#include <QtTest>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QIcon>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTabWidget>
#include <QTextCodec>
#include <QTextDocument>
#include <QTimer>
#include <QToolTip>

#include "boxanswerer.h"
#include "editorsupport.h"
#include "editwindow.h"
#include "hosttables.h"
#include "iconbuttonstyle.h"
#include "searchreplace.h"
#include "seginterfaces.h"
#include "testsupport.h"
#include "textedit.h"

namespace {

// ---------------------------------------------------------------------------
// Connections seen through QObject::dumpObjectInfo(), which prints every
// outgoing connection under its signal and every incoming one, newest first.
// A connection to a member function pointer or a functor names no slot: it
// shows as functorReceiver under its signal and as "<unknown>" coming in.

const QString functorReceiver = QStringLiteral("<functor or function pointer>");

QStringList *capturedLines = nullptr;

void captureMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (capturedLines)
        capturedLines->append(message);
}

struct ConnectionDump
{
    // signal signature -> "ReceiverClass::receiverName slotSignature" or
    // functorReceiver
    QMap<QString, QStringList> out;
    // "SenderClass::senderName slotSignature", newest connection first
    QStringList in;
};

ConnectionDump dumpConnections(const QObject *object)
{
    QStringList lines;
    capturedLines = &lines;
    const QtMessageHandler previous = qInstallMessageHandler(captureMessage);
    object->dumpObjectInfo();
    qInstallMessageHandler(previous);
    capturedLines = nullptr;

    ConnectionDump dump;
    enum { None, Out, In } section = None;
    QString signal;
    for (const QString &line : qAsConst(lines)) {
        const QString text = line.trimmed();
        if (text == QLatin1String("SIGNALS OUT")) {
            section = Out;
        } else if (text == QLatin1String("SIGNALS IN")) {
            section = In;
        } else if (section == Out && text.startsWith(QLatin1String("signal: "))) {
            signal = text.mid(8);
        } else if (section == Out && text.startsWith(QLatin1String("--> "))) {
            dump.out[signal] << text.mid(4);
        } else if (section == Out && text == functorReceiver) {
            dump.out[signal] << text;
        } else if (section == In && text.startsWith(QLatin1String("<-- "))) {
            dump.in << text.mid(4);
        }
    }
    return dump;
}

// ---------------------------------------------------------------------------
// Everything the window reports through changeVariant and pluginDead, in the
// order it was emitted.

struct Emission
{
    QString signal;     // "changeVariant" or "pluginDead"
    QString key;
    QVariant value;
    bool sync = false;
    bool change = false;
    SEGINTERFACES *descriptor = nullptr;
};

class EmissionRecorder
{
public:
    explicit EmissionRecorder(EditWindow *window)
    {
        connections << QObject::connect(window, &EditWindow::changeVariant,
                                        [this](QString key, QVariant value, bool sync, bool change) {
                                            Emission e;
                                            e.signal = QStringLiteral("changeVariant");
                                            e.key = key;
                                            e.value = value;
                                            e.sync = sync;
                                            e.change = change;
                                            emissions << e;
                                        });
        connections << QObject::connect(window, &EditWindow::pluginDead,
                                        [this](SEGINTERFACES *descriptor) {
                                            Emission e;
                                            e.signal = QStringLiteral("pluginDead");
                                            e.descriptor = descriptor;
                                            emissions << e;
                                        });
    }
    ~EmissionRecorder()
    {
        for (const QMetaObject::Connection &c : qAsConst(connections))
            QObject::disconnect(c);
    }

    // The values reported under one key, in order.
    QVariantList values(const QString &key) const
    {
        QVariantList result;
        for (const Emission &e : emissions) {
            if (e.signal == QLatin1String("changeVariant") && e.key == key)
                result << e.value;
        }
        return result;
    }

    QStringList keys() const
    {
        QStringList result;
        for (const Emission &e : emissions)
            result << (e.signal == QLatin1String("pluginDead") ? QStringLiteral("<pluginDead>") : e.key);
        return result;
    }

    QVector<Emission> emissions;

private:
    QList<QMetaObject::Connection> connections;
};

// ---------------------------------------------------------------------------
// Watches for modal boxes while a call runs: any that appears is noted and
// answered with one of its buttons, so the test cannot hang on it.

class ModalWatcher
{
public:
    ModalWatcher()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            seen << QStringLiteral("%1 \"%2\"").arg(QString::fromLatin1(modal->metaObject()->className()),
                                                     modal->windowTitle());
            const QList<QAbstractButton *> buttons = modal->findChildren<QAbstractButton *>();
            if (!buttons.isEmpty())
                buttons.first()->click();
            else
                modal->close();
        });
        timer.start(20);
    }

    QStringList seen;

private:
    QTimer timer;
};

const QString searchKeysInOrder[] = {
    QStringLiteral("inprogram"), QStringLiteral("entireproject"), QStringLiteral("ignorecase"),
    QStringLiteral("wholeword"), QStringLiteral("searchFor"), QStringLiteral("replaceTo"),
};

QStringList searchKeys()
{
    QStringList keys;
    for (const QString &key : searchKeysInOrder)
        keys << key;
    return keys;
}

// The list-row buttons, in the order the three rows hold them.
const char *const listRowButtons[] = {
    "newProgButton", "editButton", "renameButton", "addprjButton", "delProgButton",
    "newprjButton", "editAllPrjButton", "renamePrjButton", "debugProjButton", "delprjButton",
    "newProgPrjButton", "editProgPrjButton", "downInPrjButton", "upInPrjButton", "removeProgPrjButton",
};

const char *const commandRowButtons[] = {
    "saveProgramButton", "saveAsProgramButton", "undoButton", "redoButton",
    "seacrhButton", "compileProgramButton", "settingsButton", "pushButton",
};

// Files written for a window to list: name and content.
using Files = QVector<QPair<const char *, const char *>>;

// Project p of programs a and b.
const Files projectOfTwoPrograms {
    { "a.zu", "alpha\n" }, { "b.zu", "beta\n" }, { "p.zup", "a.zu\nb.zu\n" },
};

QString layoutItemName(QLayoutItem *item)
{
    if (QWidget *widget = item->widget())
        return widget->objectName();
    if (QLayout *layout = item->layout())
        return layout->objectName();
    if (item->spacerItem())
        return QStringLiteral("<spacer>");
    return QStringLiteral("<unknown>");
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    // Objects of the window's own tree; the search panel is a child of the
    // window too and has a layout of the same name as one of the window's.
    QList<QObject *> windowObjects(const QString &name) const;
    template <class T> T *windowChild(const char *name) const
    {
        const QList<QObject *> found = windowObjects(QString::fromLatin1(name));
        return found.size() == 1 ? qobject_cast<T *>(found.first()) : nullptr;
    }
    QMap<QString, bool> pushButtonStates() const;
    void showWindow();
    bool remakeWindowOver(const Files &files);

    TempCurrentDir workDir;
    TextEdit *plugin = nullptr;
    EditWindow *window = nullptr;
    // Found by remakeWindowOver().
    QListWidget *programs = nullptr;
    QListWidget *projects = nullptr;
    QListWidget *projectPrograms = nullptr;
    QTabWidget *selector = nullptr;
    QTabWidget *tabs = nullptr;

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    // Widget tree
    void windowNameTitleAndFormSize();
    void layoutWidgetBecomesCentralWidget();
    void namedObjectsHaveTheirClasses_data();
    void namedObjectsHaveTheirClasses();
    void layoutsHoldTheirItemsInOrder_data();
    void layoutsHoldTheirItemsInOrder();
    void containersUseTheirLayouts_data();
    void containersUseTheirLayouts();
    void selectorTabsFixedWidthShowsProjects();
    void listsTrackMouseAndRefuseEditing_data();
    void listsTrackMouseAndRefuseEditing();
    void currentProjectBoxStartsDisabledAndEmpty();
    void editorTabsStartEmptyAndClosable();
    void consoleIsFixedReadOnlyWithoutUndo();
    void menuBarHoldsOneEmptyMenuAndStatusBarExists();

    // Buttons: icons and enabled states
    void windowHoldsExactlyTheListedPushButtons();
    void pushButtonIconsAndStartStates_data();
    void pushButtonIconsAndStartStates();
    void searchButtonStartsUncheckedAndDisabled();
    void listRowButtonsDrawIconOnly();

    // Texts
    void buttonTextsAndToolTips_data();
    void buttonTextsAndToolTips();
    void windowTabAndMenuTitles();
    void actionsTextsIconsAndShortcuts_data();
    void actionsTextsIconsAndShortcuts();

    // Wiring
    void clickingTabReportsItCurrentOnce();
    void tabCloseButtonClosesThatTabOnly();
    void selectingOpenProgramBringsItsTabForward();
    void selectingProjectShowsItsPrograms();
    void selectingProjectProgramSetsItsButtons();
    void fileWrittenInDirectoryAppearsInItsList();
    void newButtonAddsOnePlaceholderThatEscapeDrops_data();
    void newButtonAddsOnePlaceholderThatEscapeDrops();
    void projectEditButtonOpensSelectedProgramOnce();
    void projectDeleteButtonAsksOnceAndDeletesProject();
    void hoveringItemShowsItsFileDetails_data();
    void hoveringItemShowsItsFileDetails();
    void searchPanelButtonsReachWindowOnce_data();
    void searchPanelButtonsReachWindowOnce();
    void slotsAreWiredByObjectName_data();
    void slotsAreWiredByObjectName();
    void clearButtonEmptiesConsole();

    // Enabled-state helpers
    void setEditButtonsDrivesEachButton_data();
    void setEditButtonsDrivesEachButton();
    void setEditButtonsLeavesOtherButtonsAlone();
    void disableProgProjEmptiesAndDisablesProjectBox();
    void enableProgProjShowsCurrentProject();
    void repeatedDisableProgProjAddsNoObjects();

    // Inert function keys
    void functionKeysTriggerNothing_data();
    void functionKeysTriggerNothing();

    // run() and stop()
    void runWithAnswerFromAnotherThreadReturnsPromptly();
    void runWithoutAnswerWaitsTwoSecondsAndReopensPrograms();
    void stopReportsStateSearchSettingsThenDeath_data();
    void stopReportsStateSearchSettingsThenDeath();

    // Search panel
    void searchButtonTogglesPanelWithoutStoring();
    void closingPanelUnchecksButtonAndStoresSettings();
    void storeSearchSettingsReportsOptionsInOrder_data();
    void storeSearchSettingsReportsOptionsInOrder();
    void storeSearchSettingsPutsNewTextFirst_data();
    void storeSearchSettingsPutsNewTextFirst();
    void storeSearchSettingsKeepsReusedTextInPlace_data();
    void storeSearchSettingsKeepsReusedTextInPlace();
    void storeSearchSettingsMatchesCaseExactly_data();
    void storeSearchSettingsMatchesCaseExactly();
    void storeSearchSettingsDropsOldestOfTwenty_data();
    void storeSearchSettingsDropsOldestOfTwenty();

    // Settings button
    void settingsButtonRequestsSettingsPage_data();
    void settingsButtonRequestsSettingsPage();
};

// ---------------------------------------------------------------------------

QList<QObject *> TestMainWindow::windowObjects(const QString &name) const
{
    QList<QObject *> result;
    const QList<QObject *> all = window->findChildren<QObject *>(name);
    for (QObject *object : all) {
        bool inPanel = false;
        for (QObject *p = object; p; p = p->parent()) {
            if (p == window->searchPanel())
                inPanel = true;
        }
        if (!inPanel)
            result << object;
    }
    return result;
}

QMap<QString, bool> TestMainWindow::pushButtonStates() const
{
    QMap<QString, bool> states;
    const QList<QPushButton *> buttons = window->centralWidget()->findChildren<QPushButton *>();
    for (QPushButton *button : buttons)
        states.insert(button->objectName(), button->isEnabled());
    return states;
}

// The two history combo boxes of the search panel, as test rows.
static void addHistoryFields()
{
    QTest::addColumn<int>("field");
    QTest::newRow("searchFor") << 0;
    QTest::newRow("replaceTo") << 1;
}

void TestMainWindow::showWindow()
{
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
}

void TestMainWindow::initTestCase()
{
    // The window lists the current directory: give it an empty one of its own.
    QVERIFY(workDir.make());
    QVERIFY(workDir.enter());
}

void TestMainWindow::cleanupTestCase()
{
    workDir.leave();
}

void TestMainWindow::init()
{
    makePlugin(plugin, window);
    QVERIFY(window);
}

void TestMainWindow::cleanup()
{
    QToolTip::hideText();
    deletePlugin(plugin, window);
    programs = projects = projectPrograms = nullptr;
    selector = tabs = nullptr;
    // The next window starts from an empty directory again.
    for (const QString &entry : entriesOf())
        QFile::remove(entry);
}

// Writes the files and makes the window again over them, shown and active,
// so that its lists start from what they hold.
bool TestMainWindow::remakeWindowOver(const Files &files)
{
    deletePlugin(plugin, window);
    for (const auto &file : files) {
        if (!writeFile(QString::fromLatin1(file.first), QByteArray(file.second)))
            return false;
    }
    makePlugin(plugin, window);
    return window && findListsAndTabs(window, programs, projects, projectPrograms, selector, tabs)
           && showAndActivate(window);
}

// ---------------------------------------------------------------------------
// Widget tree

void TestMainWindow::windowNameTitleAndFormSize()
{
    QCOMPARE(window->objectName(), QStringLiteral("EditWindow"));
    QCOMPARE(QString::fromLatin1(window->metaObject()->className()), QStringLiteral("EditWindow"));
    QCOMPARE(window->windowTitle(), QStringLiteral("Zu Source"));
    QVERIFY(!window->isVisible());
    // The size the form gives, before anything is shown or laid out.
    QCOMPARE(window->size(), QSize(1248, 704));
}

void TestMainWindow::layoutWidgetBecomesCentralWidget()
{
    QWidget *central = window->centralWidget();
    QVERIFY(central);
    QCOMPARE(central->objectName(), QStringLiteral("horizontalLayoutWidget"));
    QCOMPARE(central->parentWidget(), static_cast<QWidget *>(window));
    // The form's own central widget is replaced and goes away.
    QTRY_VERIFY(windowObjects(QStringLiteral("centralwidget")).isEmpty());
    // The layout then follows the window's size instead of its fixed rectangle.
    showWindow();
    window->resize(900, 500);
    QTRY_COMPARE(central->width(), window->width());
}

void TestMainWindow::namedObjectsHaveTheirClasses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("className");

    const char *const rows[][2] = {
        { "horizontalLayoutWidget", "QWidget" },
        { "horizontalLayout", "QHBoxLayout" },
        { "verticalLayout_9", "QVBoxLayout" },
        { "selectorTabs", "QTabWidget" },
        { "programsTab", "QWidget" },
        { "verticalLayout", "QVBoxLayout" },
        { "horizontalLayout_6", "QHBoxLayout" },
        { "programsList", "QListWidget" },
        { "projectsTab", "QWidget" },
        { "verticalLayout_2", "QVBoxLayout" },
        { "horizontalLayout_7", "QHBoxLayout" },
        { "projectsList", "QListWidget" },
        { "currProjBox", "QGroupBox" },
        { "gridLayout", "QGridLayout" },
        { "horizontalLayout_2", "QHBoxLayout" },
        { "currentProjectList", "QListWidget" },
        { "verticalLayout_5", "QVBoxLayout" },
        { "horizontalLayout_5", "QHBoxLayout" },
        { "tabWidget", "QTabWidget" },
        { "horizontalLayout_3", "QHBoxLayout" },
        { "consoleEdit", "QPlainTextEdit" },
        { "menubar", "QMenuBar" },
        { "menu", "QMenu" },
        { "statusbar", "QStatusBar" },
        { "action_debug", "QAction" },
        { "action_settings", "QAction" },
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromLatin1(row[0]) << QString::fromLatin1(row[1]);
}

void TestMainWindow::namedObjectsHaveTheirClasses()
{
    QFETCH(QString, name);
    QFETCH(QString, className);

    const QList<QObject *> found = windowObjects(name);
    QCOMPARE(found.size(), 1);
    QCOMPARE(QString::fromLatin1(found.first()->metaObject()->className()), className);
}

void TestMainWindow::layoutsHoldTheirItemsInOrder_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QStringList>("items");

    QTest::newRow("horizontalLayout")
        << "horizontalLayout" << QStringList { "verticalLayout_9", "verticalLayout_5" };
    QTest::newRow("verticalLayout_9")
        << "verticalLayout_9" << QStringList { "selectorTabs", "currProjBox" };
    QTest::newRow("verticalLayout")
        << "verticalLayout" << QStringList { "horizontalLayout_6", "programsList" };
    QTest::newRow("horizontalLayout_6")
        << "horizontalLayout_6"
        << QStringList { "newProgButton", "editButton", "renameButton", "addprjButton", "delProgButton" };
    QTest::newRow("verticalLayout_2")
        << "verticalLayout_2" << QStringList { "horizontalLayout_7", "projectsList" };
    QTest::newRow("horizontalLayout_7")
        << "horizontalLayout_7"
        << QStringList { "newprjButton", "editAllPrjButton", "renamePrjButton", "debugProjButton",
                         "delprjButton" };
    QTest::newRow("gridLayout")
        << "gridLayout" << QStringList { "horizontalLayout_2", "currentProjectList" };
    QTest::newRow("horizontalLayout_2")
        << "horizontalLayout_2"
        << QStringList { "newProgPrjButton", "editProgPrjButton", "downInPrjButton", "upInPrjButton",
                         "removeProgPrjButton" };
    QTest::newRow("verticalLayout_5")
        << "verticalLayout_5"
        << QStringList { "horizontalLayout_5", "tabWidget", "horizontalLayout_3", "consoleEdit" };
    QTest::newRow("horizontalLayout_5")
        << "horizontalLayout_5"
        << QStringList { "saveProgramButton", "saveAsProgramButton", "<spacer>", "undoButton",
                         "redoButton", "<spacer>", "seacrhButton", "<spacer>",
                         "compileProgramButton", "<spacer>", "settingsButton" };
    QTest::newRow("horizontalLayout_3")
        << "horizontalLayout_3" << QStringList { "<spacer>", "pushButton" };
}

void TestMainWindow::layoutsHoldTheirItemsInOrder()
{
    QFETCH(QString, layout);
    QFETCH(QStringList, items);

    const QList<QObject *> found = windowObjects(layout);
    QCOMPARE(found.size(), 1);
    auto *theLayout = qobject_cast<QLayout *>(found.first());
    QVERIFY(theLayout);
    QStringList actual;
    for (int i = 0; i < theLayout->count(); ++i)
        actual << layoutItemName(theLayout->itemAt(i));
    QCOMPARE(actual, items);
}

void TestMainWindow::containersUseTheirLayouts_data()
{
    QTest::addColumn<QString>("container");
    QTest::addColumn<QString>("layout");

    QTest::newRow("horizontalLayoutWidget") << "horizontalLayoutWidget" << "horizontalLayout";
    QTest::newRow("programsTab") << "programsTab" << "verticalLayout";
    QTest::newRow("projectsTab") << "projectsTab" << "verticalLayout_2";
    QTest::newRow("currProjBox") << "currProjBox" << "gridLayout";
}

void TestMainWindow::containersUseTheirLayouts()
{
    QFETCH(QString, container);
    QFETCH(QString, layout);

    const QList<QObject *> found = windowObjects(container);
    QCOMPARE(found.size(), 1);
    auto *widget = qobject_cast<QWidget *>(found.first());
    QVERIFY(widget);
    QVERIFY(widget->layout());
    QCOMPARE(widget->layout()->objectName(), layout);
}

void TestMainWindow::selectorTabsFixedWidthShowsProjects()
{
    auto *tabs = windowChild<QTabWidget>("selectorTabs");
    QVERIFY(tabs);
    QVERIFY(tabs->isEnabled());
    QCOMPARE(tabs->minimumWidth(), 256);
    QCOMPARE(tabs->maximumWidth(), 256);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->widget(0)->objectName(), QStringLiteral("programsTab"));
    QCOMPARE(tabs->widget(1)->objectName(), QStringLiteral("projectsTab"));
    QCOMPARE(tabs->currentIndex(), 1);
}

void TestMainWindow::listsTrackMouseAndRefuseEditing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("page");
    QTest::addColumn<bool>("singleSelection");

    QTest::newRow("programsList") << "programsList" << "programsTab" << false;
    QTest::newRow("projectsList") << "projectsList" << "projectsTab" << true;
    QTest::newRow("currentProjectList") << "currentProjectList" << "currProjBox" << false;
}

void TestMainWindow::listsTrackMouseAndRefuseEditing()
{
    QFETCH(QString, name);
    QFETCH(QString, page);
    QFETCH(bool, singleSelection);

    auto *list = windowChild<QListWidget>(name.toLatin1().constData());
    QVERIFY(list);
    QCOMPARE(list->parentWidget()->objectName(), page);
    QVERIFY(list->hasMouseTracking());
    QCOMPARE(list->editTriggers(), QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
    if (singleSelection)
        QCOMPARE(list->selectionMode(), QAbstractItemView::SingleSelection);
}

void TestMainWindow::currentProjectBoxStartsDisabledAndEmpty()
{
    auto *box = windowChild<QGroupBox>("currProjBox");
    auto *list = windowChild<QListWidget>("currentProjectList");
    QVERIFY(box);
    QVERIFY(list);
    QVERIFY(!box->isEnabled());
    QCOMPARE(box->maximumWidth(), 256);
    // The construction empties the box through disableProgProj().
    QCOMPARE(box->title(), QString());
    QVERIFY(!list->isEnabled());
    QVERIFY(!list->isEnabledTo(box));
    QCOMPARE(list->count(), 0);
}

void TestMainWindow::editorTabsStartEmptyAndClosable()
{
    auto *tabs = windowChild<QTabWidget>("tabWidget");
    QVERIFY(tabs);
    QVERIFY(tabs->tabsClosable());
    QCOMPARE(tabs->count(), 0);
    QCOMPARE(tabs->currentIndex(), -1);
}

void TestMainWindow::consoleIsFixedReadOnlyWithoutUndo()
{
    auto *console = windowChild<QPlainTextEdit>("consoleEdit");
    QVERIFY(console);
    QVERIFY(console->isReadOnly());
    QVERIFY(!console->document()->isUndoRedoEnabled());
    QVERIFY(!console->isUndoRedoEnabled());
    QVERIFY(!console->acceptDrops());
    QCOMPARE(console->minimumHeight(), 100);
    QCOMPARE(console->maximumHeight(), 100);
    QCOMPARE(console->tabStopDistance(), 4.0);
    QVERIFY(console->backgroundVisible());
    QVERIFY(!console->centerOnScroll());
}

void TestMainWindow::menuBarHoldsOneEmptyMenuAndStatusBarExists()
{
    auto *menuBar = window->findChild<QMenuBar *>(QStringLiteral("menubar"), Qt::FindDirectChildrenOnly);
    QVERIFY(menuBar);
    QCOMPARE(window->menuBar(), menuBar);
    QCOMPARE(menuBar->actions().size(), 1);
    QMenu *menu = menuBar->actions().first()->menu();
    QVERIFY(menu);
    QCOMPARE(menu->objectName(), QStringLiteral("menu"));
    QCOMPARE(menu->title(), QStringLiteral("Объект контроля"));
    QVERIFY(menu->actions().isEmpty());

    auto *statusBar = window->findChild<QStatusBar *>(QStringLiteral("statusbar"), Qt::FindDirectChildrenOnly);
    QVERIFY(statusBar);
    QCOMPARE(window->statusBar(), statusBar);
}

// ---------------------------------------------------------------------------
// Buttons: icons and enabled states

void TestMainWindow::windowHoldsExactlyTheListedPushButtons()
{
    QStringList expected;
    for (const char *name : listRowButtons)
        expected << QString::fromLatin1(name);
    for (const char *name : commandRowButtons)
        expected << QString::fromLatin1(name);
    expected.sort();

    QStringList actual = pushButtonStates().keys();
    actual.sort();
    QCOMPARE(actual.size(), 23);
    QCOMPARE(actual, expected);
}

void TestMainWindow::pushButtonIconsAndStartStates_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("iconFile");   // empty: no icon
    QTest::addColumn<bool>("listRow");
    QTest::addColumn<bool>("enabled");

    QTest::newRow("newProgButton") << "newProgButton" << "new24.png" << true << true;
    QTest::newRow("editButton") << "editButton" << "icon-site-ru-0560.png" << true << false;
    QTest::newRow("renameButton") << "renameButton" << "Rename24.png" << true << false;
    QTest::newRow("addprjButton") << "addprjButton" << "add-project.png" << true << false;
    QTest::newRow("delProgButton") << "delProgButton" << "delete2.png" << true << false;
    QTest::newRow("newprjButton") << "newprjButton" << "new-project.png" << true << true;
    QTest::newRow("editAllPrjButton") << "editAllPrjButton" << "icon-site-ru-0560.png" << true << false;
    QTest::newRow("renamePrjButton") << "renamePrjButton" << "Rename24.png" << true << false;
    QTest::newRow("debugProjButton") << "debugProjButton" << "debug.png" << true << false;
    QTest::newRow("delprjButton") << "delprjButton" << "delete2.png" << true << false;
    QTest::newRow("newProgPrjButton") << "newProgPrjButton" << "new24.png" << true << false;
    QTest::newRow("editProgPrjButton") << "editProgPrjButton" << "icon-site-ru-0560.png" << true << false;
    QTest::newRow("downInPrjButton") << "downInPrjButton" << "down-green-24.png" << true << false;
    QTest::newRow("upInPrjButton") << "upInPrjButton" << "up-green-24.png" << true << false;
    QTest::newRow("removeProgPrjButton") << "removeProgPrjButton" << "delete2.png" << true << false;
    QTest::newRow("saveProgramButton") << "saveProgramButton" << "save-icon.png" << false << false;
    QTest::newRow("saveAsProgramButton") << "saveAsProgramButton" << "saveas-icon.png" << false << false;
    QTest::newRow("undoButton") << "undoButton" << "undo.png" << false << false;
    QTest::newRow("redoButton") << "redoButton" << "redo.png" << false << false;
    QTest::newRow("seacrhButton") << "seacrhButton" << "" << false << false;
    QTest::newRow("compileProgramButton") << "compileProgramButton" << "debug.png" << false << false;
    QTest::newRow("settingsButton") << "settingsButton" << "" << false << true;
    QTest::newRow("pushButton") << "pushButton" << "" << false << true;
}

void TestMainWindow::pushButtonIconsAndStartStates()
{
    QFETCH(QString, name);
    QFETCH(QString, iconFile);
    QFETCH(bool, listRow);
    QFETCH(bool, enabled);

    const QList<QObject *> found = windowObjects(name);
    QCOMPARE(found.size(), 1);
    QCOMPARE(QString::fromLatin1(found.first()->metaObject()->className()), QStringLiteral("QPushButton"));
    auto *button = qobject_cast<QPushButton *>(found.first());
    QVERIFY(button);

    if (iconFile.isEmpty()) {
        QVERIFY(button->icon().isNull());
    } else {
        const QString resource = QStringLiteral(":/icons/") + iconFile;
        QVERIFY2(QFile::exists(resource), qPrintable(resource));
        QVERIFY(!button->icon().isNull());
        const QImage expected = QIcon(resource).pixmap(24).toImage();
        QVERIFY(!expected.isNull());
        QCOMPARE(button->icon().pixmap(24).toImage(), expected);
    }
    if (listRow)
        QCOMPARE(button->iconSize(), QSize(24, 24));
    QCOMPARE(button->isEnabled(), enabled);
}

void TestMainWindow::searchButtonStartsUncheckedAndDisabled()
{
    auto *button = windowChild<QPushButton>("seacrhButton");
    QVERIFY(button);
    QVERIFY(button->isCheckable());
    QVERIFY(!button->isChecked());
    QVERIFY(!button->isEnabled());
    QVERIFY(!window->searchPanel()->isVisible());
}

void TestMainWindow::listRowButtonsDrawIconOnly()
{
    // The narrow list rows show icons only; the texts stay on the buttons.
    for (const char *name : listRowButtons) {
        auto *button = windowChild<QPushButton>(name);
        QVERIFY2(button, name);
        QVERIFY2(qobject_cast<IconButtonStyle *>(button->style()), name);
        QVERIFY2(!button->text().isEmpty(), name);
    }
    for (const char *name : commandRowButtons) {
        auto *button = windowChild<QPushButton>(name);
        QVERIFY2(button, name);
        QVERIFY2(!qobject_cast<IconButtonStyle *>(button->style()), name);
    }
}

// ---------------------------------------------------------------------------
// Texts

void TestMainWindow::buttonTextsAndToolTips_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("toolTipIsText");   // otherwise there is no tool tip

    QTest::newRow("newProgButton") << "newProgButton" << QStringLiteral("Новая программа") << true;
    QTest::newRow("editButton") << "editButton" << QStringLiteral("Открыть для редактирования") << true;
    QTest::newRow("renameButton")
        << "renameButton" << QStringLiteral("Переименовать\n(запрещено если программа открыта)") << true;
    QTest::newRow("addprjButton") << "addprjButton" << QStringLiteral("Добавить в текущий проект") << true;
    QTest::newRow("delProgButton")
        << "delProgButton" << QStringLiteral("Удалить программу\n(запрещено если программа открыта)") << true;
    QTest::newRow("newprjButton") << "newprjButton" << QStringLiteral("Новый проект") << true;
    QTest::newRow("editAllPrjButton") << "editAllPrjButton" << QStringLiteral("Редактировать") << true;
    QTest::newRow("renamePrjButton") << "renamePrjButton" << QStringLiteral("Переименовать") << true;
    QTest::newRow("debugProjButton")
        << "debugProjButton"
        << QStringLiteral("Компилировать выбранный проект\n(измененные программы сохранятся автоматически)")
        << true;
    QTest::newRow("delprjButton") << "delprjButton" << QStringLiteral("Удалить проект") << true;
    // The project box's row reuses the projects row's texts.
    QTest::newRow("newProgPrjButton") << "newProgPrjButton" << QStringLiteral("Новый проект") << true;
    QTest::newRow("editProgPrjButton") << "editProgPrjButton" << QStringLiteral("Редактировать") << true;
    QTest::newRow("downInPrjButton") << "downInPrjButton" << QStringLiteral("Вниз") << true;
    QTest::newRow("upInPrjButton") << "upInPrjButton" << QStringLiteral("Вверх") << true;
    QTest::newRow("removeProgPrjButton") << "removeProgPrjButton" << QStringLiteral("Убрать из проекта") << true;
    QTest::newRow("saveProgramButton") << "saveProgramButton" << QStringLiteral("Сохранить") << false;
    QTest::newRow("saveAsProgramButton") << "saveAsProgramButton" << QStringLiteral("Сохранить как...") << false;
    QTest::newRow("undoButton") << "undoButton" << QStringLiteral("Отменить") << false;
    QTest::newRow("redoButton") << "redoButton" << QStringLiteral("Повторить") << false;
    QTest::newRow("seacrhButton") << "seacrhButton" << QStringLiteral("Поиск") << false;
    QTest::newRow("compileProgramButton")
        << "compileProgramButton" << QStringLiteral("Создать выполнимую программу") << false;
    QTest::newRow("settingsButton") << "settingsButton" << QStringLiteral("Настройки") << false;
    QTest::newRow("pushButton") << "pushButton" << QStringLiteral("Очистить") << false;
}

void TestMainWindow::buttonTextsAndToolTips()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(bool, toolTipIsText);

    auto *button = windowChild<QPushButton>(name.toLatin1().constData());
    QVERIFY(button);
    QCOMPARE(button->text(), text);
    QCOMPARE(button->toolTip(), toolTipIsText ? text : QString());
}

void TestMainWindow::windowTabAndMenuTitles()
{
    QCOMPARE(window->windowTitle(), QStringLiteral("Zu Source"));
    auto *tabs = windowChild<QTabWidget>("selectorTabs");
    QVERIFY(tabs);
    QCOMPARE(tabs->tabText(0), QStringLiteral("Программы"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Проекты"));
    auto *menu = windowChild<QMenu>("menu");
    QVERIFY(menu);
    QCOMPARE(menu->title(), QStringLiteral("Объект контроля"));
}

void TestMainWindow::actionsTextsIconsAndShortcuts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<QString>("iconFile");
    QTest::addColumn<QKeySequence>("shortcut");

    QTest::newRow("action_debug")
        << "action_debug" << QStringLiteral("Отладка")
        << QStringLiteral("Перевод программы или проекта в отладчик") << "settings24.png"
        << QKeySequence(Qt::Key_F9);
    QTest::newRow("action_settings")
        << "action_settings" << QStringLiteral("Настройки")
        << QStringLiteral("Диалог настроек редактора") << "Properties24.png" << QKeySequence(Qt::Key_F5);
}

void TestMainWindow::actionsTextsIconsAndShortcuts()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, toolTip);
    QFETCH(QString, iconFile);
    QFETCH(QKeySequence, shortcut);

    auto *action = window->findChild<QAction *>(name, Qt::FindDirectChildrenOnly);
    QVERIFY(action);
    QCOMPARE(action->parent(), static_cast<QObject *>(window));
    QCOMPARE(action->text(), text);
    QCOMPARE(action->toolTip(), toolTip);
    QCOMPARE(action->shortcut(), shortcut);
    QVERIFY(!action->isCheckable());
    const QString resource = QStringLiteral(":/icons/") + iconFile;
    QVERIFY2(QFile::exists(resource), qPrintable(resource));
    QVERIFY(!action->icon().isNull());
    QCOMPARE(action->icon().pixmap(24).toImage(), QIcon(resource).pixmap(24).toImage());
    // Placed nowhere, so its shortcut has no widget to work in.
    QVERIFY(action->associatedWidgets().isEmpty());
    QVERIFY(!window->actions().contains(action));
}

// ---------------------------------------------------------------------------
// Wiring

// The constructor's own connections are made to member functions, which the
// connection dump cannot name; each is shown working instead, through what
// its slot does when a user triggers the signal. The search panel's close
// is shown in closingPanelUnchecksButtonAndStoresSettings().

void TestMainWindow::clickingTabReportsItCurrentOnce()
{
    QVERIFY(remakeWindowOver({ { "a.zu", "alpha\n" }, { "b.zu", "beta\n" } }));
    window->addTextTab(QStringLiteral("a"));
    window->addTextTab(QStringLiteral("b"));
    QCOMPARE(tabs->currentIndex(), 1);
    EmissionRecorder recorder(window);

    clickTab(tabs, 0);

    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(recorder.keys(), QStringList { "openedtab" });
    QCOMPARE(recorder.values(QStringLiteral("openedtab")), QVariantList { QStringLiteral("a") });
}

void TestMainWindow::tabCloseButtonClosesThatTabOnly()
{
    QVERIFY(remakeWindowOver({ { "a.zu", "" }, { "b.zu", "" }, { "c.zu", "" } }));
    for (const char *name : { "a", "b", "c" })
        window->addTextTab(QLatin1String(name));
    EmissionRecorder recorder(window);

    QAbstractButton *close = closeButtonOf(tabs, 1);
    QVERIFY(close);
    QTest::mouseClick(close, Qt::LeftButton);

    QCOMPARE(tabTexts(tabs), (QStringList { "a", "c" }));
    QCOMPARE(recorder.values(QStringLiteral("openedlist")), (QVariantList { QStringList { "a", "c" } }));
}

void TestMainWindow::selectingOpenProgramBringsItsTabForward()
{
    QVERIFY(remakeWindowOver({ { "a.zu", "" }, { "b.zu", "" }, { "c.zu", "" } }));
    window->addTextTab(QStringLiteral("b"));
    window->addTextTab(QStringLiteral("c"));
    clickTab(selector, 0);
    QCOMPARE(programs->currentItem()->text(), QStringLiteral("a"));
    QCOMPARE(tabs->currentIndex(), 1);
    QVERIFY(windowChild<QPushButton>("editButton")->isEnabled());

    clickItem(programs, itemNamed(programs, QStringLiteral("b")));

    QCOMPARE(tabs->currentIndex(), 0);
    for (const char *name : { "editButton", "renameButton", "delProgButton" })
        QVERIFY2(!windowChild<QPushButton>(name)->isEnabled(), name);
}

void TestMainWindow::selectingProjectShowsItsPrograms()
{
    QVERIFY(remakeWindowOver({ { "p.zup", "a.zu\n" }, { "q.zup", "b.zu\nc.zu\n" } }));
    auto *box = windowChild<QGroupBox>("currProjBox");
    QVERIFY(box);
    QCOMPARE(box->title(), QStringLiteral("p"));
    QCOMPARE(itemTexts(projectPrograms), QStringList { "a" });

    clickItem(projects, itemNamed(projects, QStringLiteral("q")));

    QCOMPARE(box->title(), QStringLiteral("q"));
    QCOMPARE(itemTexts(projectPrograms), (QStringList { "b", "c" }));
}

void TestMainWindow::selectingProjectProgramSetsItsButtons()
{
    QVERIFY(remakeWindowOver(projectOfTwoPrograms));
    auto *edit = windowChild<QPushButton>("editProgPrjButton");
    auto *up = windowChild<QPushButton>("upInPrjButton");
    auto *down = windowChild<QPushButton>("downInPrjButton");
    QVERIFY(edit && up && down);
    QVERIFY(!edit->isEnabled());

    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    QVERIFY(edit->isEnabled());
    QVERIFY(up->isEnabled());
    QVERIFY(!down->isEnabled());

    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("a")));
    QVERIFY(!up->isEnabled());
    QVERIFY(down->isEnabled());
}

void TestMainWindow::fileWrittenInDirectoryAppearsInItsList()
{
    QVERIFY(remakeWindowOver({}));
    QCOMPARE(programs->count(), 0);
    QCOMPARE(projects->count(), 0);

    QVERIFY(writeFile(QStringLiteral("late.zu")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(programs), QStringList { "late" }, watcherTimeout);
    QVERIFY(writeFile(QStringLiteral("later.zup")));
    QTRY_COMPARE_WITH_TIMEOUT(itemTexts(projects), QStringList { "later" }, watcherTimeout);
}

void TestMainWindow::newButtonAddsOnePlaceholderThatEscapeDrops_data()
{
    QTest::addColumn<QString>("buttonName");
    QTest::addColumn<QString>("listName");
    QTest::addColumn<int>("page");   // the selector page the user looks at

    QTest::newRow("programs") << "newProgButton" << "programsList" << 0;
    QTest::newRow("projects") << "newprjButton" << "projectsList" << 1;
    QTest::newRow("project programs") << "newProgPrjButton" << "currentProjectList" << 1;
}

void TestMainWindow::newButtonAddsOnePlaceholderThatEscapeDrops()
{
    QFETCH(QString, buttonName);
    QFETCH(QString, listName);
    QFETCH(int, page);

    QVERIFY(remakeWindowOver(projectOfTwoPrograms));
    clickTab(selector, page);
    auto *list = windowChild<QListWidget>(listName.toLatin1().constData());
    auto *newButton = windowChild<QPushButton>(buttonName.toLatin1().constData());
    QVERIFY(list);
    QVERIFY(newButton);
    // A selected item enables the row's buttons.
    clickRow(list, 0);
    QVERIFY(newButton->isEnabled());
    const QStringList before = itemTexts(list);

    QTest::mouseClick(newButton, Qt::LeftButton);

    QCOMPARE(itemTexts(list), before + QStringList { EditWindow::placeholderName() });
    QLineEdit *editor = openEditor(list);
    QVERIFY(editor);
    QCOMPARE(editor->text(), EditWindow::placeholderName());

    // The list's delegate closes the editor; the unnamed item goes with it.
    QTest::keyClick(editor, Qt::Key_Escape);
    QTRY_VERIFY(!openEditor(list));
    QCOMPARE(itemTexts(list), before);
}

void TestMainWindow::projectEditButtonOpensSelectedProgramOnce()
{
    QVERIFY(remakeWindowOver(projectOfTwoPrograms));
    clickItem(projectPrograms, itemNamed(projectPrograms, QStringLiteral("b")));
    EmissionRecorder recorder(window);

    QTest::mouseClick(windowChild<QPushButton>("editProgPrjButton"), Qt::LeftButton);

    QCOMPARE(tabTexts(tabs), QStringList { "b" });
    QCOMPARE(recorder.values(QStringLiteral("openedlist")), QVariantList { QStringList { "b" } });
}

void TestMainWindow::projectDeleteButtonAsksOnceAndDeletesProject()
{
    QVERIFY(remakeWindowOver({ { "p.zup", "" }, { "q.zup", "" } }));
    clickItem(projects, itemNamed(projects, QStringLiteral("q")));
    BoxAnswerer answerer(QMessageBox::Yes);

    QTest::mouseClick(windowChild<QPushButton>("delprjButton"), Qt::LeftButton);

    QCOMPARE(answerer.shown.size(), 1);
    QVERIFY2(answerer.shown.first().text.endsWith(QStringLiteral("Удалить проект q ?")),
             qPrintable(answerer.shown.first().text));
    QVERIFY(!QFile::exists(QStringLiteral("q.zup")));
    QVERIFY(QFile::exists(QStringLiteral("p.zup")));
}

void TestMainWindow::hoveringItemShowsItsFileDetails_data()
{
    QTest::addColumn<QString>("listName");
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("file");

    QTest::newRow("programs") << "programsList" << 0 << "a" << "a.zu";
    QTest::newRow("projects") << "projectsList" << 1 << "p" << "p.zup";
    QTest::newRow("project programs") << "currentProjectList" << 1 << "b" << "b.zu";
}

void TestMainWindow::hoveringItemShowsItsFileDetails()
{
    QFETCH(QString, listName);
    QFETCH(int, page);
    QFETCH(QString, item);
    QFETCH(QString, file);

    // No tool tip is left from before.
    QTRY_COMPARE(QToolTip::text(), QString());
    QVERIFY(remakeWindowOver(projectOfTwoPrograms));
    clickTab(selector, page);
    auto *list = windowChild<QListWidget>(listName.toLatin1().constData());
    QVERIFY(list);

    hoverItem(list, itemNamed(list, item));

    QTRY_COMPARE(QToolTip::text().section(QLatin1Char('\n'), 0, 0), QFileInfo(file).absoluteFilePath());
}

void TestMainWindow::searchPanelButtonsReachWindowOnce_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("searchNext") << "searchNext";
    QTest::newRow("replaceIt") << "replaceIt";
    QTest::newRow("replaceAll") << "replaceAll";
}

void TestMainWindow::searchPanelButtonsReachWindowOnce()
{
    QFETCH(QString, name);

    // The connections themselves are checked, one from the button and one
    // into the window; what the slots do is tst_search's.
    auto *button = window->searchPanel()->findChild<QPushButton *>(name);
    QVERIFY(button);
    QCOMPARE(dumpConnections(button).out.value(QStringLiteral("clicked(bool)")), QStringList { functorReceiver });
    QCOMPARE(dumpConnections(window).in.count(QStringLiteral("QPushButton::%1 <unknown>").arg(name)), 1);
}

void TestMainWindow::slotsAreWiredByObjectName_data()
{
    QTest::addColumn<QString>("sender");
    QTest::addColumn<QString>("signal");
    QTest::addColumn<QString>("slot");

    const char *const clickedSlots[][2] = {
        { "editAllPrjButton", "on_editAllPrjButton_clicked()" },
        { "downInPrjButton", "on_downInPrjButton_clicked()" },
        { "upInPrjButton", "on_upInPrjButton_clicked()" },
        { "addprjButton", "on_addprjButton_clicked()" },
        { "removeProgPrjButton", "on_removeProgPrjButton_clicked()" },
        { "newProgButton", "on_newProgButton_clicked()" },
        { "delProgButton", "on_delProgButton_clicked()" },
        { "editButton", "on_editButton_clicked()" },
        { "renameButton", "on_renameButton_clicked()" },
        { "renamePrjButton", "on_renamePrjButton_clicked()" },
        { "compileProgramButton", "on_compileProgramButton_clicked()" },
        { "pushButton", "on_pushButton_clicked()" },
        { "settingsButton", "on_settingsButton_clicked()" },
        { "debugProjButton", "on_debugProjButton_clicked()" },
    };
    for (const auto &row : clickedSlots)
        QTest::newRow(row[0]) << QString::fromLatin1(row[0]) << "clicked(bool)" << QString::fromLatin1(row[1]);
    QTest::newRow("programsList itemActivated")
        << "programsList" << "itemActivated(QListWidgetItem*)" << "on_programsList_itemActivated(QListWidgetItem*)";
    QTest::newRow("projectsList itemActivated")
        << "projectsList" << "itemActivated(QListWidgetItem*)" << "on_projectsList_itemActivated(QListWidgetItem*)";
    QTest::newRow("currentProjectList itemActivated")
        << "currentProjectList" << "itemActivated(QListWidgetItem*)"
        << "on_currentProjectList_itemActivated(QListWidgetItem*)";
    QTest::newRow("seacrhButton toggled") << "seacrhButton" << "toggled(bool)" << "on_seacrhButton_toggled(bool)";
}

void TestMainWindow::slotsAreWiredByObjectName()
{
    QFETCH(QString, sender);
    QFETCH(QString, signal);
    QFETCH(QString, slot);

    const QList<QObject *> found = windowObjects(sender);
    QCOMPARE(found.size(), 1);
    const ConnectionDump dump = dumpConnections(found.first());
    QCOMPARE(dump.out.value(signal).count(QStringLiteral("EditWindow::EditWindow ") + slot), 1);
}

void TestMainWindow::clearButtonEmptiesConsole()
{
    showWindow();
    auto *console = windowChild<QPlainTextEdit>("consoleEdit");
    auto *clear = windowChild<QPushButton>("pushButton");
    QVERIFY(console);
    QVERIFY(clear);
    console->appendPlainText(QStringLiteral("error 1\nerror 2"));
    QVERIFY(!console->toPlainText().isEmpty());

    QTest::mouseClick(clear, Qt::LeftButton);
    QCOMPARE(console->toPlainText(), QString());
}

// ---------------------------------------------------------------------------
// Enabled-state helpers

void TestMainWindow::setEditButtonsDrivesEachButton_data()
{
    // Buttons in argument order: save, saveAs, undo, redo, compile.
    QTest::addColumn<QList<bool>>("before");
    QTest::addColumn<QList<int>>("arguments");
    QTest::addColumn<QList<bool>>("after");

    const QList<bool> allOff { false, false, false, false, false };
    const QList<bool> allOn { true, true, true, true, true };

    QTest::newRow("only compile") << allOff << QList<int> { -1, -1, -1, -1, 1 }
                                  << QList<bool> { false, false, false, false, true };
    QTest::newRow("zero disables") << allOn << QList<int> { 0, 0, 0, 0, 0 } << allOff;
    QTest::newRow("positive enables") << allOff << QList<int> { 5, 1, 2, 100, 7 } << allOn;
    QTest::newRow("negative keeps enabled") << allOn << QList<int> { -1, -5, -1, -100, -1 } << allOn;
    QTest::newRow("negative keeps disabled") << allOff << QList<int> { -1, -1, -7, -1, -1 } << allOff;
    QTest::newRow("save") << allOff << QList<int> { 1, -1, -1, -1, -1 }
                          << QList<bool> { true, false, false, false, false };
    QTest::newRow("saveAs") << allOff << QList<int> { -1, 1, -1, -1, -1 }
                            << QList<bool> { false, true, false, false, false };
    QTest::newRow("undo") << allOff << QList<int> { -1, -1, 1, -1, -1 }
                          << QList<bool> { false, false, true, false, false };
    QTest::newRow("redo") << allOff << QList<int> { -1, -1, -1, 1, -1 }
                          << QList<bool> { false, false, false, true, false };
    QTest::newRow("compile off only") << allOn << QList<int> { -1, -1, -1, -1, 0 }
                                      << QList<bool> { true, true, true, true, false };
    QTest::newRow("mixed") << QList<bool> { true, false, true, false, true } << QList<int> { 0, 3, -1, -1, 0 }
                           << QList<bool> { false, true, true, false, false };
}

void TestMainWindow::setEditButtonsDrivesEachButton()
{
    QFETCH(QList<bool>, before);
    QFETCH(QList<int>, arguments);
    QFETCH(QList<bool>, after);

    const char *const names[] = { "saveProgramButton", "saveAsProgramButton", "undoButton", "redoButton",
                                  "compileProgramButton" };
    QList<QPushButton *> buttons;
    for (const char *name : names) {
        auto *button = windowChild<QPushButton>(name);
        QVERIFY2(button, name);
        buttons << button;
    }
    for (int i = 0; i < 5; ++i)
        buttons[i]->setEnabled(before[i]);

    window->setEditButtons(arguments[0], arguments[1], arguments[2], arguments[3], arguments[4]);

    QList<bool> actual;
    for (QPushButton *button : qAsConst(buttons))
        actual << button->isEnabled();
    QCOMPARE(actual, after);
}

void TestMainWindow::setEditButtonsLeavesOtherButtonsAlone()
{
    QMap<QString, bool> expected = pushButtonStates();
    window->setEditButtons(1, 1, 1, 1, 1);
    for (const char *name : { "saveProgramButton", "saveAsProgramButton", "undoButton", "redoButton",
                              "compileProgramButton" })
        expected[QString::fromLatin1(name)] = true;
    QCOMPARE(pushButtonStates(), expected);
}

void TestMainWindow::disableProgProjEmptiesAndDisablesProjectBox()
{
    auto *box = windowChild<QGroupBox>("currProjBox");
    auto *list = windowChild<QListWidget>("currentProjectList");
    auto *projects = windowChild<QListWidget>("projectsList");
    auto *add = windowChild<QPushButton>("addprjButton");
    QVERIFY(box);
    QVERIFY(list);
    QVERIFY(projects);
    QVERIFY(add);

    // Start from a project shown in the box; the project's file is not
    // what this test is about, so the list's own reaction stays out.
    const QSignalBlocker blocker(projects);
    projects->addItem(QStringLiteral("demo"));
    projects->setCurrentRow(0);
    window->enableProgProj();
    list->addItems({ QStringLiteral("first"), QStringLiteral("second") });
    QCOMPARE(box->title(), QStringLiteral("demo"));
    QVERIFY(box->isEnabled());
    QVERIFY(add->isEnabled());
    QVERIFY(list->isEnabled());

    window->disableProgProj();

    QCOMPARE(box->title(), QString());
    QCOMPARE(list->count(), 0);
    QVERIFY(!list->isEnabled());
    QVERIFY(!box->isEnabled());
    QVERIFY(!add->isEnabled());
    // The project list itself is not touched.
    QCOMPARE(projects->count(), 1);
}

void TestMainWindow::enableProgProjShowsCurrentProject()
{
    auto *box = windowChild<QGroupBox>("currProjBox");
    auto *list = windowChild<QListWidget>("currentProjectList");
    auto *projects = windowChild<QListWidget>("projectsList");
    auto *add = windowChild<QPushButton>("addprjButton");
    QVERIFY(box);
    QVERIFY(list);
    QVERIFY(projects);
    QVERIFY(add);
    QVERIFY(!box->isEnabled());
    QVERIFY(!add->isEnabled());
    QVERIFY(!list->isEnabled());

    const QSignalBlocker blocker(projects);
    projects->addItems({ QStringLiteral("other"), QStringLiteral("demo") });
    projects->setCurrentRow(1);
    QCOMPARE(projects->currentItem()->text(), QStringLiteral("demo"));

    window->enableProgProj();

    QCOMPARE(box->title(), QStringLiteral("demo"));
    QVERIFY(box->isEnabled());
    QVERIFY(add->isEnabled());
    QVERIFY(list->isEnabled());
}

void TestMainWindow::repeatedDisableProgProjAddsNoObjects()
{
    // Emptying the project box is a state change only; it must not leave
    // new objects behind in the window each time it happens.
    const int before = window->findChildren<QObject *>().size();
    for (int i = 0; i < 3; ++i)
        window->disableProgProj();
    QCOMPARE(window->findChildren<QObject *>().size(), before);
}

// ---------------------------------------------------------------------------
// Inert function keys

void TestMainWindow::functionKeysTriggerNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("F5") << int(Qt::Key_F5);
    QTest::newRow("F9") << int(Qt::Key_F9);
}

void TestMainWindow::functionKeysTriggerNothing()
{
    QFETCH(int, key);

    auto *debugAction = window->findChild<QAction *>(QStringLiteral("action_debug"));
    auto *settingsAction = window->findChild<QAction *>(QStringLiteral("action_settings"));
    QVERIFY(debugAction);
    QVERIFY(settingsAction);

    // A probe action placed in the window shows that a key press does reach
    // the window's shortcuts in this set-up.
    auto *probe = new QAction(window);
    probe->setShortcut(QKeySequence(Qt::Key_F6));
    window->addAction(probe);
    QSignalSpy probeSpy(probe, &QAction::triggered);

    showWindow();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));

    QTest::keyClick(window, Qt::Key_F6);
    QCOMPARE(probeSpy.count(), 1);
    delete probe;

    QSignalSpy debugSpy(debugAction, &QAction::triggered);
    QSignalSpy settingsSpy(settingsAction, &QAction::triggered);
    QSignalSpy editSettingSpy(window, &EditWindow::editSetting);
    const QMap<QString, bool> statesBefore = pushButtonStates();
    ModalWatcher modal;

    QTest::keyClick(window, Qt::Key(key));
    QTest::qWait(0);   // let anything the key queued run

    QCOMPARE(debugSpy.count(), 0);
    QCOMPARE(settingsSpy.count(), 0);
    QCOMPARE(editSettingSpy.count(), 0);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(modal.seen, QStringList());
    QCOMPARE(pushButtonStates(), statesBefore);
    QVERIFY(!window->searchPanel()->isVisible());
}

// ---------------------------------------------------------------------------
// run() and stop()

void TestMainWindow::runWithAnswerFromAnotherThreadReturnsPromptly()
{
    QTextCodec *codec = QTextCodec::codecForName("windows-1251");
    QVERIFY(codec);
    const QByteArray plusRu = codec->fromUnicode(QStringLiteral("Плюс"));
    const QByteArray integerRu = codec->fromUnicode(QStringLiteral("целый"));
    const QByteArray realRu = codec->fromUnicode(QStringLiteral("вещественный"));

    OperationRecord operations[2] = {};
    operations[0].name = "PLUS";
    operations[0].secondName = plusRu.constData();
    operations[1].name = "MINUS";
    operations[1].secondName = nullptr;
    TypeRecord types[2] = {};
    types[0].name = integerRu.constData();
    types[0].secondName = "int";
    types[1].name = realRu.constData();
    types[1].secondName = nullptr;
    ARRAY operationTable { operations, 0, operations + 2 };
    ARRAY typeTable { types, 0, types + 2 };

    int requests = 0;
    connect(window, &EditWindow::tablesRequest, window, [&requests] { ++requests; }, Qt::DirectConnection);
    ThreadedTablesHost host(window, operationTable, typeTable);
    host.answerRequests();

    QElapsedTimer timer;
    timer.start();
    window->run();
    const qint64 elapsed = timer.elapsed();
    host.finish();

    QCOMPARE(requests, 1);
    QVERIFY2(elapsed < 1500, qPrintable(QStringLiteral("run() took %1 ms").arg(elapsed)));
    QCOMPARE(window->operationNames(), (QStringList { "PLUS", QStringLiteral("Плюс"), "MINUS" }));
    QCOMPARE(window->typeNames(),
             (QStringList { QStringLiteral("целый"), "int", QStringLiteral("вещественный") }));
}

void TestMainWindow::runWithoutAnswerWaitsTwoSecondsAndReopensPrograms()
{
    // What was open when the host last stopped the editor comes back.
    for (const char *name : { "first.zu", "second.zu" }) {
        QFile file(QString::fromLatin1(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("x\n");
    }
    auto removeFiles = qScopeGuard([] {
        QFile::remove(QStringLiteral("first.zu"));
        QFile::remove(QStringLiteral("second.zu"));
    });
    rememberOpenedTabs(plugin, QStringList { "first", "second" }, QStringLiteral("first"));
    QSignalSpy requestSpy(window, &EditWindow::tablesRequest);

    QElapsedTimer timer;
    timer.start();
    window->run();
    const qint64 elapsed = timer.elapsed();

    QCOMPARE(requestSpy.count(), 1);
    QVERIFY2(elapsed >= 1900, qPrintable(QStringLiteral("run() took %1 ms").arg(elapsed)));
    QVERIFY2(elapsed < 10000, qPrintable(QStringLiteral("run() took %1 ms").arg(elapsed)));
    QVERIFY(window->operationNames().isEmpty());
    QVERIFY(window->typeNames().isEmpty());

    auto *tabs = window->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(0), QStringLiteral("first"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("second"));
    QCOMPARE(tabs->currentIndex(), 0);
}

void TestMainWindow::stopReportsStateSearchSettingsThenDeath_data()
{
    QTest::addColumn<bool>("shown");
    QTest::newRow("hidden") << false;
    QTest::newRow("shown") << true;
}

void TestMainWindow::stopReportsStateSearchSettingsThenDeath()
{
    QFETCH(bool, shown);

    if (shown)
        showWindow();
    QCOMPARE(window->isVisible(), shown);

    // Options away from their defaults, so that each value is seen to come
    // from the panel.
    SearchReplace *panel = window->searchPanel();
    panel->entireproject()->setChecked(true);
    panel->wholeword()->setChecked(true);
    panel->searchFor()->setEditText(QStringLiteral("alpha"));
    panel->replaceTo()->setEditText(QStringLiteral("beta"));

    EmissionRecorder recorder(window);
    ModalWatcher modal;
    const bool result = window->stop();

    QVERIFY(result);
    QCOMPARE(modal.seen, QStringList());
    QCOMPARE(recorder.keys(),
             (QStringList { "MainWinState", "MainWinOpen", "inprogram", "entireproject", "ignorecase",
                            "wholeword", "searchFor", "replaceTo", "<pluginDead>" }));
    const QVector<Emission> &e = recorder.emissions;
    for (int i = 0; i < 8; ++i) {
        QVERIFY2(!e[i].sync, qPrintable(e[i].key));
        QVERIFY2(e[i].change, qPrintable(e[i].key));
    }

    QCOMPARE(e[0].value.userType(), int(QMetaType::QByteArray));
    QCOMPARE(e[0].value.toByteArray(), window->saveState());
    QCOMPARE(e[1].value.userType(), int(QMetaType::Bool));
    QCOMPARE(e[1].value.toBool(), shown);
    const bool options[] = { false, true, false, true };
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(e[2 + i].value.userType(), int(QMetaType::Bool));
        QCOMPARE(e[2 + i].value.toBool(), options[i]);
    }
    QCOMPARE(e[6].value.userType(), int(QMetaType::QStringList));
    QCOMPARE(e[6].value.toStringList(), QStringList { "alpha" });
    QCOMPARE(e[7].value.userType(), int(QMetaType::QStringList));
    QCOMPARE(e[7].value.toStringList(), QStringList { "beta" });
    QVERIFY(plugin->descriptor());
    QCOMPARE(e[8].descriptor, plugin->descriptor());
    // stop() leaves the window as it was.
    QCOMPARE(window->isVisible(), shown);
}

// ---------------------------------------------------------------------------
// Search panel

void TestMainWindow::searchButtonTogglesPanelWithoutStoring()
{
    showWindow();
    auto *button = windowChild<QPushButton>("seacrhButton");
    QVERIFY(button);
    SearchReplace *panel = window->searchPanel();
    button->setEnabled(true);
    EmissionRecorder recorder(window);

    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(button->isChecked());
    QTRY_VERIFY(panel->isVisible());

    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!button->isChecked());
    QTRY_VERIFY(!panel->isVisible());
    QCOMPARE(recorder.keys(), QStringList());
}

void TestMainWindow::closingPanelUnchecksButtonAndStoresSettings()
{
    showWindow();
    auto *button = windowChild<QPushButton>("seacrhButton");
    QVERIFY(button);
    SearchReplace *panel = window->searchPanel();
    button->setEnabled(true);
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_VERIFY(panel->isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(panel));

    QAbstractButton *close = panel->buttonBox()->button(QDialogButtonBox::Close);
    QVERIFY(close);
    QSignalSpy toggledSpy(button, &QPushButton::toggled);
    EmissionRecorder recorder(window);

    QTest::mouseClick(close, Qt::LeftButton);

    QTRY_VERIFY(!panel->isVisible());
    QVERIFY(!button->isChecked());
    QCOMPARE(toggledSpy.count(), 0);
    QCOMPARE(recorder.keys(), searchKeys());
    // The button still works for the next opening.
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_VERIFY(panel->isVisible());
}

void TestMainWindow::storeSearchSettingsReportsOptionsInOrder_data()
{
    QTest::addColumn<bool>("entireProject");
    QTest::addColumn<bool>("ignoreCase");
    QTest::addColumn<bool>("wholeWord");

    QTest::newRow("defaults") << false << false << false;
    QTest::newRow("project and case") << true << true << false;
    QTest::newRow("whole word only") << false << false << true;
}

void TestMainWindow::storeSearchSettingsReportsOptionsInOrder()
{
    QFETCH(bool, entireProject);
    QFETCH(bool, ignoreCase);
    QFETCH(bool, wholeWord);

    SearchReplace *panel = window->searchPanel();
    (entireProject ? panel->entireproject() : panel->inprogram())->setChecked(true);
    panel->ignorecase()->setChecked(ignoreCase);
    panel->wholeword()->setChecked(wholeWord);

    EmissionRecorder recorder(window);
    window->storeSearchSettings();

    QCOMPARE(recorder.keys(), searchKeys());
    const bool expected[] = { !entireProject, entireProject, ignoreCase, wholeWord };
    for (int i = 0; i < 4; ++i) {
        const Emission &e = recorder.emissions[i];
        QCOMPARE(e.value.userType(), int(QMetaType::Bool));
        QCOMPARE(e.value.toBool(), expected[i]);
        QVERIFY(!e.sync);
        QVERIFY(e.change);
    }
}

void TestMainWindow::storeSearchSettingsPutsNewTextFirst_data()
{
    QTest::addColumn<int>("field");   // 0: searchFor, 1: replaceTo
    QTest::newRow("searchFor") << 0;
    QTest::newRow("replaceTo") << 1;
}

void TestMainWindow::storeSearchSettingsPutsNewTextFirst()
{
    QFETCH(int, field);

    showWindow();
    SearchReplace *panel = window->searchPanel();
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel));
    QComboBox *box = field == 0 ? panel->searchFor() : panel->replaceTo();
    box->addItems({ "alpha", "beta" });
    box->clearEditText();
    QTest::keyClicks(box->lineEdit(), QStringLiteral("delta"));
    QCOMPARE(box->currentText(), QStringLiteral("delta"));

    EmissionRecorder recorder(window);
    window->storeSearchSettings();

    const QStringList expected { "delta", "alpha", "beta" };
    QCOMPARE(itemTexts(box), expected);
    QCOMPARE(recorder.keys(), searchKeys());
    QCOMPARE(recorder.emissions[4 + field].value.toStringList(), expected);
}

void TestMainWindow::storeSearchSettingsKeepsReusedTextInPlace_data()
{
    addHistoryFields();
}

void TestMainWindow::storeSearchSettingsKeepsReusedTextInPlace()
{
    QFETCH(int, field);

    showWindow();
    SearchReplace *panel = window->searchPanel();
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel));
    QComboBox *box = field == 0 ? panel->searchFor() : panel->replaceTo();
    const QStringList items { "alpha", "beta", "gamma" };
    box->addItems(items);
    box->clearEditText();
    QTest::keyClicks(box->lineEdit(), QStringLiteral("gamma"));
    QCOMPARE(box->currentText(), QStringLiteral("gamma"));

    EmissionRecorder recorder(window);
    window->storeSearchSettings();

    QCOMPARE(itemTexts(box), items);
    QCOMPARE(recorder.keys(), searchKeys());
    QCOMPARE(recorder.emissions[4 + field].value.toStringList(), items);
}

void TestMainWindow::storeSearchSettingsMatchesCaseExactly_data()
{
    addHistoryFields();
}

void TestMainWindow::storeSearchSettingsMatchesCaseExactly()
{
    QFETCH(int, field);

    SearchReplace *panel = window->searchPanel();
    QComboBox *box = field == 0 ? panel->searchFor() : panel->replaceTo();
    box->addItems({ "Alpha", "beta" });
    // Set directly: the combo box's completer would correct the case while
    // typing.
    box->setEditText(QStringLiteral("alpha"));
    QCOMPARE(box->currentText(), QStringLiteral("alpha"));

    EmissionRecorder recorder(window);
    window->storeSearchSettings();

    const QStringList expected { "alpha", "Alpha", "beta" };
    QCOMPARE(itemTexts(box), expected);
    QCOMPARE(recorder.emissions.size(), 6);
    QCOMPARE(recorder.emissions[4 + field].value.toStringList(), expected);
}

void TestMainWindow::storeSearchSettingsDropsOldestOfTwenty_data()
{
    addHistoryFields();
}

void TestMainWindow::storeSearchSettingsDropsOldestOfTwenty()
{
    QFETCH(int, field);

    showWindow();
    SearchReplace *panel = window->searchPanel();
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel));
    QComboBox *box = field == 0 ? panel->searchFor() : panel->replaceTo();
    QStringList history;
    for (int i = 0; i < 20; ++i)
        history << QStringLiteral("old%1").arg(i, 2, 10, QLatin1Char('0'));
    box->addItems(history);
    QCOMPARE(box->count(), 20);
    box->clearEditText();
    QTest::keyClicks(box->lineEdit(), QStringLiteral("fresh"));
    QCOMPARE(box->currentText(), QStringLiteral("fresh"));

    EmissionRecorder recorder(window);
    window->storeSearchSettings();

    QStringList expected = history;
    expected.removeLast();
    expected.prepend(QStringLiteral("fresh"));
    QCOMPARE(box->count(), 20);
    QCOMPARE(itemTexts(box), expected);
    QCOMPARE(recorder.keys(), searchKeys());
    QCOMPARE(recorder.emissions[4 + field].value.toStringList(), expected);
}

// ---------------------------------------------------------------------------
// Settings button

void TestMainWindow::settingsButtonRequestsSettingsPage_data()
{
    QTest::addColumn<int>("instance");
    QTest::addColumn<QString>("page");

    QTest::newRow("static record") << -1 << QStringLiteral("Редактор исходных текстов Zu.0");
    QTest::newRow("instance 3") << 3 << QStringLiteral("Редактор исходных текстов Zu.3");
}

void TestMainWindow::settingsButtonRequestsSettingsPage()
{
    QFETCH(int, instance);
    QFETCH(QString, page);

    if (instance >= 0)
        plugin->descriptor()->instanceNumber = quintptr(instance);
    showWindow();
    auto *button = windowChild<QPushButton>("settingsButton");
    QVERIFY(button);
    QSignalSpy spy(window, &EditWindow::editSetting);

    QTest::mouseClick(button, Qt::LeftButton);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), page);
    QCOMPARE(spy.at(0).at(1).toString(), QString());
}

QTEST_MAIN(TestMainWindow)

#include "tst_mainwindow.moc"
