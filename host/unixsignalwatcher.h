#ifndef UNIXSIGNALWATCHER_H
#define UNIXSIGNALWATCHER_H

#include <QList>
#include <QObject>

class QSocketNotifier;

// Turns Unix signals into a Qt signal that the event loop delivers. A
// signal handler may do almost nothing safely, so it only writes the
// signal's number to one end of a socket pair; a notifier on the other end
// reads it in the event loop. The signals are unblocked as well, since a
// parent may have started the process with them blocked.
//
// One watcher at a time per process; it puts the default handlers back
// when destroyed.
class UnixSignalWatcher : public QObject
{
    Q_OBJECT

public:
    explicit UnixSignalWatcher(const QList<int> &signalNumbers, QObject *parent = nullptr);
    ~UnixSignalWatcher() override;

signals:
    void received(int signalNumber);

private:
    static void handle(int signalNumber);
    void readSignal();

    QList<int> m_signalNumbers;
    int m_sockets[2] = {-1, -1};
    QSocketNotifier *m_notifier = nullptr;
};

#endif // UNIXSIGNALWATCHER_H
