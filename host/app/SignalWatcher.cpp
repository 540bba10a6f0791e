#include "host/app/SignalWatcher.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace tnhost {

namespace {

constexpr int watched[] = {SIGINT, SIGTERM, SIGHUP};
constexpr long long patience = 1000; // ms
constexpr itimerval lastMoment{{0, 0}, {1, 500000}};

// The handler may do no more than use these and write to the socket.
volatile std::sig_atomic_t wakeUp = -1;
std::atomic<long long> firstAt{0};
volatile std::sig_atomic_t firstSignal = 0;
static_assert(std::atomic<long long>::is_always_lock_free);

extern "C" void onLastMoment(int)
{
    std::signal(firstSignal, SIG_DFL);
    std::raise(firstSignal);
}

extern "C" void onSignal(int signal)
{
    const int errorBefore = errno;
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    const long long now = time.tv_sec * 1000LL + time.tv_nsec / 1000000;
    long long first = 0;
    if (firstAt.compare_exchange_strong(first, now)) {
        firstSignal = signal;
        ::setitimer(ITIMER_REAL, &lastMoment, nullptr);
        const auto byte = static_cast<unsigned char>(signal);
        // Nothing can be done about a failure here; a later signal ends the process anyway.
        [[maybe_unused]] const ssize_t written = ::write(wakeUp, &byte, 1);
    } else if (now - first >= patience) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    errno = errorBefore;
}

bool isHandledBy(int signal, void (*handler)(int))
{
    struct sigaction action { };
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == handler;
}

} // namespace

SignalWatcher::SignalWatcher()
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, m_sockets) != 0)
        return; // signals then do what they always did
    wakeUp = m_sockets[0];
    firstAt = 0;
    m_notifier = std::make_unique<QSocketNotifier>(m_sockets[1], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SignalWatcher::onReadable);
    std::signal(SIGALRM, &onLastMoment);
    for (const int signal : watched) {
        if (isHandledBy(signal, SIG_IGN))
            continue;
        struct sigaction action { };
        action.sa_handler = &onSignal;
        action.sa_flags = SA_RESTART;
        ::sigemptyset(&action.sa_mask);
        for (const int other : watched) // of several at once the first counts
            ::sigaddset(&action.sa_mask, other);
        ::sigaction(signal, &action, nullptr);
    }
}

SignalWatcher::~SignalWatcher()
{
    if (!m_notifier)
        return;
    // The handlers stay: a second signal in a row must not end the process amid its clean-up.
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

} // namespace tnhost
