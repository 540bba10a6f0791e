#pragma once

#include <string>
#include <vector>

namespace tnconvert {

/// What this program consists of on disk.
class ProgramFiles {
public:
    ProgramFiles() = delete;

    /// Absolute paths of the program and of the libraries that are loaded.
    static std::vector<std::string> paths();
};

} // namespace tnconvert
