#ifndef EDITORSUPPORT_H
#define EDITORSUPPORT_H

// Helpers for the tests that drive the editor's own classes: the plug-in
// object and its window, editors on pages of their own, and a host that
// answers the window's table request from a thread.

#include <QList>
#include <QMetaObject>
#include <QPointer>
#include <QStringList>
#include <QTextBlock>

#include <thread>
#include <utility>

#include "hosttables.h"

class EditWindow;
class QListWidget;
class QPlainTextEdit;
class QTabWidget;
class QWidget;
class TextEdit;
class ZuSourceCode;

// Makes the plug-in object and its window as a host does; the window is
// null when it could not be made.
void makePlugin(TextEdit *&plugin, EditWindow *&window);
// The window has no parent and the plug-in object does not delete it.
void deletePlugin(TextEdit *&plugin, EditWindow *&window);

// The window's program, project and project-program lists, its selector
// and its editor tabs, found by object name; false when one is missing.
bool findListsAndTabs(EditWindow *window, QListWidget *&programs, QListWidget *&projects,
                      QListWidget *&projectPrograms, QTabWidget *&selector, QTabWidget *&tabs);

// What a host remembered of the last session: the programs open then and
// the current one, handed to the plug-in as its settings.
void rememberOpenedTabs(TextEdit *plugin, const QStringList &opened, const QString &current);

// An editor of the program `name` on a page of its own, outside the
// window's tabs; the page is added to `pages` for the test to delete.
ZuSourceCode *editorOnOwnPage(const QString &name, EditWindow *window, QList<QPointer<QWidget>> &pages);

// The first and last blocks in the editor's view, found by where they are
// drawn.
std::pair<QTextBlock, QTextBlock> shownBlocks(const QPlainTextEdit *editor);
// Whether every block in view has been coloured: the highlighter leaves
// state 0 on a block it has coloured, and -1 marks one that waits.
bool shownBlocksColoured(const QPlainTextEdit *editor);

// ---------------------------------------------------------------------------
// Answers the window's table request once from a thread of its own, as a
// host does, and joins that thread however the test function is left.

class ThreadedTablesHost
{
public:
    ThreadedTablesHost(EditWindow *window, const ARRAY &operations, const ARRAY &types);
    ~ThreadedTablesHost();

    // Starts the thread on each table request the window emits.
    void answerRequests();
    void start();
    // Joins the thread.
    void finish();
    bool started() const;

private:
    EditWindow *window;
    ARRAY operations;
    ARRAY types;
    QMetaObject::Connection requests;
    std::thread thread;
};

#endif // EDITORSUPPORT_H
