#pragma once

#include <string>

namespace tnconvert {

/// Whether the header of the Step file @p path names a schema for analysis (AP209): such files may
/// hold finite elements instead of shapes, of which the kernel knows nothing.
bool isAnalysisModel(const std::string &path);

} // namespace tnconvert
