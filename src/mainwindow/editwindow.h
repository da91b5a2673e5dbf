#ifndef EDITWINDOW_H
#define EDITWINDOW_H

#include <QAbstractItemDelegate>
#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QMutex>
#include <QSet>
#include <QSharedPointer>
#include <QStringList>
#include <QVariant>
#include <QWaitCondition>

#include <functional>

#include "cursorhistorypos.h"
#include "editorwindowinterface.h"
#include "hosttables.h"
#include "seginterfaces.h"
#include "settingelement.h"

namespace Ui {
class EditWindow;
}

struct CompilerMessage;
class QCompleter;
class QFileDevice;
class QListWidget;
class QListWidgetItem;
class PluginInterface;
class ProgramWatcher;
class SearchReplace;
class SyntaxRules;
class ZuSourceCode;

// The editor's one top-level window: program and project lists on the
// left, editor tabs, command buttons and the compiler console on the right.
// Its member functions are spread over one source file per subsystem.
// It knows the plug-in object only as a host does: through the plug-in
// interface and the descriptor that follows it.
class EditWindow : public QMainWindow, public EditorWindowInterface
{
    Q_OBJECT

public:
    explicit EditWindow(PluginInterface *plugin, QWidget *parent = nullptr);
    ~EditWindow() override;

    // Window and buttons (editwindow.cpp)
    void setEditButtons(int save, int saveAs, int undo, int redo, int compile) override;
    void enableProgProj();
    void disableProgProj();
    SearchReplace *searchPanel() const { return search; }

    // Values the settings exchange hands to the window
    void setAutoComplete(bool on) { autoComplete = on; }
    bool isAutoComplete() const override { return autoComplete; }
    void setAutoSaveOnExec(bool on) { autoSaveOnExec = on; }
    bool isAutoSaveOnExec() const { return autoSaveOnExec; }
    void setProgramsDir(const QString &dir);
    QString currentProgramsDir() const { return programsDir; }
    void setMaxPosHistoryLength(int length) { maxPosHistoryLength = length; }
    int maxPosHistory() const { return maxPosHistoryLength; }
    void setOpenedList(const QStringList &names) { openedList = names; }
    QStringList storedOpenedList() const { return openedList; }
    void setOpenedTab(const QString &name) { openedTab = name; }
    QString storedOpenedTab() const { return openedTab; }

    // Host tables (editwindow_compile.cpp)
    QString getOperToolTip(QString name) override;
    const QStringList &operationNames() const { return operList; }
    const QStringList &typeNames() const { return typeList; }

    // Console (editwindow_compile.cpp)
    void setMaxConsoleLines(unsigned int n);
    // Not a slot: the host sees only the error-code form.
    void addConsoleErrMsg(const QString &text);

    // Program and project lists (editwindow_lists.cpp)
    static QString placeholderName();
    void fillProgramsList(QListWidget *list, const char *ext);
    QListWidget *currentList(QObject *sender) const;
    void editName(QListWidgetItem *item);
    QListWidgetItem *newItemInList(QListWidget *list, QString name);

    // Projects (editwindow_projects.cpp)
    void OpenPrj(bool skip);
    void dropCurrProjList();
    bool selectProjByName(QString name);
    bool isProgInProj(QString name) const;
    void saveChangedInProj();

    // Tabs (editwindow_tabs.cpp)
    QWidget *addTextTab(QString name);
    bool alreadyOpen(QString name);
    bool findOpenTab(QString name);
    void openProgsList(QStringList names);
    void setEditTabName(QString name) override;
    void loadFailed(const QString &title, const QString &name, const QString &why) override;
    QString currTabName() const;
    QStringList getOpenedList() const;
    void changeCompleter(ZuSourceCode *editor);
    QCompleter *sharedCompleter() const override { return completer; }
    ProgramWatcher *programWatcher() override { return programFiles; }
    void saveCurrentProg();
    void saveChangedProgOrProj();

    // Cursor history (editwindow_history.cpp)
    void restorePos();

    // Search (editwindow_search.cpp)
    void storeSearchSettings();
    void searchAndReplace(bool replace, bool all);

signals:
    void tablesRequest();
    void pluginDead(SEGINTERFACES *);
    void changeVariant(QString s, QVariant v, bool b = false, bool change = true);
    void tryToCompile(QString filename);
    void compilerErrorFound(bool);
    void editSetting(QString, QString);
    void operToolTipRequest(QString);

    // The host matches slots by signature and the by-name wiring by object
    // name; parameters are left unnamed where the host sees no names.
public slots:
    void tablesAnswer(ARRAY *, ARRAY *);
    void tabChanged(int);
    void tabChanged(QWidget *);
    void tabClose(int);
    void tabClose(QString) override;
    void curProgChanged(int);
    void curProjChanged(int);
    void curProgPrjChanged(int);
    void dirChanged(QString s = QString());
    void progRenamed(QListWidgetItem *);
    void nameEditClosed(QWidget *, QAbstractItemDelegate::EndEditHint);
    void addConsoleErrMsg(uint);
    void run();
    bool stop();
    void exchangeSettings(SettingsList, QString *, QString *);
    void switchOrLoad(QString);
    void addProgListAndEdit(QString) override;
    void parseMessage(QString);
    void zupselected(bool, QString);
    void newSettingsProgramsDir(QString, QString);
    void storeCursorToHistory(QString, int) override;
    void cursorPrevPosition(int) override;
    void cursorNextPosition(int) override;
    void saveFileIfChanged(QString);
    void saveEntireProject();
    void operToolTipAnswer(QString);
    bool canExit();

private slots:
    void on_editAllPrjButton_clicked();
    void on_downInPrjButton_clicked();
    void on_upInPrjButton_clicked();
    void on_addprjButton_clicked();
    void on_removeProgPrjButton_clicked();
    void on_newProgButton_clicked();
    void on_delProgButton_clicked();
    void on_editButton_clicked();
    void on_renameButton_clicked();
    void on_renamePrjButton_clicked();
    void on_programsList_itemActivated(QListWidgetItem *item);
    void on_projectsList_itemActivated(QListWidgetItem *item);
    void on_currentProjectList_itemActivated(QListWidgetItem *item);
    void onItemEntered(QListWidgetItem *item);
    void on_compileProgramButton_clicked();
    void hideSearch();
    void searchRequested();
    void replaceRequested();
    void replaceAllRequested();
    void on_seacrhButton_toggled(bool checked);
    void on_pushButton_clicked();
    void on_settingsButton_clicked();
    void on_debugProjButton_clicked();

private:
    void showListButtonsAsIcons();
    void rejectName(QListWidgetItem *item);
    void enableWholeProjectButtons();
    static QStringList namesOnDisk(const char *ext);
    static QStringList listTexts(const QListWidget *list);
    void refill(QListWidget *list, const QStringList &names);
    void projectFileError(const QFileDevice &file);
    bool writeProject(const QString &project, const QStringList &programs);
    bool enterProgramsDir(const QString &dir);
    void fileError(const QString &title, const QString &what, const QString &why);
    bool createEmptyFile(const QString &fileName);
    bool acceptName(const QString &name, const char *extension);
    void openPrograms(const QStringList &names);
    void moveInProject(int step);
    ZuSourceCode *editorAt(int index) const;
    ZuSourceCode *currentEditor() const;
    ZuSourceCode *bringForward(const QString &name);
    bool historyPlaceUsable(int index, int limit);
    void askHost(bool &answered, int timeout, const std::function<void()> &request);
    void takeArrivedTables();
    void showCompileError(const CompilerMessage &message);
    void makeConnections();
    int searchEditor(ZuSourceCode *editor, bool replace, bool all);
    void searchProjectOnce(bool replace);
    int searchAllInProject(bool replace);

    Ui::EditWindow *ui;
    QStringList operList;
    QStringList typeList;
    QWaitCondition waitCond;
    QMutex mutex;
    // Guarded by the mutex: what the host's answer slots hand over.
    bool tablesArrived = false;
    QStringList arrivedOperations;
    QStringList arrivedTypes;
    bool toolTipArrived = false;
    QString toolTipText;

    QFileSystemWatcher dirWatcher;
    bool newItemMode = false;
    bool stopped = false;
    PluginInterface *plugin;
    QString curProgName;
    QString programsDir;
    QString hostDirArg;
    QString unenterableDir; // last reported, until a directory is entered
    SearchReplace *search = nullptr;
    QList<CursorHistoryPos> cursorHistory;
    int historyPos = -1;
    QStringList openedList;
    QString openedTab;
    ProgramWatcher *programFiles = nullptr;
    // The colouring rules the highlighters of all open programs share.
    QSharedPointer<SyntaxRules> syntaxRules;
    QCompleter *completer = nullptr;

    QHash<const QListWidget *, QStringList> listedNames; // as last read from the directory
    QSet<QString> refusedHostNames; // bad names the host asked about, refused once

    // Files that could not be read while several programs opened at once.
    struct LoadFailure
    {
        QString title;
        QString name;
        QString why;
    };
    bool openingSeveral = false;
    QList<LoadFailure> loadFailures;
    // Every failure so far: an action that opens a tab learns from it
    // whether the tab came up empty.
    int loadFailureCount = 0;

    bool autoComplete = true;
    bool autoSaveOnExec = true;
    int maxPosHistoryLength = 50;
};

#endif // EDITWINDOW_H
