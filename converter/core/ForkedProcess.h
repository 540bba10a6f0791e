#pragma once

#include <functional>

#include <sys/types.h>

namespace tnconvert {

/// Makes the system kill this process when @p parent ends, which started it.
void dieWithParent(pid_t parent);

/// A copy of this process that does one thing and ends, at the latest with this process.
class ForkedProcess {
public:
    /// Starts @p work in the copy, whose exit status says whether it threw a std::exception. Throws
    /// std::system_error when the system has no room for another process.
    explicit ForkedProcess(const std::function<void()> &work);

    /// Kills the copy if it was not waited for.
    ~ForkedProcess();

    ForkedProcess(const ForkedProcess &) = delete;
    ForkedProcess &operator=(const ForkedProcess &) = delete;

    /// Waits for the end of the copy, once, and gives its status as waitpid does.
    int wait();

private:
    pid_t m_child = 0; ///< 0 when there is none any more
};

} // namespace tnconvert
