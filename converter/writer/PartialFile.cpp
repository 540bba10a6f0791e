#include "writer/PartialFile.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "protocol/WorkerProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnconvert {

namespace {

/// Where the system's own words would leave the user alone.
constexpr struct {
    int error;
    const char *reason;
} reasons[] = {
    {ENOSPC, "the disk is full"},
    {EDQUOT, "the user's share of the disk is used up"},
    {EFBIG, "it would be larger than a file may be here"},
    {EROFS, "the disk can only be read"},
    {EACCES, "the user may not write to its directory"},
    {EPERM, "the user may not write to its directory"},
    {EEXIST, "its temporary name, with .part, is taken"},
};

std::string reasonOf(int error)
{
    const auto *const found =
        std::find_if(std::begin(reasons), std::end(reasons),
                     [error](const auto &each) { return each.error == error; });
    return found == std::end(reasons) ? std::generic_category().message(error) : found->reason;
}

} // namespace

PartialFile::PartialFile(const std::string &path)
    : m_path(path)
    , m_partial(path + tnprotocol::partialSuffix)
{
    unlink(m_partial.c_str());
    m_file = open(m_partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (m_file < 0)
        fail(errno);
}

PartialFile::~PartialFile()
{
    if (!m_isPublished && isInPlace())
        unlink(m_partial.c_str());
    if (m_file >= 0)
        close(m_file);
}

std::streamsize PartialFile::xsputn(const char *bytes, std::streamsize count)
{
    std::streamsize done = 0;
    while (done < count && m_error == 0) {
        const ssize_t written = write(m_file, bytes + done, std::size_t(count - done));
        if (written >= 0)
            done += written;
        else if (errno != EINTR)
            m_error = errno;
    }
    return done;
}

PartialFile::int_type PartialFile::overflow(int_type byte)
{
    const char single = traits_type::to_char_type(byte);
    return xsputn(&single, 1) == 1 ? byte : traits_type::eof();
}

bool PartialFile::isInPlace() const
{
    struct stat own { };
    struct stat there { };
    return m_file >= 0 && fstat(m_file, &own) == 0 && lstat(m_partial.c_str(), &there) == 0
        && own.st_dev == there.st_dev && own.st_ino == there.st_ino;
}

void PartialFile::publish()
{
    if (m_error != 0)
        fail(m_error);
    if (!isInPlace())
        fail(EEXIST);
    // Some file systems tell only here that there was no space.
    if (close(std::exchange(m_file, -1)) != 0 || rename(m_partial.c_str(), m_path.c_str()) != 0) {
        const int error = errno;
        unlink(m_partial.c_str());
        fail(error);
    }
    m_isPublished = true;
}

void PartialFile::fail(int error) const
{
    throw ConversionError("The output " + validUtf8(m_path)
                          + " cannot be written: " + reasonOf(error) + ".");
}

} // namespace tnconvert
