#ifndef PROGRAMWATCHER_H
#define PROGRAMWATCHER_H

#include <QFileSystemWatcher>
#include <QMultiHash>
#include <QObject>

class ZuSourceCode;

// Watches the files of all open programs with one file system watcher, and
// hands each change to the editors of that file. A watcher of each editor's
// own would take one of the user's few inotify instances per open program;
// past their limit Qt falls back to polling without a word.
class ProgramWatcher : public QObject
{
    Q_OBJECT

public:
    explicit ProgramWatcher(QObject *parent = nullptr);

    // The editor's fileChanged slot hears of the file's changes from now on.
    void watch(const QString &path, ZuSourceCode *editor);
    // The editor hears of no change any more. Returns the path it watched,
    // empty when the watch had ended already (a deleted file's does).
    QString unwatch(ZuSourceCode *editor);

private slots:
    void deliver(const QString &path);

private:
    void forget(QObject *editor);

    QFileSystemWatcher *watcher;
    // The editors by path, as objects: a destroyed one is no editor any more.
    QMultiHash<QString, QObject *> editors;
};

#endif // PROGRAMWATCHER_H
