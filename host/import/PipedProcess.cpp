#include "host/import/PipedProcess.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tnhost {

namespace {

// More than any pipe holds, so a dead process's last words are read in one go.
constexpr int maximalRead = 1 << 20;

} // namespace

PipedProcess::PipedProcess() = default;

PipedProcess::~PipedProcess()
{
    closePipe();
}

void PipedProcess::startPiped(const QString &program, const QStringList &arguments)
{
    int ends[2] = {-1, -1};
    // Without a pipe the process has no way to answer, which its owner waits for anyway.
    if (pipe2(ends, O_CLOEXEC) == 0) {
        m_readEnd = ends[0];
        m_writeEnd = ends[1];
        fcntl(m_readEnd, F_SETFL, O_NONBLOCK);
        m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, &PipedProcess::pipeReady);
    }
    start(program, arguments);
    // Only the child may hold this end, or the pipe would never be seen to close.
    if (m_writeEnd >= 0)
        ::close(m_writeEnd);
    m_writeEnd = -1;
}

QByteArray PipedProcess::readPipe()
{
    QByteArray all;
    // A process may write as fast as this reads; the rest comes with the next pipeReady().
    while (m_readEnd >= 0 && all.size() < maximalRead) {
        char bytes[16384];
        const ssize_t count = ::read(m_readEnd, bytes, sizeof bytes);
        if (count > 0) {
            all.append(bytes, static_cast<int>(count));
        } else if (count == 0) {
            closePipe();
            QMetaObject::invokeMethod(this, &PipedProcess::pipeClosed, Qt::QueuedConnection);
        } else if (errno != EINTR) {
            break;
        }
    }
    return all;
}

void PipedProcess::setupChildProcess()
{
    // The terminal sends its signals to the whole group of the process that it runs, which would
    // end this one before its owner can.
    setpgid(0, 0);
    if (m_writeEnd >= 0)
        dup2(m_writeEnd, STDOUT_FILENO);
}

void PipedProcess::closePipe()
{
    if (m_readEnd < 0)
        return;
    // It may be the notifier's own signal that led here, so the object stays.
    m_notifier->setEnabled(false);
    ::close(m_readEnd);
    m_readEnd = -1;
}

} // namespace tnhost
