#include "worker/ProgramFiles.h"

#include <filesystem>

#include <link.h>

namespace tnconvert {

std::vector<std::string> ProgramFiles::paths()
{
    std::error_code error;
    std::vector<std::string> paths{std::filesystem::read_symlink("/proc/self/exe", error).string()};
    dl_iterate_phdr(
        [](dl_phdr_info *object, std::size_t, void *list) {
            // The program has no name there, and what the system's kernel provides has no file.
            if (object->dlpi_name[0] == '/')
                static_cast<std::vector<std::string> *>(list)->emplace_back(object->dlpi_name);
            return 0;
        },
        &paths);
    return paths;
}

} // namespace tnconvert
