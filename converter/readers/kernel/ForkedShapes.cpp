#include "readers/kernel/ForkedShapes.h"

#include "core/ForkedProcess.h"
#include "readers/kernel/KernelGuard.h"

#include <BinTools.hxx>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>

namespace tnconvert {

namespace {

using Clock = std::chrono::steady_clock;
using MakeShape = std::function<TopoDS_Shape(std::size_t)>;

/// A sound face takes the kernel some milliseconds.
constexpr std::chrono::seconds limitOfEach(10);

/// Nothing is reported meanwhile, and hosts end a conversion that is silent for twice as long.
constexpr std::chrono::seconds limitOfAll(60);

/// Bytes of one shape, which a child whose memory is damaged may state at will. Large faces have
/// some million.
constexpr std::uint64_t largestShape = 1U << 28;

class Pipe {
public:
    Pipe()
    {
        if (pipe2(m_ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category());
    }
    ~Pipe()
    {
        closeWriting();
        close(m_ends[0]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    int reading() const { return m_ends[0]; }
    int writing() const { return m_ends[1]; }

    /// Lets the reader see the end when no other process can write any more.
    void closeWriting()
    {
        if (const int end = std::exchange(m_ends[1], -1); end >= 0)
            close(end);
    }

private:
    int m_ends[2] = {-1, -1};
};

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
void makeInChild(int pipe, std::size_t first, std::size_t count, const MakeShape &make)
{
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
}

/// Reads from a child, each message up to the limit of its own and all up to a point in time.
class ShapePipe {
public:
    ShapePipe(int pipe, Clock::time_point end)
        : m_pipe(pipe)
        , m_end(end)
    {
    }

    /// Gives false when the child has ended, takes too long or makes no sense.
    bool read(TopoDS_Shape &shape)
    {
        m_endOfMessage = std::min(m_end, Clock::now() + limitOfEach);
        std::uint64_t size = 0;
        if (!readAll(reinterpret_cast<char *>(&size), sizeof size) || size > largestShape)
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
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_endOfMessage
                                                                                    - Clock::now());
            pollfd ready = {m_pipe, POLLIN, 0};
            const int polled = poll(&ready, 1, std::max(int(left.count()), 0));
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
    const Clock::time_point m_end;
    Clock::time_point m_endOfMessage;
};

/// Makes shapes from the given one on, until all are made or one is lost, and gives the number of
/// the next one.
std::size_t makeSome(std::size_t first, std::vector<TopoDS_Shape> &shapes, const MakeShape &make,
                     Clock::time_point end)
{
    Pipe pipe;
    const ForkedProcess child([&] { makeInChild(pipe.writing(), first, shapes.size(), make); });
    pipe.closeWriting();
    ShapePipe messages(pipe.reading(), end);
    for (std::size_t next = first; next < shapes.size(); ++next) {
        if (!messages.read(shapes[next]))
            return next + 1;
    }
    return shapes.size();
}

} // namespace

std::vector<TopoDS_Shape> makeForked(std::size_t count, const MakeShape &make)
{
    std::vector<TopoDS_Shape> shapes(count);
    const Clock::time_point end = Clock::now() + limitOfAll;
    try {
        for (std::size_t next = 0; next < count && Clock::now() < end;)
            next = makeSome(next, shapes, make, end);
    } catch (const std::system_error &) {
        // Without room for another process the rest is lost.
    }
    return shapes;
}

} // namespace tnconvert
