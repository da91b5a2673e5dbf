#ifndef TESTSUPPORT_H
#define TESTSUPPORT_H

// Helpers the test executables share: files written and read back, widgets
// driven as a user drives them, and a temporary current directory.

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QPair>
#include <QPoint>
#include <QPointer>
#include <QProcessEnvironment>
#include <QScopedPointer>
#include <QString>
#include <QStringList>
#include <QStyle>

#include "settingelement.h"

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QRadioButton;
class QTabWidget;
class QTemporaryDir;
class QWidget;

// Waits on the directory watcher get a generous limit: a loaded machine may
// be slow to deliver the notification.
const int watcherTimeout = 10000;

// Text written in the source as UTF-8 (the expected Cyrillic messages).
QString u(const char *utf8);

// ---------------------------------------------------------------------------
// Files

// Writes the file in place: an existing file is truncated and keeps its
// inode, as when an outside editor rewrites it.
bool writeFile(const QString &path, const QByteArray &data = QByteArray());

// The file's bytes, an empty (not null) array for an empty file, and
// `unreadable` when it cannot be read.
QByteArray fileBytes(const QString &path, const QByteArray &unreadable = QByteArray());

// A modification time far in the past: once a file is dated back to it, any
// later write, even of the same bytes, shows as a newer time.
QDateTime agedTime();
bool ageFile(const QString &path);
bool isAged(const QString &path);
bool writeAgedFile(const QString &path, const QByteArray &data);

// Everything a directory holds, hidden entries included, sorted by name.
QStringList entriesOf(const QString &path = QStringLiteral("."));

// What the system says about an error number, as a file's errorString()
// gives it.
QString systemErrorText(int errorNumber);

// The message naming a character windows-1251 has no byte for (written
// "U+" and codePoint) and its 1-based line.
QString unencodableCharacterText(const QString &character, const QString &codePoint, int line);

// Lowers the largest file this process may write, so that a write beyond it
// fails with an error instead of a signal; restores both on destruction.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(quint64 bytes);
    ~FileSizeLimit();
    bool isActive() const { return active; }

private:
    Q_DISABLE_COPY(FileSizeLimit)
    quint64 previousLimit = 0;
    bool active = false;
    void (*previousHandler)(int) = nullptr;
};

// Makes a directory one where no new file can be made, while the files in
// it stay as they are: the directory becomes 0555 and every directory above
// it that others cannot pass through gets the right to pass. All is put
// back on destruction.
class SealedDirectory
{
public:
    explicit SealedDirectory(const QString &path);
    ~SealedDirectory();
    bool isSealed() const { return sealed; }

private:
    Q_DISABLE_COPY(SealedDirectory)
    QList<QPair<QString, int>> previous; // each changed directory and its permissions before
    bool sealed = false;
};

// Runs as the user and group "nobody" until destruction, when the process
// runs as root: the permissions of files stop root only so. Elsewhere it
// does nothing, and the permissions stop the process by themselves.
class UnprivilegedScope
{
public:
    UnprivilegedScope();
    ~UnprivilegedScope();
    bool isActive() const { return active; }

private:
    Q_DISABLE_COPY(UnprivilegedScope)
    unsigned previousUser = 0;
    unsigned previousGroup = 0;
    bool dropped = false;
    bool active = false;
};

// Whether this process can make a new file in the directory (it removes
// the file it made).
bool canMakeFileIn(const QString &dir);
// Whether this process could write the file where it is; nothing is written.
bool canWriteInPlace(const QString &path);

// <root>/progs becomes the current directory, the programs directory of a
// test; beside it lie programs a bad name could reach, dated back:
// <root>/victim.zu and <root>/abs/victim.zu.
bool enterProgramsDirBesideVictims(const QString &root);
// Empty when those programs and the directories around the programs
// directory are as they were made, else what changed.
QString victimsChanged(const QString &root);

// ---------------------------------------------------------------------------
// Names of programs and projects

// Why a name a person gave is refused, as the box says it.
QString emptyNameReason();
QString directoryNameReason();
QString separatorNameReason();
QString controlCharacterReason();
QString tooLongNameReason();
// The text of the box that refuses a name a person gave.
QString refusedNameBoxText(const QString &name, const QString &reason);
// The text of the one box that names the remembered or listed program
// names that were skipped: how many, the names shown, one a line, then how
// many were not shown.
QString skippedNamesBoxText(int count, const QStringList &shownNames);
// The same for the programs whose files could not be read, each line
// "NAME: WHY".
QString unreadProgramsBoxText(int count, const QStringList &shownLines);

// ---------------------------------------------------------------------------
// Widgets

QStringList itemTexts(const QListWidget *list);
QStringList itemTexts(const QComboBox *box);
QStringList tabTexts(const QTabWidget *tabs);

QListWidgetItem *itemNamed(const QListWidget *list, const QString &text);
// Scrolls the item into view first.
QPoint itemCenter(QListWidget *list, QListWidgetItem *item);
// Moves the mouse over an item. The pointer first goes to the empty corner
// of the list, so that it really moves even when it last stood at the same
// place, in another list or another window.
void hoverItem(QListWidget *list, QListWidgetItem *item);
void clickItem(QListWidget *list, QListWidgetItem *item);
void clickRow(QListWidget *list, int row);
// A real double click: press, release, the double-click event, release.
void doubleClickItem(QListWidget *list, QListWidgetItem *item);
void clickTab(QTabWidget *tabs, int index);
// The button that closes a tab, on whichever side the style puts it.
QAbstractButton *closeButtonOf(QTabWidget *tabs, int index);

// The in-place editor a list has open: the visible line edit in its
// viewport (a closed one lingers hidden until it is deleted).
QLineEdit *openEditor(const QListWidget *list);
// Types text as keystrokes, one character (code point) per key.
void typeText(QWidget *widget, const QString &text);
// Selects the editor's text, erases it and types the name.
void replaceText(QLineEdit *editor, const QString &name);

// Clicks a radio button or check box on its indicator: a wide button's
// centre may lie beyond its text, where a click does not count.
void clickIndicator(QAbstractButton *button, QStyle::SubElement indicator);
void clickRadio(QRadioButton *button);
void clickCheck(QCheckBox *box);

// Shows the window and makes it the active one; false when either fails.
bool showAndActivate(QWidget *window);

// Deletes the widgets that are still there and empties the list.
void deleteWidgets(QList<QPointer<QWidget>> &widgets);

// Lets notifications that are already queued (the directory watcher's among
// them) be delivered before the next step.
void deliverPending();

int indexOfKey(const SettingsList &list, const QString &key);

// ---------------------------------------------------------------------------
// A fresh temporary directory that is the current one until leave(): the
// window lists and watches the current directory.

class TempCurrentDir
{
public:
    TempCurrentDir();
    ~TempCurrentDir();

    // Makes a fresh directory; false when that fails.
    bool make();
    // Makes it the current directory, remembering the one current before.
    bool enter();
    // Goes back to the directory current before and removes this one.
    void leave();

    QString path() const;
    QString errorString() const;

private:
    QScopedPointer<QTemporaryDir> dir;
    QString previous;
};

// ---------------------------------------------------------------------------
// Processes

// How a program that runProcess() ran ended.
struct ProcessRun
{
    bool finished = false; // exited by itself, not by a crash or the time limit
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

// Runs the program on the offscreen platform until it exits by itself, for
// at most timeout ms. The variables of `environment` are set over the
// test's own.
ProcessRun runProcess(const QString &program, const QStringList &arguments,
                      const QProcessEnvironment &environment = QProcessEnvironment(),
                      int timeout = 20000);

// Whether a program's --help output gives the path as an option's default,
// "(default: PATH)". QCommandLineParser wraps its lines, inside a long path
// as well, so white space does not count.
bool helpNamesDefault(const QByteArray &help, const QString &path);

#endif // TESTSUPPORT_H
