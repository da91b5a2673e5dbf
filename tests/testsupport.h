#ifndef TESTSUPPORT_H
#define TESTSUPPORT_H

// Helpers the test executables share: files written and read back, widgets
// driven as a user drives them, and a temporary current directory.

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QPoint>
#include <QPointer>
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

#endif // TESTSUPPORT_H
