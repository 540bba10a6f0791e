#pragma once

#include "readers/vrml/VrmlParser.h"

#include <string>
#include <vector>

namespace tnconvert {

/// Reads the file @p path, plain or gzip-compressed. Throws ConversionError.
std::vector<VrmlNodePtr> readVrmlFile(const std::string &path, const VrmlParser::Warn &warn);

} // namespace tnconvert
