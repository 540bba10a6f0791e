#pragma once

#include <string>
#include <vector>

namespace tnconvert {

/// The libraries that the converter is made of and that tell their versions, as "name version".
std::vector<std::string> libraryVersions();

} // namespace tnconvert
