#include "writer/GlbBuffer.h"

#include "core/Limits.h"
#include "writer/Colors.h"

#include <algorithm>
#include <cmath>

namespace tnconvert {

namespace {

constexpr double metresPerMillimetre = 0.001;

/// Values that are converted and written at a time.
constexpr std::size_t pieceSize = 1 << 14;

template <typename T>
void writeBytes(const T *values, std::size_t count, std::streambuf &out)
{
    static_assert(std::is_trivially_copyable_v<T>);
    out.sputn(reinterpret_cast<const char *>(values), std::streamsize(count * sizeof(T)));
}

template <typename T, typename Convert>
void writeConverted(const std::vector<T> &values, Convert convert, std::streambuf &out)
{
    std::vector<decltype(convert(values[0]))> piece;
    piece.reserve(pieceSize);
    for (std::size_t begin = 0; begin < values.size(); begin += pieceSize) {
        const std::size_t end = std::min(begin + pieceSize, values.size());
        piece.clear();
        for (std::size_t i = begin; i < end; ++i)
            piece.push_back(convert(values[i]));
        writeBytes(piece.data(), piece.size(), out);
    }
}

void writeIndices(const Primitive &primitive, std::streambuf &out)
{
    const std::vector<std::uint32_t> &indices = primitive.indices;
    if (!GlbBuffer::hasShortIndices(primitive))
        return writeBytes(indices.data(), indices.size(), out);
    writeConverted(
        indices, [](std::uint32_t index) { return std::uint16_t(index); }, out);
    if (indices.size() % 2 != 0)
        writeBytes("\0", 2, out);
}

Vec3f unit(const Vec3f &normal)
{
    const Vec3 n = Vec3{normal[0], normal[1], normal[2]}.normalized();
    return {float(n.x), float(n.y), float(n.z)};
}

Rgba8 linear(const Rgba8 &color)
{
    static const std::array<std::uint8_t, 256> table = [] {
        std::array<std::uint8_t, 256> result{};
        for (std::size_t i = 0; i < result.size(); ++i)
            result[i] = std::uint8_t(std::lround(linearValue(double(i) / 255) * 255));
        return result;
    }();
    return {table[color[0]], table[color[1]], table[color[2]], color[3]};
}

} // namespace

bool GlbBuffer::hasShortIndices(const Primitive &primitive)
{
    return primitive.positions.size() <= 65535; // which itself is reserved
}

Vec3f GlbBuffer::inMetres(const Vec3f &point)
{
    Vec3f result;
    for (std::size_t c = 0; c < 3; ++c)
        result[c] = float(point[c] * metresPerMillimetre);
    return result;
}

GlbBuffer::Place GlbBuffer::add(const Primitive &primitive)
{
    const Place place{m_sizes[IndexView], m_sizes[VertexView],
                      m_sizes[VertexView] + primitive.positions.size() * sizeof(Vec3f),
                      m_sizes[ColorView]};
    const std::uint64_t indexSize = hasShortIndices(primitive) ? 2 : 4;
    m_sizes[IndexView] += (primitive.indices.size() * indexSize + 3) / 4 * 4;
    m_sizes[VertexView] += (primitive.positions.size() + primitive.normals.size()) * sizeof(Vec3f);
    m_sizes[ColorView] += primitive.colors.size() * sizeof(Rgba8);
    checkOutputSize(size());
    m_primitives.push_back(&primitive);
    return place;
}

void GlbBuffer::write(std::streambuf &out) const
{
    for (const Primitive *primitive : m_primitives)
        writeIndices(*primitive, out);
    for (const Primitive *primitive : m_primitives) {
        writeConverted(primitive->positions, &inMetres, out);
        writeConverted(primitive->normals, &unit, out);
    }
    for (const Primitive *primitive : m_primitives)
        writeConverted(primitive->colors, &linear, out);
}

} // namespace tnconvert
