#pragma once

#include <QObject>

#include <csignal>
#include <initializer_list>
#include <vector>

class QSocketNotifier;

// Brings SIGTERM and its kin onto the event loop, so that a logout, a service
// manager's stop or Ctrl+C in a terminal end the program the way Quit does
// rather than dropping it mid-flight. The handler itself only writes the
// signal's number to a socket pair (nothing else is safe inside a handler);
// the loop reads it and emits signalReceived. One watcher at a time: the
// handler can only reach a socket through a process-wide variable.
class UnixSignalWatcher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(UnixSignalWatcher)

public:
    explicit UnixSignalWatcher(std::initializer_list<int> signalNumbers, QObject *parent = nullptr);
    ~UnixSignalWatcher() override;

signals:
    void signalReceived(int signalNumber);

private:
    void onReadable();

    struct Handled
    {
        int number;
        struct sigaction previous;
    };
    std::vector<Handled> m_handled;
    int m_fds[2] = {-1, -1};
    QSocketNotifier *m_notifier = nullptr;
};
