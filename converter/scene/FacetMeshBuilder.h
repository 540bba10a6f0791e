#pragma once

#include "scene/Scene.h"

#include <optional>

namespace tnconvert {

/// Makes a primitive of faceted data: welds equal corners and invents the normals that the file
/// does not state.
class FacetMeshBuilder {
public:
    struct Corner {
        std::uint32_t point = 0; ///< index into points
        std::optional<Vec3> normal;
        std::optional<Rgba8> color;
    };
    struct Facet {
        std::array<Corner, 3> corners;
        /// Facets of different groups meet at a sharp edge; those of group 0 always do.
        std::uint32_t smoothingGroup = 1;
    };

    std::vector<Vec3> points; ///< mm
    std::vector<Facet> facets;
    double creaseAngle = 0.5; ///< radians; invented normals are smooth across flatter edges

    /// Facets without area are left out; so are those with coordinates that are no numbers or with
    /// indices out of range, which droppedFacets() counts.
    Primitive build();

    std::size_t droppedFacets() const { return m_dropped; }

private:
    std::vector<Vec3> facetNormals();
    Vec3 smoothNormal(std::size_t facet, std::uint32_t point,
                      const std::vector<Vec3> &facetNormals) const;

    std::vector<std::uint32_t> m_firstAtPoint; ///< for each point the start in m_facetsAtPoint
    std::vector<std::uint32_t> m_facetsAtPoint;
    std::size_t m_dropped = 0;
};

/// Gives points of equal coordinates one index; @p indexOf maps the old indices.
void weldPoints(std::vector<Vec3> &points, std::vector<std::uint32_t> &indexOf);

} // namespace tnconvert
