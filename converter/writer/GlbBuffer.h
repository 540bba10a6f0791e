#pragma once

#include "scene/Scene.h"

#include <cstdint>
#include <streambuf>
#include <vector>

namespace tnconvert {

/// The binary part of an output, as a plan: the bytes are made when they are written, piece by
/// piece.
class GlbBuffer {
public:
    /// All data of one kind share one view; these are the views' indices.
    enum View : std::size_t { IndexView, VertexView, ColorView, ViewCount };

    /// Where the data of a primitive begin in their views.
    struct Place {
        std::uint64_t indices;
        std::uint64_t positions;
        std::uint64_t normals;
        std::uint64_t colors;
    };

    /// @p primitive must be clean (see PrimitiveCleaner) and outlive the object. Throws
    /// ConversionError when no output can hold so much.
    Place add(const Primitive &primitive);

    /// Bytes of one view; they are multiples of four.
    std::uint64_t size(View view) const { return m_sizes[view]; }
    /// Bytes of all views, which follow each other.
    std::uint64_t size() const { return m_sizes[0] + m_sizes[1] + m_sizes[2]; }

    /// Whether 16 bits are enough for the indices of @p primitive.
    static bool hasShortIndices(const Primitive &primitive);
    /// @p point of a scene as outputs have it: in metres.
    static Vec3f inMetres(const Vec3f &point);

    /// Writes the bytes of all views. That @p out takes no more shows there.
    void write(std::streambuf &out) const;

private:
    std::vector<const Primitive *> m_primitives;
    std::array<std::uint64_t, ViewCount> m_sizes{};
};

} // namespace tnconvert
