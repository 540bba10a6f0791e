#include "scene/FacetMeshBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <unordered_map>

namespace tnconvert {

namespace {

constexpr double largestCoordinate = 1e30;

/// Beyond so many facets around one point (the hub of a fan) smoothing costs more than it shows.
constexpr std::size_t smoothingBound = 512;

bool isUsable(const Vec3 &p)
{
    return p.isFinite() && std::fabs(p.x) < largestCoordinate && std::fabs(p.y) < largestCoordinate
        && std::fabs(p.z) < largestCoordinate;
}

/// What makes two corners the same vertex.
struct VertexKey {
    std::uint32_t point;
    Vec3f normal;
    Rgba8 color;

    bool operator==(const VertexKey &o) const
    {
        return point == o.point && normal == o.normal && color == o.color;
    }
};

template <typename T>
void mix(std::size_t &hash, const T &value)
{
    std::size_t bits = 0;
    std::memcpy(&bits, &value, std::min(sizeof bits, sizeof value));
    hash = (hash ^ bits) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
}

struct VertexHash {
    std::size_t operator()(const VertexKey &key) const
    {
        std::size_t hash = key.point;
        for (const float c : key.normal)
            mix(hash, c);
        mix(hash, key.color);
        return hash;
    }
};

struct PointHash {
    std::size_t operator()(const std::array<double, 3> &p) const
    {
        std::size_t hash = 0;
        for (const double c : p)
            mix(hash, c);
        return hash;
    }
};

/// Coarse enough that rounding in the sums does not split vertices.
float rounded(double component)
{
    return float(std::round(component * 4096) / 4096) + 0.0F;
}

} // namespace

std::vector<Vec3> FacetMeshBuilder::facetNormals()
{
    std::vector<Facet> kept;
    std::vector<Vec3> normals;
    kept.reserve(facets.size());
    normals.reserve(facets.size());
    for (const Facet &facet : facets) {
        const auto &c = facet.corners;
        const bool isInRange = std::all_of(c.begin(), c.end(), [this](const Corner &corner) {
            return corner.point < points.size() && isUsable(points[corner.point]);
        });
        if (!isInRange) {
            ++m_dropped;
            continue;
        }
        const Vec3 &a = points[c[0].point];
        const Vec3 normal = (points[c[1].point] - a).cross(points[c[2].point] - a);
        // Nothing is lost with a facet without area, so it is not counted.
        if (normal.normalized().dot(normal) <= 0)
            continue;
        kept.push_back(facet);
        normals.push_back(normal);
    }
    facets = std::move(kept);
    return normals;
}

Vec3 FacetMeshBuilder::smoothNormal(std::size_t facet, std::uint32_t point,
                                    const std::vector<Vec3> &normals) const
{
    const Vec3 own = normals[facet].normalized();
    const std::uint32_t first = m_firstAtPoint[point];
    const std::uint32_t last = m_firstAtPoint[point + 1];
    const std::uint32_t group = facets[facet].smoothingGroup;
    if (group == 0 || last - first > smoothingBound)
        return own;
    const double leastCosine = std::cos(creaseAngle) - 1e-9;
    Vec3 sum;
    for (std::uint32_t i = first; i < last; ++i) {
        const std::uint32_t other = m_facetsAtPoint[i];
        if (facets[other].smoothingGroup == group
            && normals[other].normalized().dot(own) >= leastCosine)
            sum = sum + normals[other];
    }
    const Vec3 normal = sum.normalized();
    return normal.dot(own) > 0 ? normal : own;
}

Primitive FacetMeshBuilder::build()
{
    const std::vector<Vec3> normals = facetNormals();

    m_firstAtPoint.assign(points.size() + 1, 0);
    for (const Facet &facet : facets) {
        for (const Corner &corner : facet.corners)
            ++m_firstAtPoint[corner.point + 1];
    }
    for (std::size_t i = 1; i < m_firstAtPoint.size(); ++i)
        m_firstAtPoint[i] += m_firstAtPoint[i - 1];
    m_facetsAtPoint.resize(facets.size() * 3);
    std::vector<std::uint32_t> next(m_firstAtPoint.begin(), m_firstAtPoint.end());
    for (std::size_t i = 0; i < facets.size(); ++i) {
        for (const Corner &corner : facets[i].corners)
            m_facetsAtPoint[next[corner.point]++] = std::uint32_t(i);
    }

    const bool isColored = std::any_of(facets.begin(), facets.end(), [](const Facet &facet) {
        return facet.corners[0].color.has_value();
    });
    Primitive result;
    result.indices.reserve(facets.size() * 3);
    std::unordered_map<VertexKey, std::uint32_t, VertexHash> vertices;
    vertices.reserve(points.size() * 2);
    for (std::size_t i = 0; i < facets.size(); ++i) {
        for (const Corner &corner : facets[i].corners) {
            Vec3 normal = corner.normal ? corner.normal->normalized() : Vec3{};
            if (normal.dot(normal) < 0.5)
                normal = smoothNormal(i, corner.point, normals);
            const VertexKey key{corner.point,
                                {rounded(normal.x), rounded(normal.y), rounded(normal.z)},
                                corner.color.value_or(Rgba8{255, 255, 255, 255})};
            const auto [vertex, isNew] =
                vertices.try_emplace(key, std::uint32_t(result.positions.size()));
            if (isNew) {
                const Vec3 &p = points[corner.point];
                result.positions.push_back({float(p.x), float(p.y), float(p.z)});
                result.normals.push_back({float(normal.x), float(normal.y), float(normal.z)});
                if (isColored)
                    result.colors.push_back(key.color);
            }
            result.indices.push_back(vertex->second);
        }
    }
    return result;
}

void weldPoints(std::vector<Vec3> &points, std::vector<std::uint32_t> &indexOf)
{
    std::unordered_map<std::array<double, 3>, std::uint32_t, PointHash> known;
    known.reserve(points.size());
    std::vector<Vec3> result;
    indexOf.clear();
    indexOf.reserve(points.size());
    for (const Vec3 &p : points) {
        // Adding 0 makes -0 and 0 the same key.
        const auto [entry, isNew] =
            known.try_emplace({p.x + 0.0, p.y + 0.0, p.z + 0.0}, std::uint32_t(result.size()));
        if (isNew)
            result.push_back(p);
        indexOf.push_back(entry->second);
    }
    points = std::move(result);
}

} // namespace tnconvert
