#pragma once

#include <QtCore/QThread>

#include <atomic>
#include <functional>

namespace tnhost {

/// Does what the event loop is not to wait for, one piece of work after the other, in a thread that
/// begins with the first. The system may have none to give, since its limit of processes counts
/// threads as well: then the event loop has to wait after all, rather than the work for ever.
class BackgroundThread {
public:
    BackgroundThread() = default;
    /// Waits for the piece that is being done; those behind it are dropped.
    ~BackgroundThread();
    Q_DISABLE_COPY_MOVE(BackgroundThread)

    /// Never does the work from inside the call. To be called in the thread of the owner, who tells
    /// himself of the result by an event.
    void run(const std::function<void()> &work);

private:
    std::atomic<bool> m_isEnding{false};
    QThread m_thread;
    QObject m_worker; ///< receives the work as events
};

} // namespace tnhost
