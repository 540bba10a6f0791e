#include "readers/kernel/ForkedShapes.h"

#include "readers/kernel/KernelGuard.h"

#include <BinTools.hxx>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sstream>
#include <string>

namespace tnconvert {

namespace {

using MakeShape = std::function<TopoDS_Shape(std::size_t)>;

bool writeAll(int pipe, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = write(pipe, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        size -= std::size_t(written);
    }
    return true;
}

std::string bytesOf(const TopoDS_Shape &shape)
{
    std::ostringstream stream;
    if (!shape.IsNull())
        BinTools::Write(shape, stream);
    return stream.str();
}

/// The child's whole life: one message for each shape, its size and its bytes.
[[noreturn]] void makeInChild(int pipe, std::size_t first, std::size_t count, const MakeShape &make)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Let a crash end the child at once and without a word; its parent knows.
    for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT})
        std::signal(signal, SIG_DFL);
    for (std::size_t i = first; i < count; ++i) {
        std::string bytes;
        try {
            bytes = bytesOf(make(i));
        } catch (...) {
            bytes.clear();
        }
        const std::uint64_t size = bytes.size();
        if (!writeAll(pipe, reinterpret_cast<const char *>(&size), sizeof size)
            || !writeAll(pipe, bytes.data(), bytes.size()))
            break;
    }
    _exit(0);
}

/// Reads from a child, up to a number of seconds for each message.
class ShapePipe {
public:
    ShapePipe(int pipe, int seconds)
        : m_pipe(pipe)
        , m_milliseconds(seconds * 1000)
    {
    }

    /// Gives false when the child has ended or takes too long.
    bool read(TopoDS_Shape &shape)
    {
        std::uint64_t size = 0;
        if (!readAll(reinterpret_cast<char *>(&size), sizeof size))
            return false;
        std::string bytes(size, '\0');
        if (!readAll(bytes.data(), bytes.size()))
            return false;
        if (bytes.empty())
            return true;
        std::istringstream stream(bytes);
        return KernelGuard::run([&] { BinTools::Read(shape, stream); });
    }

private:
    bool readAll(char *data, std::size_t size)
    {
        while (size > 0) {
            pollfd ready = {m_pipe, POLLIN, 0};
            const int polled = poll(&ready, 1, m_milliseconds);
            if (polled < 0 && errno == EINTR)
                continue;
            if (polled <= 0)
                return false;
            const ssize_t got = ::read(m_pipe, data, size);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                return false;
            data += got;
            size -= std::size_t(got);
        }
        return true;
    }

    const int m_pipe;
    const int m_milliseconds;
};

/// Makes shapes from the given one on, until all are made or one is lost, and gives the number of
/// the next one.
std::size_t makeSome(std::size_t first, std::vector<TopoDS_Shape> &shapes, const MakeShape &make,
                     int seconds)
{
    int ends[2];
    if (pipe(ends) != 0)
        return shapes.size();
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        makeInChild(ends[1], first, shapes.size(), make);
    }
    close(ends[1]);
    std::size_t next = first;
    if (child > 0) {
        ShapePipe messages(ends[0], seconds);
        while (next < shapes.size() && messages.read(shapes[next]))
            ++next;
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    } else {
        next = shapes.size();
    }
    close(ends[0]);
    return next < shapes.size() ? next + 1 : next;
}

} // namespace

std::vector<TopoDS_Shape> makeForked(std::size_t count, const MakeShape &make, int seconds)
{
    std::vector<TopoDS_Shape> shapes(count);
    for (std::size_t next = 0; next < count;)
        next = makeSome(next, shapes, make, seconds);
    return shapes;
}

} // namespace tnconvert
