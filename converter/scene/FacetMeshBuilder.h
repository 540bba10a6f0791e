#pragma once

#include "scene/PointList.h"

#include <optional>

namespace tnconvert {

/// Makes a primitive of faceted data: joins equal corners and invents the normals that the file
/// does not state. Works in the memory of what it is given and of what it makes.
class FacetMeshBuilder {
public:
    /// In place of an index: nothing is stated.
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    struct Corner {
        std::uint32_t point = 0; ///< index into points
        std::optional<Vec3> normal;
        std::optional<Rgba8> color;
    };

    PointList points; ///< mm
    std::vector<std::uint32_t> corners; ///< indices into points, three for each facet
    std::vector<Vec3f> normals; ///< as stated, of any length; null where useless
    /// For each corner an index into normals; empty when each point has the normal of its index, so
    /// far as there are so many.
    std::vector<std::uint32_t> normalOf;
    std::vector<Rgba8> pointColors; ///< as many as points, or none
    std::vector<Rgba8> cornerColors; ///< as many as corners, or none; instead of pointColors
    /// One for each facet, or none. Those of different groups meet at a sharp edge; those of group
    /// 0 always do.
    std::vector<std::uint32_t> groups;
    double creaseAngle = 0.5; ///< radians; invented normals are smooth across flatter edges

    /// Adds a facet whose corners state what they like, beside others of the same kind.
    void addFacet(const std::array<Corner, 3> &facet);

    /// The mesh, every vertex of which is used; the builder is empty afterwards. Facets without
    /// area are left out; so are those with impossible points or with indices out of range, which
    /// droppedFacets() counts. Throws ConversionError when no output could hold the mesh.
    Primitive build();

    std::size_t droppedFacets() const { return m_dropped; }

private:
    enum class Kind : std::uint8_t { Unused, Smooth, Stated, Split };
    struct Around;

    std::uint32_t pointAt(std::size_t corner) const;
    Vec3 facetNormal(std::size_t facet) const;
    void takeFacets();
    void takeNormals();
    void splitPoints();
    void splitPoint(std::uint32_t point, Around &around);
    Vec3 cornerNormal(std::uint32_t point, const Around &around, std::size_t index) const;
    std::uint32_t vertex(std::uint32_t point, const Vec3f &normal, const Rgba8 *color,
                         std::vector<std::uint32_t> &known);
    void removeUnused();

    Primitive m_result;
    std::vector<Kind> m_kinds; ///< of the points
    std::vector<std::uint32_t> m_pointOf; ///< of the vertices behind those that are points
    std::size_t m_dropped = 0;
};

} // namespace tnconvert
