#include "readers/vrml/VrmlGeometry.h"

#include "core/Limits.h"
#include "core/Text.h"
#include "readers/vrml/VrmlIndexedData.h"
#include "scene/PolygonTriangulator.h"

#include <algorithm>
#include <cmath>

namespace tnconvert {

namespace {

using Corner = FacetMeshBuilder::Corner;

/// An index beyond all points: the facet is then counted as dropped.
constexpr std::uint32_t noPoint = 0xFFFFFFFF;

std::uint32_t pointIndex(double stated)
{
    return stated >= 0 && stated < double(noPoint) ? std::uint32_t(stated) : noPoint;
}

std::uint32_t addPoint(FacetMeshBuilder &builder, const Vec3 &point)
{
    builder.points.push_back(point);
    return std::uint32_t(builder.points.size() - 1);
}

} // namespace

VrmlGeometry::VrmlGeometry(const Settings &settings, VrmlParser::Warn warn, VrmlLosses &losses)
    : m_settings(settings)
    , m_warn(std::move(warn))
    , m_losses(losses)
{
}

Primitive VrmlGeometry::primitive(const VrmlNode &geometry)
{
    static const std::map<std::string, Facets> kinds = {
        {"IndexedFaceSet", &VrmlGeometry::faceSet},
        {"ElevationGrid", &VrmlGeometry::elevationGrid},
        {"Extrusion", &VrmlGeometry::extrusion},
        {"Box", &VrmlGeometry::box},
        {"Sphere", &VrmlGeometry::sphere},
        {"Cylinder", &VrmlGeometry::cylinder},
        {"Cone", &VrmlGeometry::cone},
    };
    const bool isLineSet = geometry.type == "IndexedLineSet";
    if (isLineSet && m_settings.importCurves)
        return lineSet(geometry);
    const auto kind = kinds.find(geometry.type);
    if (!isLineSet && kind == kinds.end()) {
        m_warn("Geometry of the kind " + validUtf8(geometry.type) + " is left out.");
        return {};
    }
    m_isFiltered = isLineSet || !m_settings.importMeshes;
    if (m_isFiltered)
        return {};
    FacetMeshBuilder builder;
    builder.creaseAngle = std::max(0.0, geometry.number("creaseAngle", 0));
    (this->*kind->second)(geometry, builder);
    Primitive result = builder.build();
    if (builder.droppedFacets() > 0)
        m_losses["triangles with impossible coordinates"] += builder.droppedFacets();
    return result;
}

void VrmlGeometry::addPolygon(const std::vector<Corner> &polygon, bool isClockwise,
                              FacetMeshBuilder &builder)
{
    std::vector<Vec3> positions;
    positions.reserve(polygon.size());
    for (const Corner &corner : polygon) {
        if (corner.point >= builder.points.size() || !builder.points.isPossible(corner.point)) {
            ++m_losses["faces with indices out of range or impossible coordinates"];
            return;
        }
        positions.push_back(builder.points[corner.point]);
    }
    for (const auto &[a, b, c] : triangulated(positions)) {
        if (isClockwise)
            builder.addFacet({polygon[a], polygon[c], polygon[b]});
        else
            builder.addFacet({polygon[a], polygon[b], polygon[c]});
    }
}

void VrmlGeometry::faceSet(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    const VrmlNodePtr coordinates = vrml.child("coord");
    const VrmlNumbers &index = vrml.numbers("coordIndex");
    if (!coordinates) {
        if (!index.empty())
            ++m_losses["face sets without coordinates"];
        return;
    }
    checkTriangleCount("A face set", index.size() / 3);
    builder.corners.reserve(index.size() / 4 * 3);
    const VrmlNumbers &points = coordinates->numbers("point");
    if (!points.empty() && !vrml.field("coordIndex"))
        m_warn("Face sets with points and without faces are left out.");
    builder.points.reserve(points.size() / 3);
    for (std::size_t i = 0; i + 2 < points.size(); i += 3)
        builder.points.push_back(Vec3{points[i], points[i + 1], points[i + 2]} * vrmlUnit);
    const VrmlIndexedData normals(vrml, "normal", "vector", "normalIndex", "normalPerVertex");
    const VrmlIndexedData colors(vrml, "color", "color", "colorIndex", "colorPerVertex");
    const bool isClockwise = !vrml.flag("ccw", true);
    std::vector<Corner> polygon;
    std::size_t face = 0;
    // One step past the end closes a last face without its -1.
    for (std::size_t i = 0; i <= index.size(); ++i) {
        if (i == index.size() || index[i] < 0) {
            if (!polygon.empty()) {
                addPolygon(polygon, isClockwise, builder);
                ++face;
            }
            polygon.clear();
            continue;
        }
        Corner corner;
        corner.point = pointIndex(index[i]);
        corner.normal = normals.at(face, i, index[i]);
        corner.color = vrmlColor(colors.at(face, i, index[i]));
        polygon.push_back(corner);
    }
}

void VrmlGeometry::elevationGrid(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    const VrmlNumbers &heights = vrml.numbers("height");
    const double statedX = vrml.number("xDimension", 0);
    const double statedZ = vrml.number("zDimension", 0);
    if (!(statedX >= 2) || !(statedZ >= 2))
        return;
    if (statedX * statedZ > double(heights.size())) {
        ++m_losses["elevation grids without all of their heights"];
        return;
    }
    checkTriangleCount("An elevation grid", 2 * heights.size());
    const auto columns = std::size_t(statedX);
    const auto rows = std::size_t(statedZ);
    const double spacingX = vrml.number("xSpacing", 1) * vrmlUnit;
    const double spacingZ = vrml.number("zSpacing", 1) * vrmlUnit;
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column)
            builder.points.push_back({double(column) * spacingX,
                                      heights[row * columns + column] * vrmlUnit,
                                      double(row) * spacingZ});
    }
    const VrmlIndexedData normals(vrml, "normal", "vector", "", "normalPerVertex");
    const VrmlIndexedData colors(vrml, "color", "color", "", "colorPerVertex");
    const bool isClockwise = !vrml.flag("ccw", true);
    std::size_t face = 0;
    for (std::size_t row = 0; row + 1 < rows; ++row) {
        for (std::size_t column = 0; column + 1 < columns; ++column, ++face) {
            const std::size_t first = row * columns + column;
            std::vector<Corner> polygon;
            for (const std::size_t point :
                 {first, first + columns, first + columns + 1, first + 1}) {
                Corner corner;
                corner.point = std::uint32_t(point);
                corner.normal = normals.at(face, point, double(point));
                corner.color = vrmlColor(colors.at(face, point, double(point)));
                polygon.push_back(corner);
            }
            addPolygon({polygon[0], polygon[1], polygon[2]}, isClockwise, builder);
            addPolygon({polygon[0], polygon[2], polygon[3]}, isClockwise, builder);
        }
    }
}

Primitive VrmlGeometry::lineSet(const VrmlNode &vrml)
{
    Primitive result;
    result.mode = Primitive::Mode::Lines;
    const VrmlNodePtr coordinates = vrml.child("coord");
    if (!coordinates)
        return result;
    const std::vector<Vec3> points = vrmlPoints(coordinates->numbers("point"), vrmlUnit);
    const VrmlIndexedData colors(vrml, "color", "color", "colorIndex", "colorPerVertex");
    const VrmlNumbers &index = vrml.numbers("coordIndex");
    std::size_t line = 0;
    bool continues = false;
    bool isColored = false;
    for (std::size_t i = 0; i < index.size(); ++i) {
        if (index[i] < 0) {
            line += continues ? 1 : 0;
            continues = false;
            continue;
        }
        const std::uint32_t point = pointIndex(index[i]);
        if (point >= points.size() || !points[point].isFinite()) {
            ++m_losses["points of lines with indices out of range or impossible coordinates"];
            continues = false;
            continue;
        }
        const Vec3 &p = points[point];
        const auto vertex = std::uint32_t(result.positions.size());
        result.positions.push_back({float(p.x), float(p.y), float(p.z)});
        const std::optional<Rgba8> color = vrmlColor(colors.at(line, i, index[i]));
        isColored = isColored || color;
        result.colors.push_back(color.value_or(Rgba8{255, 255, 255, 255}));
        if (continues)
            result.indices.insert(result.indices.end(), {vertex - 1, vertex});
        continues = true;
    }
    if (!isColored)
        result.colors.clear();
    return result;
}

int VrmlGeometry::segments(double radius) const
{
    const double sagitta =
        std::clamp(m_settings.chordDeviation / std::max(radius, 1e-9), 1e-4, 1.0);
    const double byDeviation = 2 * std::acos(1 - sagitta);
    const double byAngle = m_settings.normalTolerance * M_PI / 180;
    return std::clamp(int(std::ceil(2 * M_PI / std::min(byDeviation, byAngle))), 8, 256);
}

void VrmlGeometry::box(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    const VrmlNumbers &size = vrml.numbers("size");
    const Vec3 half =
        (size.size() >= 3 ? Vec3{size[0], size[1], size[2]} : Vec3{2, 2, 2}) * (vrmlUnit / 2);
    for (int i = 0; i < 8; ++i)
        addPoint(builder,
                 {i & 1 ? half.x : -half.x, i & 2 ? half.y : -half.y, i & 4 ? half.z : -half.z});
    static constexpr std::array<std::uint32_t, 4> sides[] = {
        {0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}};
    for (const auto &side : sides) {
        std::vector<Corner> polygon(4);
        for (std::size_t i = 0; i < 4; ++i)
            polygon[i].point = side[i];
        addPolygon(polygon, false, builder);
    }
}

void VrmlGeometry::sphere(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    const double radius = vrml.number("radius", 1) * vrmlUnit;
    const int around = segments(radius);
    const int down = std::max(4, around / 2);
    for (int row = 0; row <= down; ++row) {
        const double polar = M_PI * row / down;
        // Both poles are single points in space, whichever column they belong to.
        const double ring = row == 0 || row == down ? 0 : std::sin(polar);
        for (int column = 0; column < around; ++column) {
            const double angle = 2 * M_PI * column / around;
            addPoint(builder,
                     Vec3{ring * std::sin(angle), std::cos(polar), ring * std::cos(angle)}
                         * radius);
        }
    }
    const auto corner = [&](int row, int column) {
        Corner result;
        result.point = std::uint32_t(row * around + column % around);
        result.normal = builder.points[result.point].normalized();
        return result;
    };
    for (int row = 0; row < down; ++row) {
        for (int column = 0; column < around; ++column) {
            const Corner a = corner(row, column);
            const Corner b = corner(row + 1, column);
            const Corner c = corner(row + 1, column + 1);
            const Corner d = corner(row, column + 1);
            if (row + 1 < down)
                builder.addFacet({a, b, c});
            if (row > 0)
                builder.addFacet({a, c, d});
        }
    }
}

void VrmlGeometry::addFrustum(double bottom, double top, double height, const VrmlNode &vrml,
                              FacetMeshBuilder &builder)
{
    const int around = segments(std::max(bottom, top));
    const double half = height / 2;
    std::vector<Corner> lower;
    std::vector<Corner> upper;
    for (int i = 0; i < around; ++i) {
        const double angle = 2 * M_PI * i / around;
        const Vec3 out{std::sin(angle), 0, std::cos(angle)};
        Corner corner;
        corner.normal = Vec3{out.x * height, bottom - top, out.z * height}.normalized();
        corner.point = addPoint(builder, out * bottom + Vec3{0, -half, 0});
        lower.push_back(corner);
        corner.point = addPoint(builder, out * top + Vec3{0, half, 0});
        upper.push_back(corner);
    }
    for (std::size_t i = 0; vrml.flag("side", true) && i < lower.size(); ++i) {
        const std::size_t next = (i + 1) % lower.size();
        builder.addFacet({lower[i], lower[next], upper[next]});
        if (top > 0)
            builder.addFacet({lower[i], upper[next], upper[i]});
    }
    const auto addCap = [&](std::vector<Corner> ring, double direction) {
        for (Corner &corner : ring)
            corner.normal = Vec3{0, direction, 0};
        if (direction < 0)
            std::reverse(ring.begin(), ring.end());
        addPolygon(ring, false, builder);
    };
    if (vrml.flag("bottom", true))
        addCap(lower, -1);
    if (top > 0 && vrml.flag("top", true))
        addCap(upper, 1);
}

void VrmlGeometry::cylinder(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    const double radius = vrml.number("radius", 1) * vrmlUnit;
    addFrustum(radius, radius, vrml.number("height", 2) * vrmlUnit, vrml, builder);
}

void VrmlGeometry::cone(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    addFrustum(vrml.number("bottomRadius", 1) * vrmlUnit, 0, vrml.number("height", 2) * vrmlUnit,
               vrml, builder);
}

} // namespace tnconvert
