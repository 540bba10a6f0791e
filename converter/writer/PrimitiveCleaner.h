#pragma once

#include "scene/Scene.h"

namespace tnconvert {

/// Whether @p primitive can be written as it is: all of its vertices are used and made of numbers,
/// its normals have a direction, and no triangle or segment has a corner twice.
bool isClean(const Primitive &primitive);

/// A copy of @p primitive that is. It has no indices when nothing is left.
Primitive cleaned(const Primitive &primitive);

} // namespace tnconvert
