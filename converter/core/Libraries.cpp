#include "core/Libraries.h"

#include <Standard_Version.hxx>
#include <nlohmann/json.hpp>
#include <seccomp.h>
#include <zlib.h>

namespace tnconvert {

namespace {

std::string dotted(unsigned int major, unsigned int minor, unsigned int patch)
{
    return std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
}

} // namespace

std::vector<std::string> libraryVersions()
{
    // Those with functions tell what is loaded, the others what it was built with.
    std::vector<std::string> versions{
        "Open CASCADE " OCC_VERSION_COMPLETE,
        "JSON for Modern C++ "
            + dotted(NLOHMANN_JSON_VERSION_MAJOR, NLOHMANN_JSON_VERSION_MINOR,
                     NLOHMANN_JSON_VERSION_PATCH),
        std::string("zlib ") + zlibVersion(),
    };
    if (const scmp_version *seccomp = seccomp_version())
        versions.push_back("libseccomp " + dotted(seccomp->major, seccomp->minor, seccomp->micro));
    return versions;
}

} // namespace tnconvert
