#include "core/Limits.h"
#include "readers/vrml/VrmlGeometry.h"
#include "readers/vrml/VrmlIndexedData.h"

#include <algorithm>
#include <cmath>

namespace tnconvert {

namespace {

using Corner = FacetMeshBuilder::Corner;

constexpr double coincidence = 1e-9;

/// A coordinate system in which the cross section stands at a point of the spine.
struct Frame {
    Vec3 x;
    Vec3 y;
    Vec3 z;
};

bool isNull(const Vec3 &v)
{
    return v.dot(v) < coincidence;
}

/// The direction of the spine at each of its points; the last known one where points coincide.
std::vector<Vec3> tangents(const std::vector<Vec3> &spine, bool isClosed)
{
    const std::size_t n = spine.size();
    std::vector<Vec3> result(n);
    Vec3 last;
    for (std::size_t i = 0; i < n; ++i) {
        const bool isEnd = i == 0 || i + 1 == n;
        const Vec3 &before = isEnd && isClosed ? spine[n - 2] : spine[i == 0 ? 0 : i - 1];
        const Vec3 &after = isEnd && isClosed ? spine[1] : spine[std::min(i + 1, n - 1)];
        const Vec3 direction = (after - before).normalized();
        last = isNull(direction) ? last : direction;
        result[i] = last;
    }
    for (std::size_t i = n; i-- > 0;) {
        if (isNull(result[i]))
            result[i] = i + 1 < n ? result[i + 1] : Vec3{0, 1, 0};
    }
    return result;
}

std::vector<Frame> frames(const std::vector<Vec3> &spine, bool isClosed)
{
    const std::size_t n = spine.size();
    const std::vector<Vec3> directions = tangents(spine, isClosed);
    std::vector<Vec3> across(n);
    for (std::size_t i = 0; i < n; ++i) {
        const bool isEnd = i == 0 || i + 1 == n;
        if (isEnd && !isClosed)
            continue;
        const Vec3 &before = isEnd ? spine[n - 2] : spine[i - 1];
        const Vec3 &after = isEnd ? spine[1] : spine[i + 1];
        across[i] = (after - spine[i]).normalized().cross((before - spine[i]).normalized());
        across[i] = isNull(across[i]) ? Vec3{} : across[i].normalized();
    }
    // Straight stretches take the bend before them, those at the start the first one after.
    const auto bend =
        std::find_if(across.begin(), across.end(), [](const Vec3 &v) { return !isNull(v); });
    Vec3 last = bend != across.end() ? *bend : Vec3{};
    std::vector<Frame> result(n);
    for (std::size_t i = 0; i < n; ++i) {
        Vec3 z = across[i];
        if (isNull(z)) {
            z = last;
            if (isNull(z)) {
                // A straight spine: the cross section is turned the shortest way from the y axis.
                const Vec3 up{0, 1, 0};
                const Vec3 axis = up.cross(directions[i]);
                z = Transform::rotation(axis, std::atan2(axis.length(), up.dot(directions[i])))
                        .direction({0, 0, 1});
            }
        } else if (!isNull(last) && z.dot(last) < 0) {
            z = z * -1;
        }
        last = isNull(across[i]) ? last : z;
        const Vec3 x = directions[i].cross(z).normalized();
        result[i] = {x, directions[i], x.cross(directions[i])};
    }
    return result;
}

VrmlNumbers orDefault(const VrmlNumbers &stated, const VrmlNumbers &fallback)
{
    return stated.empty() ? fallback : stated;
}

} // namespace

void VrmlGeometry::extrusion(const VrmlNode &vrml, FacetMeshBuilder &builder)
{
    const VrmlNumbers section =
        orDefault(vrml.numbers("crossSection"), {1, 1, 1, -1, -1, -1, -1, 1, 1, 1});
    const std::vector<Vec3> spine =
        vrmlPoints(orDefault(vrml.numbers("spine"), {0, 0, 0, 0, 1, 0}), 1);
    const VrmlNumbers scale = orDefault(vrml.numbers("scale"), {1, 1});
    const VrmlNumbers turn = orDefault(vrml.numbers("orientation"), {0, 0, 1, 0});
    const std::size_t corners = section.size() / 2;
    if (corners < 2 || spine.size() < 2 || scale.size() < 2 || turn.size() < 4) {
        ++m_losses["extrusions without a cross section or spine"];
        return;
    }
    checkTriangleCount("An extrusion", 2 * std::uint64_t(corners) * spine.size());
    const bool isRing = (spine.front() - spine.back()).length() < coincidence && spine.size() > 2;
    const std::vector<Frame> systems = frames(spine, isRing);

    for (std::size_t i = 0; i < spine.size(); ++i) {
        // Short lists hold on to their last entry.
        const std::size_t s = std::min(i, scale.size() / 2 - 1) * 2;
        const std::size_t t = std::min(i, turn.size() / 4 - 1) * 4;
        const Transform turned =
            Transform::rotation({turn[t], turn[t + 1], turn[t + 2]}, turn[t + 3]);
        for (std::size_t c = 0; c < corners; ++c) {
            const Vec3 flat =
                turned.direction({section[2 * c] * scale[s], 0, section[2 * c + 1] * scale[s + 1]});
            const Frame &f = systems[i];
            builder.points.push_back((spine[i] + f.x * flat.x + f.y * flat.y + f.z * flat.z)
                                     * vrmlUnit);
        }
    }
    const bool isClockwise = !vrml.flag("ccw", true);
    const auto corner = [corners](std::size_t row, std::size_t column) {
        Corner result;
        result.point = std::uint32_t(row * corners + column);
        return result;
    };
    for (std::size_t i = 0; i + 1 < spine.size(); ++i) {
        for (std::size_t c = 0; c + 1 < corners; ++c) {
            const Corner a = corner(i, c);
            const Corner b = corner(i, c + 1);
            const Corner e = corner(i + 1, c + 1);
            const Corner d = corner(i + 1, c);
            addPolygon({a, b, e}, isClockwise, builder);
            addPolygon({a, e, d}, isClockwise, builder);
        }
    }
    const auto addCap = [&](std::size_t row, bool isBottom) {
        std::vector<Corner> polygon;
        for (std::size_t c = 0; c < corners; ++c)
            polygon.push_back(corner(row, c));
        addPolygon(polygon, isBottom != isClockwise, builder);
    };
    if (!isRing && vrml.flag("beginCap", true))
        addCap(0, true);
    if (!isRing && vrml.flag("endCap", true))
        addCap(spine.size() - 1, false);
}

} // namespace tnconvert
