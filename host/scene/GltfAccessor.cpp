#include "host/scene/GltfAccessor.h"

#include "host/scene/GlbFile.h"

#include <cmath>
#include <cstring>

namespace tnhost {

namespace {

template <typename T>
T load(const unsigned char *data)
{
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

} // namespace

GltfAccessor::GltfAccessor(const tinygltf::Model &model, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= model.accessors.size())
        throw GlbError(QStringLiteral("A mesh refers to data that the file does not have."));
    const tinygltf::Accessor &accessor = model.accessors[static_cast<std::size_t>(index)];
    if (accessor.sparse.isSparse)
        throw GlbError(QStringLiteral("Sparse accessors cannot be read."));
    if (accessor.bufferView < 0
        || static_cast<std::size_t>(accessor.bufferView) >= model.bufferViews.size())
        throw GlbError(QStringLiteral("Accessor %1 has no data.").arg(index));
    const auto &view = model.bufferViews[static_cast<std::size_t>(accessor.bufferView)];
    if (view.buffer < 0 || static_cast<std::size_t>(view.buffer) >= model.buffers.size())
        throw GlbError(QStringLiteral("Buffer view %1 has no buffer.").arg(accessor.bufferView));
    const auto &buffer = model.buffers[static_cast<std::size_t>(view.buffer)].data;

    const int componentSize =
        tinygltf::GetComponentSizeInBytes(static_cast<std::uint32_t>(accessor.componentType));
    const int components =
        tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(accessor.type));
    if (componentSize <= 0 || components <= 0)
        throw GlbError(QStringLiteral("Accessor %1 is of an unknown type.").arg(index));

    m_type = accessor.type;
    m_componentType = accessor.componentType;
    m_count = accessor.count;
    const auto elementSize = static_cast<std::size_t>(componentSize * components);
    m_stride = view.byteStride == 0 ? elementSize : view.byteStride;
    // In steps that cannot overflow, since all four numbers are the file's word.
    const bool fits = m_stride >= elementSize && view.byteOffset <= buffer.size()
        && view.byteLength <= buffer.size() - view.byteOffset
        && accessor.byteOffset <= view.byteLength
        && (m_count == 0
            || (elementSize <= view.byteLength - accessor.byteOffset
                && m_count - 1
                    <= (view.byteLength - accessor.byteOffset - elementSize) / m_stride));
    if (!fits)
        throw GlbError(QStringLiteral("Accessor %1 reaches beyond the file's data.").arg(index));
    m_data = buffer.data() + view.byteOffset + accessor.byteOffset;
}

std::vector<QVector3D> GltfAccessor::vectors(float factor) const
{
    if (m_type != TINYGLTF_TYPE_VEC3 || m_componentType != TINYGLTF_COMPONENT_TYPE_FLOAT)
        throw GlbError(QStringLiteral("Only coordinates of type float can be read."));
    std::vector<QVector3D> result;
    result.reserve(m_count);
    for (std::size_t i = 0; i < m_count; ++i) {
        const unsigned char *element = m_data + i * m_stride;
        const QVector3D vector(load<float>(element) * factor, load<float>(element + 4) * factor,
                               load<float>(element + 8) * factor);
        if (!std::isfinite(vector.x()) || !std::isfinite(vector.y()) || !std::isfinite(vector.z()))
            throw GlbError(QStringLiteral("A mesh has coordinates that are not numbers."));
        result.push_back(vector);
    }
    return result;
}

std::vector<std::uint32_t> GltfAccessor::indices(std::size_t limit) const
{
    if (m_type != TINYGLTF_TYPE_SCALAR)
        throw GlbError(QStringLiteral("The indices of a mesh are not scalars."));
    std::vector<std::uint32_t> result;
    result.reserve(m_count);
    for (std::size_t i = 0; i < m_count; ++i) {
        const unsigned char *element = m_data + i * m_stride;
        std::uint32_t value = 0;
        switch (m_componentType) {
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            value = *element;
            break;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            value = load<std::uint16_t>(element);
            break;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
            value = load<std::uint32_t>(element);
            break;
        default:
            throw GlbError(QStringLiteral("The indices of a mesh are not unsigned integers."));
        }
        if (value >= limit)
            throw GlbError(QStringLiteral("An index of a mesh is larger than its vertex count."));
        result.push_back(value);
    }
    return result;
}

} // namespace tnhost
