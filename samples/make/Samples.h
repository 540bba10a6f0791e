#pragma once

#include <string>

namespace tnsamples {

/// The samples with exact surfaces: bracket, housing, gearbox and the robot with its part files.
void writeKernelSamples(const std::string &directory);

/// The faceted samples: gear, chair and lamp.
void writeMeshSamples(const std::string &directory);

} // namespace tnsamples
