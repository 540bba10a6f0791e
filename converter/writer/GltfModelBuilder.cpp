#include "writer/GltfModelBuilder.h"

#include "core/Text.h"
#include "protocol/GlbLayout.h"
#include "writer/Colors.h"
#include "writer/PrimitiveCleaner.h"

#include <algorithm>
#include <cmath>

namespace tnconvert {

namespace glb = tnprotocol::glb;

namespace {

constexpr double metresPerMillimetre = 0.001;

tinygltf::Value textValue(const std::string &text)
{
    return tinygltf::Value(validUtf8(text));
}

tinygltf::Value::Object extrasOf(const Metadata &metadata)
{
    tinygltf::Value::Object extras;
    for (const auto &[key, value] : metadata)
        extras[validUtf8(key)] = textValue(value);
    return extras;
}

void setTransform(const Transform &transform, tinygltf::Node &node)
{
    Transform linearPart = transform;
    for (int row = 0; row < 3; ++row)
        linearPart.at(row, 3) = 0;
    const auto metres = [&transform](int row) {
        return transform.at(row, 3) * metresPerMillimetre;
    };
    if (!linearPart.isIdentity()) {
        node.matrix.assign(transform.values().begin(), transform.values().end());
        for (int row = 0; row < 3; ++row)
            node.matrix[std::size_t(12 + row)] = metres(row);
    } else if (!transform.isIdentity()) {
        node.translation = {metres(0), metres(1), metres(2)};
    }
}

void setBounds(const std::vector<Vec3f> &positions, tinygltf::Accessor &accessor)
{
    Vec3f least = positions[0];
    Vec3f most = least;
    for (const Vec3f &p : positions) {
        for (std::size_t c = 0; c < 3; ++c) {
            least[c] = std::min(least[c], p[c]);
            most[c] = std::max(most[c], p[c]);
        }
    }
    least = GlbBuffer::inMetres(least);
    most = GlbBuffer::inMetres(most);
    accessor.minValues.assign(least.begin(), least.end());
    accessor.maxValues.assign(most.begin(), most.end());
}

} // namespace

tinygltf::Model GltfModelBuilder::build(const Scene &scene, const std::string &source,
                                        const std::string &sourceId)
{
    m_model = tinygltf::Model();
    m_model.asset.version = "2.0";
    m_model.asset.generator = "tnconvert";
    tinygltf::Value::Object extras{{glb::source, textValue(source)}};
    if (!sourceId.empty())
        extras[glb::sourceId] = textValue(sourceId);
    m_model.asset.extras = tinygltf::Value(std::move(extras));

    m_model.nodes.emplace_back();
    tinygltf::Node topNode;
    topNode.name = fileStem(source);
    const bool isZUp = scene.up == UpAxis::Z;
    tinygltf::Value::Object topExtras = extrasOf(scene.metadata);
    topExtras[glb::sourceAxes] = textValue(isZUp ? glb::zUp : glb::yUp);
    topNode.extras = tinygltf::Value(std::move(topExtras));
    if (isZUp)
        topNode.rotation = {-std::sqrt(0.5), 0, 0, std::sqrt(0.5)};
    for (const Node &root : scene.roots)
        topNode.children.push_back(addNode(root));
    m_model.nodes[0] = topNode;

    tinygltf::Scene gltfScene;
    gltfScene.nodes = {0};
    m_model.scenes.push_back(gltfScene);
    m_model.defaultScene = 0;
    addViews();
    return std::move(m_model);
}

int GltfModelBuilder::addNode(const Node &node)
{
    const std::size_t index = m_model.nodes.size();
    m_model.nodes.emplace_back();
    tinygltf::Node result;
    result.name = validUtf8(node.name);
    setTransform(node.transform, result);
    if (node.mesh)
        result.mesh = addMesh(*node.mesh);
    tinygltf::Value::Object extras = extrasOf(node.metadata);
    if (!node.layer.empty())
        extras["layer"] = textValue(node.layer);
    if (!node.visible)
        extras["visible"] = tinygltf::Value(false);
    if (!extras.empty())
        result.extras = tinygltf::Value(std::move(extras));
    for (const Node &child : node.children)
        result.children.push_back(addNode(child));
    m_model.nodes[index] = std::move(result);
    return int(index);
}

int GltfModelBuilder::addMesh(const Mesh &mesh)
{
    const auto [entry, isNew] = m_meshes.try_emplace(&mesh, -1);
    if (!isNew)
        return entry->second;
    tinygltf::Mesh result;
    result.name = validUtf8(mesh.name);
    for (const Primitive &primitive : mesh.primitives)
        addPrimitive(primitive, result);
    if (!result.primitives.empty()) {
        entry->second = int(m_model.meshes.size());
        m_model.meshes.push_back(std::move(result));
    }
    return entry->second;
}

int GltfModelBuilder::addMaterial(const Material &material)
{
    const auto [entry, isNew] = m_materials.try_emplace(material, int(m_model.materials.size()));
    if (!isNew)
        return entry->second;
    tinygltf::Material result;
    result.name = validUtf8(material.name);
    auto &surface = result.pbrMetallicRoughness;
    const double alpha = std::clamp(material.color[3], 0.0, 1.0);
    surface.baseColorFactor = {linearValue(material.color[0]), linearValue(material.color[1]),
                               linearValue(material.color[2]), alpha};
    surface.metallicFactor = std::clamp(material.metallic, 0.0, 1.0);
    surface.roughnessFactor = std::clamp(material.roughness, 0.0, 1.0);
    result.emissiveFactor = {linearValue(material.emissive[0]), linearValue(material.emissive[1]),
                             linearValue(material.emissive[2])};
    if (alpha < 1)
        result.alphaMode = "BLEND";
    // Surfaces of CAD files are often open or turned the wrong way round.
    result.doubleSided = true;
    m_model.materials.push_back(std::move(result));
    return entry->second;
}

void GltfModelBuilder::addPrimitive(const Primitive &stated, tinygltf::Mesh &mesh)
{
    const bool isAsStated = isClean(stated);
    if (!isAsStated)
        m_cleaned.push_back(cleaned(stated));
    const Primitive &primitive = isAsStated ? stated : m_cleaned.back();
    if (primitive.indices.empty())
        return;
    const std::size_t count = primitive.positions.size();
    const GlbBuffer::Place place = m_buffer.add(primitive);
    tinygltf::Primitive result;
    result.mode =
        primitive.mode == Primitive::Mode::Triangles ? TINYGLTF_MODE_TRIANGLES : TINYGLTF_MODE_LINE;
    result.material = addMaterial(primitive.material);
    result.indices =
        addAccessor(GlbBuffer::IndexView, place.indices, primitive.indices.size(),
                    GlbBuffer::hasShortIndices(primitive) ? TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT
                                                          : TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT,
                    TINYGLTF_TYPE_SCALAR);
    const auto addVectors = [&](std::uint64_t offset) {
        return addAccessor(GlbBuffer::VertexView, offset, count, TINYGLTF_COMPONENT_TYPE_FLOAT,
                           TINYGLTF_TYPE_VEC3);
    };
    const int positions = addVectors(place.positions);
    setBounds(primitive.positions, m_model.accessors[std::size_t(positions)]);
    result.attributes["POSITION"] = positions;
    if (!primitive.normals.empty())
        result.attributes["NORMAL"] = addVectors(place.normals);
    if (!primitive.colors.empty()) {
        const int colors = addAccessor(GlbBuffer::ColorView, place.colors, count,
                                       TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE, TINYGLTF_TYPE_VEC4);
        m_model.accessors[std::size_t(colors)].normalized = true;
        result.attributes["COLOR_0"] = colors;
    }
    mesh.primitives.push_back(std::move(result));
}

int GltfModelBuilder::addAccessor(int view, std::uint64_t offset, std::size_t count,
                                  int componentType, int type)
{
    tinygltf::Accessor accessor;
    accessor.bufferView = view;
    accessor.byteOffset = offset;
    accessor.count = count;
    accessor.componentType = componentType;
    accessor.type = type;
    m_model.accessors.push_back(std::move(accessor));
    return int(m_model.accessors.size()) - 1;
}

void GltfModelBuilder::addViews()
{
    constexpr struct {
        GlbBuffer::View view;
        int target;
        std::size_t stride;
    } views[] = {{GlbBuffer::IndexView, TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER, 0},
                 {GlbBuffer::VertexView, TINYGLTF_TARGET_ARRAY_BUFFER, 12},
                 {GlbBuffer::ColorView, TINYGLTF_TARGET_ARRAY_BUFFER, 4}};
    std::size_t offset = 0;
    for (const auto &[which, target, stride] : views) {
        const std::size_t size = m_buffer.size(which);
        if (size == 0)
            continue; // only the last one can be missing alone
        tinygltf::BufferView view;
        view.buffer = 0;
        view.byteOffset = offset;
        view.byteLength = size;
        view.byteStride = stride;
        view.target = target;
        m_model.bufferViews.push_back(view);
        offset += size;
    }
}

} // namespace tnconvert
