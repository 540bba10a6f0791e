#pragma once

#include <optional>
#include <string>

namespace tnconvert {

/// What became of the faces of some shapes. Tallies of several shapes can be added up.
struct FaceTally {
    int faces = 0; ///< that were to be drawn
    int lost = 0; ///< of these, without a single triangle
    double area = 0; ///< of the triangles, mm²
    std::optional<double> lostArea = 0; ///< mm²; nothing when it cannot be told
    bool isFiltered = false; ///< the settings left faces or edges out

    FaceTally &operator+=(const FaceTally &other);

    /// What is lost from @p file, empty when nothing is.
    std::string sentence(const std::string &file) const;
};

} // namespace tnconvert
