#include "programwatcher.h"

#include "zusourcecode.h"

ProgramWatcher::ProgramWatcher(QObject *parent)
    : QObject(parent)
    , watcher(new QFileSystemWatcher(this))
{
    // Queued, so that a question's modal loop does not run inside Qt's
    // dispatch of file notifications: Qt 5 goes on there to hand another
    // watcher a notification that the modal loop has read already, and that
    // watcher then blocks for good reading an empty queue.
    connect(watcher, &QFileSystemWatcher::fileChanged, this, &ProgramWatcher::deliver, Qt::QueuedConnection);
}

void ProgramWatcher::watch(const QString &path, ZuSourceCode *editor)
{
    if (!editors.contains(path, editor)) {
        editors.insert(path, editor);
        connect(editor, &QObject::destroyed, this, &ProgramWatcher::forget, Qt::UniqueConnection);
    }
    watcher->addPath(path);
}

QString ProgramWatcher::unwatch(ZuSourceCode *editor)
{
    const QString path = editors.key(editor);
    if (path.isEmpty())
        return QString();
    editors.remove(path, editor);
    // Qt drops the watch of a file that was deleted or replaced.
    const bool watched = watcher->files().contains(path);
    if (watched && !editors.contains(path))
        watcher->removePath(path);
    return watched ? path : QString();
}

// A notification queued before an editor stopped watching goes nowhere.
void ProgramWatcher::deliver(const QString &path)
{
    // A question asked about one editor's file runs a loop that may close
    // the others.
    const QList<QObject *> watching = editors.values(path);
    for (QObject *editor : watching) {
        if (editors.contains(path, editor))
            static_cast<ZuSourceCode *>(editor)->fileChanged(path);
    }
}

void ProgramWatcher::forget(QObject *editor)
{
    const QList<QString> paths = editors.keys(editor);
    for (const QString &path : paths) {
        editors.remove(path, editor);
        if (!editors.contains(path))
            watcher->removePath(path);
    }
}
