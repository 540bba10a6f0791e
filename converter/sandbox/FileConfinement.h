#pragma once

#include <cstdint>
#include <string>

namespace tnconvert {

/// The files that a process may still reach, enforced by the system (Landlock) however the process
/// is deceived: what is not allowed cannot be opened, made, removed or executed. Facts such as a
/// file's size stay visible.
class FileConfinement {
public:
    FileConfinement();
    ~FileConfinement();
    FileConfinement(const FileConfinement &) = delete;
    FileConfinement &operator=(const FileConfinement &) = delete;

    /// Whether the system can do it at all; the other calls have no effect where it cannot.
    static bool isAvailable();

    /// Allows to read @p path and, if it is a directory, all below it. Links are followed here and
    /// now. A path that does not exist is passed over.
    void allowReading(const std::string &path);
    /// Allows to make, write, rename and remove files directly or deeper in the directory @p path.
    void allowWriting(const std::string &path);
    /// From now on, for the calling thread and all that it starts. Nothing takes it back. False
    /// when the system refuses.
    bool enter();

private:
    void allow(const std::string &path, std::uint64_t rights);

    int m_ruleset = -1;
};

} // namespace tnconvert
