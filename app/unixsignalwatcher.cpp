#include "app/unixsignalwatcher.h"

#include <QSocketNotifier>

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// The write end for the handler; -1 while no watcher is installed.
volatile std::sig_atomic_t s_writeFd = -1;

extern "C" void onUnixSignal(int signalNumber)
{
    const int savedErrno = errno;
    const auto byte = static_cast<unsigned char>(signalNumber);
    // Non-blocking: should the loop fall far behind, a lost byte costs nothing,
    // the earlier ones already ask for the same end.
    [[maybe_unused]] const ssize_t written = ::write(s_writeFd, &byte, 1);
    errno = savedErrno;
}

} // namespace

UnixSignalWatcher::UnixSignalWatcher(std::initializer_list<int> signalNumbers, QObject *parent)
    : QObject(parent)
{
    Q_ASSERT(s_writeFd == -1);
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, m_fds) != 0)
        return; // the program still runs, it merely ends as the signal's default would have it
    s_writeFd = m_fds[0];
    m_notifier = new QSocketNotifier(m_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignalWatcher::onReadable);

    struct sigaction action = {};
    action.sa_handler = onUnixSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : signalNumbers) {
        Handled handled{number, {}};
        if (::sigaction(number, &action, &handled.previous) == 0)
            m_handled.push_back(handled);
    }
}

UnixSignalWatcher::~UnixSignalWatcher()
{
    for (const Handled &handled : m_handled)
        ::sigaction(handled.number, &handled.previous, nullptr);
    if (m_fds[0] < 0)
        return;
    s_writeFd = -1;
    delete m_notifier; // before its socket goes
    ::close(m_fds[0]);
    ::close(m_fds[1]);
}

void UnixSignalWatcher::onReadable()
{
    unsigned char byte = 0;
    while (::read(m_fds[1], &byte, 1) == 1)
        emit signalReceived(byte);
}
