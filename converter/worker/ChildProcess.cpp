#include "worker/ChildProcess.h"

#include "core/ConversionError.h"
#include "worker/ProcessSetup.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <system_error>

#include <fcntl.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tnconvert {

namespace {

/// Takes memory in large pieces and gives none back, which a short life need not bother with.
void hoardMemory()
{
    mallopt(M_TOP_PAD, 16 << 20);
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
}

[[noreturn]] void doAndEnd(const std::function<void()> &work, pid_t parent)
{
    dieWithParent(parent);
    hoardMemory();
    // What stands in there is for the parent.
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0)
        close(STDIN_FILENO);
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

void ChildProcess::run(const std::function<void()> &work)
{
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0)
        throw ConversionError("No process can be started for the conversion: "
                              + std::generic_category().message(errno) + ".");
    if (child == 0)
        doAndEnd(work, parent);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    if (WIFSIGNALED(status)) {
        std::signal(WTERMSIG(status), SIG_DFL);
        std::raise(WTERMSIG(status));
    }
    if (status != 0)
        std::_Exit(WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE);
}

} // namespace tnconvert
