#include "sandbox/Sandbox.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "sandbox/FileConfinement.h"
#include "sandbox/SystemCallFilter.h"

#include <filesystem>

namespace tnconvert {

namespace {

/// What the libraries look into while they work.
constexpr const char *systemPaths[] = {
    "/usr",       "/lib",      "/lib64",       "/etc/ld.so.cache",        "/etc/localtime",
    "/proc/self", "/dev/null", "/dev/urandom", "/sys/devices/system/cpu",
};

std::string directoryOf(const std::string &path)
{
    return std::filesystem::path(absolutePath(path)).parent_path().string();
}

} // namespace

std::string Sandbox::begin()
{
    const bool filters = SystemCallFilter::install();
    const bool confines = FileConfinement::isAvailable();
    if (filters && confines)
        return {};
    return std::string("This system cannot confine a conversion ")
        + (confines      ? "by its system calls"
               : filters ? "to its own files"
                         : "to its own files or by its system calls")
        + "; a file made to do harm could reach what its user may.";
}

void Sandbox::confine(const std::string &input, const std::string &output, bool followsOutside)
{
    FileConfinement files;
    for (const char *path : systemPaths)
        files.allowReading(path);
    files.allowReading(followsOutside ? "/" : directoryOf(input));
    files.allowReading(input); // which may be a link
    files.allowWriting(directoryOf(output));
    if (FileConfinement::isAvailable() && !files.enter())
        throw ConversionError("The system refuses to confine the conversion to its files.");
}

} // namespace tnconvert
