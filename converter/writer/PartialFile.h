#pragma once

#include <streambuf>
#include <string>

namespace tnconvert {

/// A file that is written under a temporary name and gets its own when it is whole. Stream buffer
/// without a buffer: for few large pieces. After a failure it takes nothing more; publish() tells.
class PartialFile : public std::streambuf {
public:
    /// Makes @p path with ".part" appended; what stands there, the rest of a crash or a link, goes
    /// first. Throws ConversionError when it cannot be made.
    explicit PartialFile(const std::string &path);
    /// Removes the file unless it was published.
    ~PartialFile() override;
    PartialFile(const PartialFile &) = delete;
    PartialFile &operator=(const PartialFile &) = delete;

    /// Renames the file to the path, in place of a file or link that stands there. Throws
    /// ConversionError with the reason when anything of it could not be written.
    void publish();

protected:
    std::streamsize xsputn(const char *bytes, std::streamsize count) override;
    int_type overflow(int_type byte) override;

private:
    /// Whether the temporary name still stands for this file.
    bool isInPlace() const;
    [[noreturn]] void fail(int error) const;

    const std::string m_path;
    const std::string m_partial;
    int m_file = -1;
    int m_error = 0; ///< the first one
    bool m_isPublished = false;
};

} // namespace tnconvert
