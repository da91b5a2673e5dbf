#include "unixsignalwatcher.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// The end the handler writes to: a handler sees only globals.
volatile sig_atomic_t writeSocket = -1;

} // namespace

UnixSignalWatcher::UnixSignalWatcher(const QList<int> &signalNumbers, QObject *parent)
    : QObject(parent)
    , m_signalNumbers(signalNumbers)
{
    Q_ASSERT(writeSocket < 0);
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_sockets) != 0) {
        qWarning("zuhost: cannot watch for signals: %s", strerror(errno));
        return;
    }
    writeSocket = m_sockets[0];
    m_notifier = new QSocketNotifier(m_sockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignalWatcher::readSignal);

    struct sigaction action = {};
    action.sa_handler = &UnixSignalWatcher::handle;
    sigemptyset(&action.sa_mask);
    // An interrupted system call goes on: the signal is seen through the
    // notifier, not through a failing call.
    action.sa_flags = SA_RESTART;
    sigset_t watched;
    sigemptyset(&watched);
    for (int signalNumber : m_signalNumbers) {
        sigaction(signalNumber, &action, nullptr);
        sigaddset(&watched, signalNumber);
    }
    pthread_sigmask(SIG_UNBLOCK, &watched, nullptr);
}

UnixSignalWatcher::~UnixSignalWatcher()
{
    if (writeSocket < 0)
        return;
    for (int signalNumber : qAsConst(m_signalNumbers))
        ::signal(signalNumber, SIG_DFL);
    writeSocket = -1;
    delete m_notifier;
    ::close(m_sockets[0]);
    ::close(m_sockets[1]);
}

void UnixSignalWatcher::handle(int signalNumber)
{
    const int savedErrno = errno;
    const unsigned char byte = static_cast<unsigned char>(signalNumber);
    // Nothing to do when it fails: the socket is full of signals unread.
    [[maybe_unused]] const ssize_t written = ::write(writeSocket, &byte, 1);
    errno = savedErrno;
}

void UnixSignalWatcher::readSignal()
{
    unsigned char byte = 0;
    if (::read(m_sockets[1], &byte, 1) == 1)
        emit received(byte);
}
