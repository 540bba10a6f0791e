#include "core/ForkedProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <system_error>
#include <utility>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tnconvert {

namespace {

[[noreturn]] void doAndEnd(const std::function<void()> &work, pid_t parent)
{
    dieWithParent(parent);
    int status = EXIT_SUCCESS;
    try {
        work();
    } catch (const std::exception &) {
        status = EXIT_FAILURE;
    }
    // The static objects are the parent's, and freeing all memory piece by piece takes time.
    std::_Exit(status);
}

} // namespace

void dieWithParent(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have ended just before.
    if (getppid() != parent)
        std::_Exit(1);
}

ForkedProcess::ForkedProcess(const std::function<void()> &work)
{
    const pid_t parent = getpid();
    m_child = fork();
    if (m_child < 0)
        throw std::system_error(errno, std::generic_category());
    if (m_child == 0)
        doAndEnd(work, parent);
}

ForkedProcess::~ForkedProcess()
{
    if (m_child > 0) {
        kill(m_child, SIGKILL);
        wait();
    }
}

int ForkedProcess::wait()
{
    const pid_t child = std::exchange(m_child, 0);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return status;
}

} // namespace tnconvert
