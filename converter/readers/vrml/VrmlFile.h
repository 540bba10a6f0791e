#pragma once

#include "readers/vrml/VrmlParser.h"

#include <string>
#include <vector>

namespace tnconvert {

/// Reads the file @p path, plain or gzip-compressed. Adds what is missing in it to @p losses.
/// Throws ConversionError.
std::vector<VrmlNodePtr> readVrmlFile(const std::string &path, const VrmlParser::Warn &warn,
                                      VrmlLosses &losses);

} // namespace tnconvert
