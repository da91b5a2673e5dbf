#ifndef EDITORWINDOWINTERFACE_H
#define EDITORWINDOWINTERFACE_H

#include <QString>

class ProgramWatcher;
class QCompleter;

// What an editor asks of the window that holds its tab. The calls are
// direct and synchronous: the editor acts on their effect at once, and a
// tool tip comes back as the return value.
class EditorWindowInterface
{
public:
    // A negative value leaves a button as it is, 0 disables it, anything
    // else enables it.
    virtual void setEditButtons(int save, int saveAs, int undo, int redo, int compile) = 0;
    // The current tab's program took a new name.
    virtual void setEditTabName(QString name) = 0;
    virtual void tabClose(QString name) = 0;
    // Brings the window forward with the program's tab.
    virtual void addProgListAndEdit(QString name) = 0;

    virtual void storeCursorToHistory(QString name, int position) = 0;
    virtual void cursorPrevPosition(int limit) = 0;
    virtual void cursorNextPosition(int limit) = 0;

    virtual QString getOperToolTip(QString name) = 0;
    // The completer all editors share, pointed at the current one; null
    // while the window has none.
    virtual QCompleter *sharedCompleter() const = 0;
    // Whether typing offers completions (the AutoComplete setting).
    virtual bool isAutoComplete() const = 0;

    // Watches the files of all the window's editors.
    virtual ProgramWatcher *programWatcher() = 0;

    // The program's file could not be read into the editor: the window
    // tells the user, in a box of its own or with others that failed.
    virtual void loadFailed(const QString &title, const QString &name, const QString &why) = 0;

protected:
    ~EditorWindowInterface() = default;
};

#endif // EDITORWINDOWINTERFACE_H
