#include "writer/PrimitiveCleaner.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tnconvert {

namespace {

bool isUsable(const Vec3f &position)
{
    constexpr float largest = 1e30F;
    return std::all_of(position.begin(), position.end(),
                       [](float c) { return std::fabs(c) < largest; });
}

Vec3 widened(const Vec3f &v)
{
    return {v[0], v[1], v[2]};
}

bool hasDirection(const Vec3f &normal)
{
    const Vec3 n = widened(normal);
    return n.isFinite() && n.length() >= 1e-6;
}

std::size_t cornersOf(const Primitive &primitive)
{
    return primitive.mode == Primitive::Mode::Triangles ? 3 : 2;
}

/// Whether a triangle or segment can be drawn, the usability of its points left aside.
bool isWhole(const std::uint32_t *element, std::size_t corners, std::size_t vertices)
{
    for (std::size_t i = 0; i < corners; ++i) {
        if (element[i] >= vertices || element[i] == element[(i + 1) % corners])
            return false;
    }
    return true;
}

Vec3f usableNormal(const Vec3f &normal, const Primitive &primitive, const std::uint32_t *corners)
{
    if (hasDirection(normal))
        return normal;
    const Vec3 a = widened(primitive.positions[corners[0]]);
    const Vec3 n = (widened(primitive.positions[corners[1]]) - a)
                       .cross(widened(primitive.positions[corners[2]]) - a)
                       .normalized();
    if (n.dot(n) < 0.5)
        return {0, 0, 1};
    return {float(n.x), float(n.y), float(n.z)};
}

} // namespace

bool isClean(const Primitive &primitive)
{
    const std::size_t count = primitive.positions.size();
    const std::size_t corners = cornersOf(primitive);
    const bool hasRightSizes = primitive.indices.size() % corners == 0
        && (primitive.normals.empty() || (corners == 3 && primitive.normals.size() == count))
        && (primitive.colors.empty() || primitive.colors.size() == count);
    if (!hasRightSizes
        || !std::all_of(primitive.positions.begin(), primitive.positions.end(), isUsable)
        || !std::all_of(primitive.normals.begin(), primitive.normals.end(), hasDirection))
        return false;
    std::vector<bool> isUsed(count);
    for (std::size_t i = 0; i < primitive.indices.size(); i += corners) {
        const std::uint32_t *element = &primitive.indices[i];
        if (!isWhole(element, corners, count))
            return false;
        for (std::size_t corner = 0; corner < corners; ++corner)
            isUsed[element[corner]] = true;
    }
    return std::find(isUsed.begin(), isUsed.end(), false) == isUsed.end();
}

Primitive cleaned(const Primitive &primitive)
{
    const std::size_t count = primitive.positions.size();
    const std::size_t corners = cornersOf(primitive);
    const bool hasNormals = corners == 3 && primitive.normals.size() == count;
    const bool hasColors = primitive.colors.size() == count;
    constexpr std::uint32_t unused = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> newIndex(count, unused);
    Primitive result;
    result.mode = primitive.mode;
    result.material = primitive.material;
    for (std::size_t i = 0; i + corners <= primitive.indices.size(); i += corners) {
        const std::uint32_t *element = &primitive.indices[i];
        const bool isDrawn = isWhole(element, corners, count)
            && std::all_of(element, element + corners, [&](std::uint32_t index) {
                                 return isUsable(primitive.positions[index]);
                             });
        for (std::size_t corner = 0; isDrawn && corner < corners; ++corner) {
            const std::uint32_t old = element[corner];
            if (newIndex[old] == unused) {
                newIndex[old] = std::uint32_t(result.positions.size());
                result.positions.push_back(primitive.positions[old]);
                if (hasNormals)
                    result.normals.push_back(
                        usableNormal(primitive.normals[old], primitive, element));
                if (hasColors)
                    result.colors.push_back(primitive.colors[old]);
            }
            result.indices.push_back(newIndex[old]);
        }
    }
    return result;
}

} // namespace tnconvert
