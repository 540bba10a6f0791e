#pragma once

#include "readers/vrml/VrmlNode.h"
#include "scene/Scene.h"

#include <optional>
#include <vector>

namespace tnconvert {

/// Colours or normals of a geometry node, stated for each corner or for each face, through an
/// index or one after the other. Indices out of range give nothing.
class VrmlIndexedData {
public:
    /// The rows of @p child's field @p list (three numbers each), ordered by the field @p index;
    /// @p perVertex names the field that tells corners from faces.
    VrmlIndexedData(const VrmlNode &vrml, const char *child, const char *list, const char *index,
                    const char *perVertex);

    /// The row of a corner. @p face counts the faces, @p position the entries of the corner index,
    /// @p point is the corner's own index.
    std::optional<Vec3> at(std::size_t face, std::size_t position, double point) const;

private:
    const VrmlNumbers *m_values = nullptr;
    const VrmlNumbers &m_index;
    bool m_isPerVertex;
    VrmlNodePtr m_child;
};

/// The numbers of @p values in threes, multiplied by @p unit.
std::vector<Vec3> vrmlPoints(const VrmlNumbers &values, double unit);

/// A colour that a file states with numbers from 0 to 1.
std::optional<Rgba8> vrmlColor(const std::optional<Vec3> &color);

} // namespace tnconvert
