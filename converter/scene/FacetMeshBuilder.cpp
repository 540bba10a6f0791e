#include "scene/FacetMeshBuilder.h"

#include "core/Limits.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tnconvert {

namespace {

/// Beyond so many facets around one sharp point smoothing costs more than it shows.
constexpr std::size_t smoothingBound = 512;

/// Beyond so many vertices at one point no more of them are compared with a new one.
constexpr std::size_t comparisonBound = 64;

Vec3 widened(const Vec3f &v)
{
    return {v[0], v[1], v[2]};
}

Vec3f narrowed(const Vec3 &v)
{
    return {float(v.x), float(v.y), float(v.z)};
}

/// Whether two normals are so close that one vertex can have either, rounding in sums included.
bool isAlike(const Vec3f &a, const Vec3f &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), [](float left, float right) {
        return std::lround(left * 4096) == std::lround(right * 4096);
    });
}

/// What areas are to be multiplied by so that their sums fit into single precision.
double areaScale(const PointList &points)
{
    Vec3 least{1e300, 1e300, 1e300};
    Vec3 most = least * -1;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vec3f &p = points.near(i);
        least = {std::fmin(least.x, p[0]), std::fmin(least.y, p[1]), std::fmin(least.z, p[2])};
        most = {std::fmax(most.x, p[0]), std::fmax(most.y, p[1]), std::fmax(most.z, p[2])};
    }
    const Vec3 extent = most - least;
    return 1 / std::max(extent.dot(extent), 1e-60);
}

template <typename T>
void moveFacet(std::vector<T> &values, std::size_t from, std::size_t to)
{
    if (!values.empty())
        std::copy_n(values.begin() + std::ptrdiff_t(3 * from), 3,
                    values.begin() + std::ptrdiff_t(3 * to));
}

/// Lets go of what lies behind @p count entries, if there are that many.
template <typename T>
void shorten(std::vector<T> &values, std::size_t count)
{
    values.resize(std::min(values.size(), count));
}

} // namespace

void FacetMeshBuilder::addFacet(const std::array<Corner, 3> &facet)
{
    for (const Corner &corner : facet) {
        if (corner.normal && normalOf.empty())
            normalOf.assign(corners.size(), none);
        if (corner.color && cornerColors.empty())
            cornerColors.assign(corners.size(), Rgba8{255, 255, 255, 255});
        if (corner.normal || !normalOf.empty())
            normalOf.push_back(corner.normal ? std::uint32_t(normals.size()) : none);
        if (corner.color || !cornerColors.empty())
            cornerColors.push_back(corner.color.value_or(Rgba8{255, 255, 255, 255}));
        if (corner.normal)
            normals.push_back(narrowed(*corner.normal));
        corners.push_back(corner.point);
    }
}

std::uint32_t FacetMeshBuilder::pointAt(std::size_t corner) const
{
    const std::uint32_t vertex = corners[corner];
    return vertex < points.size() ? vertex : m_pointOf[vertex - points.size()];
}

Vec3 FacetMeshBuilder::facetNormal(std::size_t facet) const
{
    const Vec3 a = points[pointAt(3 * facet)];
    return (points[pointAt(3 * facet + 1)] - a).cross(points[pointAt(3 * facet + 2)] - a);
}

/// Keeps the facets that can be drawn, and sums up their normals at their points.
void FacetMeshBuilder::takeFacets()
{
    const double scale = areaScale(points);
    const auto isPossible = [this](std::uint32_t point) {
        return point < points.size() && points.isPossible(point);
    };
    std::size_t kept = 0;
    for (std::size_t facet = 0; 3 * facet < corners.size(); ++facet) {
        const std::uint32_t *own = &corners[3 * facet];
        if (!std::all_of(own, own + 3, isPossible)) {
            ++m_dropped;
            continue;
        }
        const Vec3 normal = facetNormal(facet);
        // Nothing is lost with a facet without area, so it is not counted.
        if (normal.normalized().dot(normal) <= 0)
            continue;
        const Vec3f share = narrowed(normal * scale);
        for (std::size_t i = 0; i < 3; ++i) {
            m_kinds[own[i]] = Kind::Smooth;
            for (std::size_t c = 0; c < 3; ++c)
                m_result.normals[own[i]][c] += share[c];
        }
        moveFacet(corners, facet, kept);
        moveFacet(normalOf, facet, kept);
        moveFacet(cornerColors, facet, kept);
        if (!groups.empty())
            groups[kept] = groups[facet];
        ++kept;
    }
    shorten(corners, 3 * kept);
    shorten(normalOf, 3 * kept);
    shorten(cornerColors, 3 * kept);
    shorten(groups, kept);
}

/// Gives each point one normal, so far as all facets around it can share it.
void FacetMeshBuilder::takeNormals()
{
    const bool hasCornerData = !normalOf.empty() || !cornerColors.empty() || !groups.empty();
    bool isAnyInvented = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vec3 stated = i < normals.size() ? widened(normals[i]).normalized() : Vec3();
        const bool isStated = stated.dot(stated) > 0.5;
        m_result.normals[i] =
            narrowed(isStated ? stated : widened(m_result.normals[i]).normalized());
        if (m_kinds[i] == Kind::Smooth && (hasCornerData || isStated))
            m_kinds[i] = hasCornerData ? Kind::Split : Kind::Stated;
        isAnyInvented = isAnyInvented || m_kinds[i] == Kind::Smooth;
    }
    // Normals that differ from another by half the angle differ by the angle at most.
    const double leastCosine = std::cos(std::min(creaseAngle, M_PI) / 2) + 1e-6;
    for (std::size_t facet = 0; isAnyInvented && 3 * facet < corners.size(); ++facet) {
        const Vec3 normal = facetNormal(facet).normalized();
        for (std::size_t i = 3 * facet; i < 3 * facet + 3; ++i) {
            Kind &kind = m_kinds[corners[i]];
            if (kind == Kind::Smooth
                && widened(m_result.normals[corners[i]]).dot(normal) < leastCosine)
                kind = Kind::Split;
        }
    }
}

/// What is known of one point while it is split.
struct FacetMeshBuilder::Around {
    const std::uint32_t *corners; ///< at the point, in the order of the file
    std::size_t count;
    double leastCosine; ///< of the angle between normals that are smoothed
    std::vector<Vec3> normals; ///< of their facets, as long as these are large
    std::vector<Vec3> directions; ///< the same of length 1
    std::vector<std::uint32_t> vertices; ///< those made so far
};

/// Gives the points that need it a vertex for each normal and colour.
void FacetMeshBuilder::splitPoints()
{
    std::vector<std::uint32_t> ends(points.size());
    std::uint32_t count = 0;
    for (const std::uint32_t point : corners)
        ends[point] += m_kinds[point] == Kind::Split ? 1 : 0;
    for (std::uint32_t &end : ends)
        end = std::exchange(count, count + end);
    std::vector<std::uint32_t> cornersAt(count);
    for (std::uint32_t corner = 0; corner < corners.size(); ++corner) {
        const std::uint32_t point = corners[corner];
        if (m_kinds[point] == Kind::Split)
            cornersAt[ends[point]++] = corner;
    }
    Around around{};
    around.leastCosine = std::cos(std::min(creaseAngle, M_PI)) - 1e-9;
    std::uint32_t begin = 0;
    for (std::uint32_t point = 0; point < points.size(); ++point) {
        around.corners = cornersAt.data() + begin;
        around.count = ends[point] - begin;
        splitPoint(point, around);
        begin = ends[point];
    }
}

void FacetMeshBuilder::splitPoint(std::uint32_t point, Around &around)
{
    around.vertices.clear();
    around.normals.clear();
    around.directions.clear();
    for (std::size_t i = 0; i < around.count; ++i) {
        around.normals.push_back(facetNormal(around.corners[i] / 3));
        around.directions.push_back(around.normals.back().normalized());
    }
    for (std::size_t i = 0; i < around.count; ++i) {
        const std::uint32_t corner = around.corners[i];
        corners[corner] =
            vertex(point, narrowed(cornerNormal(point, around, i)),
                   cornerColors.empty() ? nullptr : &cornerColors[corner], around.vertices);
    }
}

Vec3 FacetMeshBuilder::cornerNormal(std::uint32_t point, const Around &around,
                                    std::size_t index) const
{
    const std::uint32_t corner = around.corners[index];
    const std::uint32_t row = normalOf.empty() ? point : normalOf[corner];
    const Vec3 stated = row < normals.size() ? widened(normals[row]).normalized() : Vec3();
    if (stated.dot(stated) > 0.5)
        return stated;
    const auto groupOf = [this](std::uint32_t at) { return groups.empty() ? 1 : groups[at / 3]; };
    const Vec3 &own = around.directions[index];
    if (groupOf(corner) == 0 || around.count > smoothingBound)
        return own;
    Vec3 sum;
    for (std::size_t i = 0; i < around.count; ++i) {
        if (groupOf(around.corners[i]) == groupOf(corner)
            && around.directions[i].dot(own) >= around.leastCosine)
            sum = sum + around.normals[i];
    }
    const Vec3 normal = sum.normalized();
    return normal.dot(own) > 0 ? normal : own;
}

/// The vertex of a point for a corner; the first is the point itself.
std::uint32_t FacetMeshBuilder::vertex(std::uint32_t point, const Vec3f &normal, const Rgba8 *color,
                                       std::vector<std::uint32_t> &known)
{
    Primitive &mesh = m_result;
    for (std::size_t i = known.size(); i > 0 && known.size() - i < comparisonBound; --i) {
        const std::uint32_t other = known[i - 1];
        if (isAlike(mesh.normals[other], normal) && (!color || mesh.colors[other] == *color))
            return other;
    }
    const std::uint32_t result = known.empty() ? point : std::uint32_t(mesh.normals.size());
    if (!known.empty()) {
        m_pointOf.push_back(point);
        mesh.normals.emplace_back();
        if (!mesh.colors.empty())
            mesh.colors.push_back(mesh.colors[point]);
        checkOutputSize(corners.size() * 4 + mesh.normals.size() * sizeof(Vec3f) * 2);
    }
    known.push_back(result);
    mesh.normals[result] = normal;
    if (color)
        mesh.colors[result] = *color;
    return result;
}

/// Closes the gaps that points without a facet leave.
void FacetMeshBuilder::removeUnused()
{
    std::vector<std::uint32_t> newIndex(m_result.positions.size());
    std::uint32_t count = 0;
    for (std::uint32_t old = 0; old < newIndex.size(); ++old) {
        if (old < m_kinds.size() && m_kinds[old] == Kind::Unused)
            continue;
        newIndex[old] = count;
        m_result.positions[count] = m_result.positions[old];
        m_result.normals[count] = m_result.normals[old];
        if (!m_result.colors.empty())
            m_result.colors[count] = m_result.colors[old];
        ++count;
    }
    m_result.positions.resize(count);
    m_result.normals.resize(count);
    shorten(m_result.colors, count);
    for (std::uint32_t &index : m_result.indices)
        index = newIndex[index];
}

Primitive FacetMeshBuilder::build()
{
    m_kinds.assign(points.size(), Kind::Unused);
    m_result.normals.assign(points.size(), Vec3f{});
    m_result.colors = std::move(pointColors);
    if (!cornerColors.empty())
        m_result.colors.assign(points.size(), Rgba8{255, 255, 255, 255});
    takeFacets();
    takeNormals();
    if (std::count(m_kinds.begin(), m_kinds.end(), Kind::Split) > 0)
        splitPoints();

    m_result.positions = points.taken();
    m_result.positions.reserve(m_result.normals.size());
    for (const std::uint32_t point : m_pointOf)
        m_result.positions.push_back(Vec3f(m_result.positions[point]));
    m_result.indices = std::move(corners);
    if (std::count(m_kinds.begin(), m_kinds.end(), Kind::Unused) > 0)
        removeUnused();
    return std::move(m_result);
}

} // namespace tnconvert
