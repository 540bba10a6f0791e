#include "worker/ChildProcess.h"

#include "core/ConversionError.h"
#include "core/ForkedProcess.h"

#include <csignal>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tnconvert {

namespace {

/// What stands in there is for the parent.
void leaveInput()
{
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0)
        close(STDIN_FILENO);
}

int statusOf(const std::function<void()> &work)
{
    try {
        return ForkedProcess([&work] {
                   leaveInput();
                   work();
               })
            .wait();
    } catch (const std::system_error &error) {
        throw ConversionError(
            "No process can be started for the conversion: " + error.code().message() + ".");
    }
}

} // namespace

void ChildProcess::run(const std::function<void()> &work)
{
    const int status = statusOf(work);
    if (WIFSIGNALED(status)) {
        std::signal(WTERMSIG(status), SIG_DFL);
        std::raise(WTERMSIG(status));
    }
    if (status != 0)
        std::_Exit(WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE);
}

} // namespace tnconvert
