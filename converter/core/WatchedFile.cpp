#include "core/WatchedFile.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace tnconvert {

namespace {

std::uint64_t sizeOf(const std::string &path)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

} // namespace

WatchedFile::WatchedFile(const std::string &path, std::function<void(double)> heard)
    : m_heard(std::move(heard))
    , m_size(sizeOf(path))
{
    open(path, std::ios::in | std::ios::binary);
}

WatchedFile::int_type WatchedFile::underflow()
{
    const int_type next = std::filebuf::underflow();
    m_read += std::uint64_t(egptr() - gptr());
    m_heard(m_size > 0 ? std::min(double(m_read) / double(m_size), 1.0) : 1);
    return next;
}

} // namespace tnconvert
