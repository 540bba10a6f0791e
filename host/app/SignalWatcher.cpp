#include "host/app/SignalWatcher.h"

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int watched[] = {SIGINT, SIGTERM};

/// Read by the handler, which may do no more than write to it.
volatile std::sig_atomic_t wakeUp = -1;

extern "C" void onSignal(int signal)
{
    const auto byte = static_cast<unsigned char>(signal);
    // Nothing can be done about a failure here; the next signal ends the process anyway.
    [[maybe_unused]] const ssize_t written = ::write(wakeUp, &byte, 1);
}

} // namespace

SignalWatcher::SignalWatcher(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, m_sockets) != 0)
        return; // signals then do what they always did
    wakeUp = m_sockets[0];
    m_notifier = std::make_unique<QSocketNotifier>(m_sockets[1], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SignalWatcher::onReadable);
    for (const int signal : watched) {
        struct sigaction action { };
        action.sa_handler = &onSignal;
        // After the first one the default is back.
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        ::sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

SignalWatcher::~SignalWatcher()
{
    if (!m_notifier)
        return;
    for (const int signal : watched)
        ::signal(signal, SIG_DFL);
    m_notifier.reset();
    wakeUp = -1;
    ::close(m_sockets[0]);
    ::close(m_sockets[1]);
}

void SignalWatcher::onReadable()
{
    unsigned char byte = 0;
    if (::read(m_sockets[1], &byte, 1) == 1)
        emit received(byte);
}
