#pragma once

#include "scene/Transform.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tnconvert {

/// Splits a flat polygon, convex or not, into triangles of the same orientation. The results are
/// positions within @p corners. Polygons that cross themselves get some covering, never a failure;
/// those without area give no triangles.
std::vector<std::array<std::uint32_t, 3>> triangulated(const std::vector<Vec3> &corners);

} // namespace tnconvert
