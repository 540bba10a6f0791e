#pragma once

#include <QtGui/QVector3D>

#include <tiny_gltf.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tnhost {

/// Bounds-checked view of one accessor of a glTF model, which must outlive it.
class GltfAccessor {
public:
    /// Throws GlbError when any of its elements lies outside of the file's data.
    GltfAccessor(const tinygltf::Model &model, int index);

    /// The elements as vectors, times the factor. Throws GlbError for accessors of other types
    /// and for values that are not finite.
    std::vector<QVector3D> vectors(float factor) const;
    /// The elements as indices below limit. Throws GlbError for accessors of other types and for
    /// larger values.
    std::vector<std::uint32_t> indices(std::size_t limit) const;

private:
    int m_type = 0;
    int m_componentType = 0;
    std::size_t m_count = 0;
    std::size_t m_stride = 0;
    const unsigned char *m_data = nullptr;
};

} // namespace tnhost
