#include "editorsupport.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTabWidget>

#include "editwindow.h"
#include "settingelement.h"
#include "textedit.h"
#include "zusourcecode.h"

void makePlugin(TextEdit *&plugin, EditWindow *&window)
{
    plugin = new TextEdit;
    window = plugin->window();
}

void deletePlugin(TextEdit *&plugin, EditWindow *&window)
{
    delete window;
    window = nullptr;
    delete plugin;
    plugin = nullptr;
}

bool findListsAndTabs(EditWindow *window, QListWidget *&programs, QListWidget *&projects,
                      QListWidget *&projectPrograms, QTabWidget *&selector, QTabWidget *&tabs)
{
    programs = window->findChild<QListWidget *>(QStringLiteral("programsList"));
    projects = window->findChild<QListWidget *>(QStringLiteral("projectsList"));
    projectPrograms = window->findChild<QListWidget *>(QStringLiteral("currentProjectList"));
    selector = window->findChild<QTabWidget *>(QStringLiteral("selectorTabs"));
    tabs = window->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    return programs && projects && projectPrograms && selector && tabs;
}

void rememberOpenedTabs(TextEdit *plugin, const QStringList &opened, const QString &current)
{
    SettingElement openedList;
    openedList.key = QStringLiteral("openedlist");
    openedList.value = opened;
    SettingElement openedTab;
    openedTab.key = QStringLiteral("openedtab");
    openedTab.value = current;
    plugin->exchangeSettings({ openedList, openedTab }, nullptr, nullptr);
}

ZuSourceCode *editorOnOwnPage(const QString &name, EditWindow *window, QList<QPointer<QWidget>> &pages)
{
    auto *page = new QWidget;
    pages << page;
    auto *layout = new QHBoxLayout(page);
    auto *editor = new ZuSourceCode(page, name, window, QString());
    layout->addWidget(editor);
    return editor;
}

std::pair<QTextBlock, QTextBlock> shownBlocks(const QPlainTextEdit *editor)
{
    const QRect area = editor->viewport()->rect();
    return { editor->cursorForPosition(area.topLeft()).block(),
             editor->cursorForPosition(area.bottomLeft()).block() };
}

bool shownBlocksColoured(const QPlainTextEdit *editor)
{
    const auto [first, last] = shownBlocks(editor);
    for (QTextBlock block = first; block != last.next(); block = block.next()) {
        if (block.userState() != 0)
            return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// ThreadedTablesHost

ThreadedTablesHost::ThreadedTablesHost(EditWindow *window, const ARRAY &operations, const ARRAY &types)
    : window(window)
    , operations(operations)
    , types(types)
{
}

ThreadedTablesHost::~ThreadedTablesHost()
{
    QObject::disconnect(requests);
    finish();
}

void ThreadedTablesHost::answerRequests()
{
    requests = QObject::connect(window, &EditWindow::tablesRequest, window, [this] { start(); },
                                Qt::DirectConnection);
}

void ThreadedTablesHost::start()
{
    thread = std::thread([this] { window->tablesAnswer(&operations, &types); });
}

void ThreadedTablesHost::finish()
{
    if (thread.joinable())
        thread.join();
}

bool ThreadedTablesHost::started() const
{
    return thread.joinable();
}
