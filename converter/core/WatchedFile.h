#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>

namespace tnconvert {

/// The bytes of a file, which tells how far it has been read.
class WatchedFile : public std::filebuf {
public:
    /// @p heard learns the share that has been read, from 0 to 1, every some kilobytes.
    WatchedFile(const std::string &path, std::function<void(double)> heard);

protected:
    int_type underflow() override;

private:
    const std::function<void(double)> m_heard;
    const std::uint64_t m_size;
    std::uint64_t m_read = 0;
};

} // namespace tnconvert
