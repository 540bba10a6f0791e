#pragma once

#include <string>
#include <string_view>

namespace tnconvert {

/// The content of a file as a view of it, which takes no memory of its own. Where the file system
/// has no views the content is read.
class MappedFile {
public:
    /// Throws ConversionError when @p path cannot be read.
    explicit MappedFile(const std::string &path);
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    /// Valid as long as the object. Must not be touched once another program has made the file
    /// shorter: the system ends the process then.
    std::string_view bytes() const { return m_bytes; }

private:
    std::string m_content; ///< where there is no view
    void *m_view = nullptr;
    std::string_view m_bytes;
};

} // namespace tnconvert
