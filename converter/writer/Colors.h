#pragma once

#include <algorithm>
#include <cmath>

namespace tnconvert {

/// The linear value of one that files state in sRGB, both from 0 to 1.
inline double linearValue(double srgb)
{
    const double c = std::clamp(srgb, 0.0, 1.0);
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

} // namespace tnconvert
