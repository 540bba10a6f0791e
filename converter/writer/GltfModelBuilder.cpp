#include "writer/GltfModelBuilder.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "protocol/GlbLayout.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace tnconvert {

namespace glb = tnprotocol::glb;

namespace {

constexpr double metresPerMillimetre = 0.001;
constexpr float largestCoordinate = 1e30F;

/// All data of one kind share one view; these are the views' indices.
enum View { IndexView, VertexView, ColorView };

double linear(double srgb)
{
    const double c = std::clamp(srgb, 0.0, 1.0);
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

std::uint8_t linear8(std::uint8_t srgb)
{
    return std::uint8_t(std::lround(linear(srgb / 255.0) * 255));
}

template <typename T>
void append(std::string &bytes, const std::vector<T> &values)
{
    static_assert(std::is_trivially_copyable_v<T>);
    const std::size_t start = bytes.size();
    bytes.resize(start + values.size() * sizeof(T));
    if (!values.empty())
        std::memcpy(bytes.data() + start, values.data(), values.size() * sizeof(T));
}

/// A primitive as it is written: only vertices that are used, all of them numbers.
struct CleanPrimitive {
    std::vector<Vec3f> positions;
    std::vector<Vec3f> normals;
    std::vector<Rgba8> colors;
    std::vector<std::uint32_t> indices;
};

bool isUsable(const Vec3f &position)
{
    return std::all_of(position.begin(), position.end(),
                       [](float c) { return std::fabs(c) < largestCoordinate; });
}

Vec3f unitNormal(const Vec3f &normal, const Primitive &primitive, const std::uint32_t *corners)
{
    const auto vec = [](const Vec3f &v) { return Vec3{v[0], v[1], v[2]}; };
    Vec3 n = vec(normal);
    if (!n.isFinite() || n.length() < 1e-6) {
        const Vec3 a = vec(primitive.positions[corners[0]]);
        n = (vec(primitive.positions[corners[1]]) - a)
                .cross(vec(primitive.positions[corners[2]]) - a);
    }
    n = n.normalized();
    if (n.dot(n) < 0.5)
        n = {0, 0, 1};
    return {float(n.x), float(n.y), float(n.z)};
}

CleanPrimitive cleaned(const Primitive &primitive)
{
    const std::size_t corners = primitive.mode == Primitive::Mode::Triangles ? 3 : 2;
    const bool hasNormals = corners == 3 && primitive.normals.size() == primitive.positions.size();
    const bool hasColors = primitive.colors.size() == primitive.positions.size();
    constexpr std::uint32_t unused = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> newIndex(primitive.positions.size(), unused);
    CleanPrimitive result;
    result.indices.reserve(primitive.indices.size());
    for (std::size_t i = 0; i + corners <= primitive.indices.size(); i += corners) {
        const std::uint32_t *element = primitive.indices.data() + i;
        const bool isWhole = std::all_of(element, element + corners, [&](std::uint32_t index) {
            return index < primitive.positions.size() && isUsable(primitive.positions[index]);
        });
        const bool isDegenerate = isWhole
            && (element[0] == element[1]
                || (corners == 3 && (element[1] == element[2] || element[2] == element[0])));
        if (!isWhole || isDegenerate)
            continue;
        for (std::size_t corner = 0; corner < corners; ++corner) {
            std::uint32_t &index = newIndex[element[corner]];
            if (index == unused) {
                index = std::uint32_t(result.positions.size());
                Vec3f position = primitive.positions[element[corner]];
                for (float &c : position)
                    c = float(c * metresPerMillimetre);
                result.positions.push_back(position);
                if (hasNormals)
                    result.normals.push_back(
                        unitNormal(primitive.normals[element[corner]], primitive, element));
                if (hasColors) {
                    Rgba8 color = primitive.colors[element[corner]];
                    for (std::size_t c = 0; c < 3; ++c)
                        color[c] = linear8(color[c]);
                    result.colors.push_back(color);
                }
            }
            result.indices.push_back(index);
        }
    }
    return result;
}

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
    addBuffer();
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
    surface.baseColorFactor = {linear(material.color[0]), linear(material.color[1]),
                               linear(material.color[2]), alpha};
    surface.metallicFactor = std::clamp(material.metallic, 0.0, 1.0);
    surface.roughnessFactor = std::clamp(material.roughness, 0.0, 1.0);
    result.emissiveFactor = {linear(material.emissive[0]), linear(material.emissive[1]),
                             linear(material.emissive[2])};
    if (alpha < 1)
        result.alphaMode = "BLEND";
    // Surfaces of CAD files are often open or turned the wrong way round.
    result.doubleSided = true;
    m_model.materials.push_back(std::move(result));
    return entry->second;
}

void GltfModelBuilder::addPrimitive(const Primitive &primitive, tinygltf::Mesh &mesh)
{
    const CleanPrimitive clean = cleaned(primitive);
    if (clean.indices.empty())
        return;
    const std::size_t count = clean.positions.size();
    tinygltf::Primitive result;
    result.mode =
        primitive.mode == Primitive::Mode::Triangles ? TINYGLTF_MODE_TRIANGLES : TINYGLTF_MODE_LINE;
    result.material = addMaterial(primitive.material);

    const std::size_t indexOffset = m_indices.size();
    // 65535 itself is reserved.
    const bool isShort = count <= 65535;
    if (isShort)
        append(m_indices, std::vector<std::uint16_t>(clean.indices.begin(), clean.indices.end()));
    else
        append(m_indices, clean.indices);
    m_indices.resize((m_indices.size() + 3) / 4 * 4);
    result.indices = addAccessor(IndexView, indexOffset, clean.indices.size(),
                                 isShort ? TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT
                                         : TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT,
                                 TINYGLTF_TYPE_SCALAR);

    const int positions = addAccessor(VertexView, m_vertices.size(), count,
                                      TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3);
    append(m_vertices, clean.positions);
    Vec3f least = clean.positions[0];
    Vec3f most = least;
    for (const Vec3f &p : clean.positions) {
        for (std::size_t c = 0; c < 3; ++c) {
            least[c] = std::min(least[c], p[c]);
            most[c] = std::max(most[c], p[c]);
        }
    }
    tinygltf::Accessor &accessor = m_model.accessors[std::size_t(positions)];
    accessor.minValues.assign(least.begin(), least.end());
    accessor.maxValues.assign(most.begin(), most.end());
    result.attributes["POSITION"] = positions;

    if (!clean.normals.empty()) {
        result.attributes["NORMAL"] =
            addAccessor(VertexView, m_vertices.size(), count, TINYGLTF_COMPONENT_TYPE_FLOAT,
                        TINYGLTF_TYPE_VEC3);
        append(m_vertices, clean.normals);
    }
    if (!clean.colors.empty()) {
        const int colors = addAccessor(ColorView, m_colors.size(), count,
                                       TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE, TINYGLTF_TYPE_VEC4);
        m_model.accessors[std::size_t(colors)].normalized = true;
        append(m_colors, clean.colors);
        result.attributes["COLOR_0"] = colors;
    }
    mesh.primitives.push_back(std::move(result));
}

int GltfModelBuilder::addAccessor(int view, std::size_t offset, std::size_t count,
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

void GltfModelBuilder::addBuffer()
{
    struct Section {
        std::string &bytes;
        int target;
        std::size_t stride;
    };
    const Section sections[] = {{m_indices, TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER, 0},
                                {m_vertices, TINYGLTF_TARGET_ARRAY_BUFFER, 12},
                                {m_colors, TINYGLTF_TARGET_ARRAY_BUFFER, 4}};
    const std::size_t total = m_indices.size() + m_vertices.size() + m_colors.size();
    if (total == 0)
        return;
    // The container counts its bytes with 32 bits, the description included.
    if (total > 3'500'000'000U)
        throw ConversionError("The tessellated model is larger than a glTF binary can be; a larger "
                              "chord deviation makes it smaller.");
    tinygltf::Buffer buffer;
    buffer.data.reserve(total);
    for (const Section &section : sections) {
        if (section.bytes.empty())
            continue; // only the last section can be missing
        tinygltf::BufferView view;
        view.buffer = 0;
        view.byteOffset = buffer.data.size();
        view.byteLength = section.bytes.size();
        view.byteStride = section.stride;
        view.target = section.target;
        m_model.bufferViews.push_back(view);
        buffer.data.insert(buffer.data.end(), section.bytes.begin(), section.bytes.end());
        std::string().swap(section.bytes);
    }
    m_model.buffers.push_back(std::move(buffer));
}

} // namespace tnconvert
