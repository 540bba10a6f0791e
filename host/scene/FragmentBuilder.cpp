#include "host/scene/FragmentBuilder.h"

#include "host/scene/GlbFile.h"
#include "host/scene/GltfAccessor.h"
#include "protocol/GlbLayout.h"

#include <QtGui/QQuaternion>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tnhost {

namespace {

constexpr float mmPerMetre = 1000.0F;

/// The tree is walked and destroyed by recursion; no real assembly comes near to this.
constexpr int deepestNode = 500;

bool isIndex(int index, std::size_t size)
{
    return index >= 0 && static_cast<std::size_t>(index) < size;
}

bool isHarmless(const std::string &extension)
{
    // These change how surfaces look, never where they are.
    return extension.rfind("KHR_materials_", 0) == 0 || extension == "KHR_texture_transform"
        || extension == "KHR_lights_punctual";
}

float value(const std::vector<double> &values, std::size_t index)
{
    return static_cast<float>(values[index]);
}

/// glTF's axes out of the source's, for a source with z upwards.
QMatrix4x4 zUpToYUp()
{
    return {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1};
}

/// The matrix of a node, in mm. Without its rotation when that is the turn of the axes.
QMatrix4x4 transformOf(const tinygltf::Node &node, bool dropAxes)
{
    const auto hasSize = [&node](const std::vector<double> &values, std::size_t size) {
        if (!values.empty() && values.size() != size)
            throw GlbError(QStringLiteral("The transformation of node \"%1\" is incomplete.")
                               .arg(QString::fromStdString(node.name)));
        return !values.empty();
    };

    QMatrix4x4 result;
    if (hasSize(node.matrix, 16)) {
        for (int column = 0; column < 4; ++column) {
            for (int row = 0; row < 4; ++row)
                result(row, column) =
                    value(node.matrix, static_cast<std::size_t>(4 * column + row));
        }
        for (int row = 0; row < 3; ++row)
            result(row, 3) *= mmPerMetre;
        if (dropAxes)
            result = zUpToYUp().transposed() * result;
    } else {
        if (hasSize(node.translation, 3))
            result.translate(QVector3D(value(node.translation, 0), value(node.translation, 1),
                                       value(node.translation, 2))
                             * mmPerMetre);
        if (hasSize(node.rotation, 4) && !dropAxes)
            result.rotate(QQuaternion(value(node.rotation, 3), value(node.rotation, 0),
                                      value(node.rotation, 1), value(node.rotation, 2)));
        if (hasSize(node.scale, 3))
            result.scale(value(node.scale, 0), value(node.scale, 1), value(node.scale, 2));
    }

    const float *data = result.constData();
    const bool finite = std::all_of(data, data + 16, [](float v) { return std::isfinite(v); });
    if (!finite || result.row(3) != QVector4D(0, 0, 0, 1))
        throw GlbError(QStringLiteral("The transformation of node \"%1\" is none of 3D space.")
                           .arg(QString::fromStdString(node.name)));
    return result;
}

std::string sourceAxes(const tinygltf::Node &node)
{
    if (!node.extras.IsObject() || !node.extras.Has(tnprotocol::glb::sourceAxes))
        return {};
    const tinygltf::Value &axes = node.extras.Get(tnprotocol::glb::sourceAxes);
    return axes.IsString() ? axes.Get<std::string>() : std::string();
}

struct Mode {
    ScenePrimitive::Kind kind;
    std::size_t corners; ///< per element
    enum { Separate, Strip, Loop, Fan } run;
};

Mode modeOf(const tinygltf::Primitive &primitive)
{
    using Kind = ScenePrimitive::Kind;
    switch (primitive.mode) {
    case -1: // absent
    case TINYGLTF_MODE_TRIANGLES:
        return {Kind::Triangles, 3, Mode::Separate};
    case TINYGLTF_MODE_TRIANGLE_STRIP:
        return {Kind::Triangles, 3, Mode::Strip};
    case TINYGLTF_MODE_TRIANGLE_FAN:
        return {Kind::Triangles, 3, Mode::Fan};
    case TINYGLTF_MODE_LINE:
        return {Kind::Lines, 2, Mode::Separate};
    case TINYGLTF_MODE_LINE_STRIP:
        return {Kind::Lines, 2, Mode::Strip};
    case TINYGLTF_MODE_LINE_LOOP:
        return {Kind::Lines, 2, Mode::Loop};
    default:
        throw GlbError(QStringLiteral("A mesh is made of an unknown kind of elements."));
    }
}

/// Strips, loops and fans as separate elements.
std::vector<std::uint32_t> separate(std::vector<std::uint32_t> indices, const Mode &mode)
{
    if (mode.run == Mode::Separate) {
        indices.resize(indices.size() - indices.size() % mode.corners);
        return indices;
    }
    std::vector<std::uint32_t> result;
    for (std::size_t i = 0; i + mode.corners <= indices.size(); ++i) {
        if (mode.kind == ScenePrimitive::Kind::Lines) {
            result.insert(result.end(), {indices[i], indices[i + 1]});
        } else if (mode.run == Mode::Fan) {
            result.insert(result.end(), {indices[0], indices[i + 1], indices[i + 2]});
        } else {
            // Every second triangle of a strip has the other winding.
            const std::size_t odd = i % 2;
            result.insert(result.end(), {indices[i], indices[i + 1 + odd], indices[i + 2 - odd]});
        }
    }
    if (mode.run == Mode::Loop && indices.size() > 1)
        result.insert(result.end(), {indices.back(), indices.front()});
    return result;
}

} // namespace

FragmentBuilder::FragmentBuilder(tinygltf::Model model)
    : m_model(std::move(model))
{
}

SceneFragment FragmentBuilder::build()
{
    checkExtensions();
    for (const tinygltf::Material &material : m_model.materials)
        addMaterial(material);
    for (const tinygltf::Mesh &mesh : m_model.meshes)
        addMesh(mesh);
    for (const tinygltf::Node &node : m_model.nodes)
        addNode(node);
    checkTree();
    chooseRoots();
    dropAxisNode();
    return std::move(m_fragment);
}

void FragmentBuilder::checkExtensions() const
{
    for (const std::string &extension : m_model.extensionsRequired) {
        if (!isHarmless(extension))
            throw GlbError(QStringLiteral("The file needs the glTF extension %1.")
                               .arg(QString::fromStdString(extension)));
    }
}

void FragmentBuilder::addMaterial(const tinygltf::Material &material)
{
    const auto unit = [](double number) {
        return std::isfinite(number) ? static_cast<float>(std::clamp(number, 0.0, 1.0)) : 1.0F;
    };
    const tinygltf::PbrMetallicRoughness &pbr = material.pbrMetallicRoughness;
    SceneMaterial result;
    result.name = QString::fromStdString(material.name);
    for (std::size_t i = 0; i < std::min(pbr.baseColorFactor.size(), result.baseColor.size()); ++i)
        result.baseColor[i] = unit(pbr.baseColorFactor[i]);
    result.metallic = unit(pbr.metallicFactor);
    result.roughness = unit(pbr.roughnessFactor);
    m_fragment.materials.push_back(result);
}

void FragmentBuilder::addMesh(const tinygltf::Mesh &mesh)
{
    auto result = std::make_shared<SceneMesh>();
    result->name = QString::fromStdString(mesh.name);
    for (const tinygltf::Primitive &primitive : mesh.primitives)
        addPrimitive(*result, primitive);
    m_fragment.meshes.push_back(std::move(result));
}

void FragmentBuilder::addPrimitive(SceneMesh &mesh, const tinygltf::Primitive &primitive) const
{
    if (primitive.mode == TINYGLTF_MODE_POINTS)
        return; // the scene shows surfaces and curves only
    const Mode mode = modeOf(primitive);
    const auto positions = primitive.attributes.find("POSITION");
    if (positions == primitive.attributes.end())
        return; // allowed, and nothing to see

    ScenePrimitive result;
    result.kind = mode.kind;
    result.positions = GltfAccessor(m_model, positions->second).vectors(mmPerMetre);

    const auto normals = primitive.attributes.find("NORMAL");
    if (normals != primitive.attributes.end()) {
        result.normals = GltfAccessor(m_model, normals->second).vectors(1.0F);
        if (result.normals.size() != result.positions.size())
            throw GlbError(
                QStringLiteral("Mesh \"%1\" has not as many normals as vertices.").arg(mesh.name));
    }

    std::vector<std::uint32_t> indices;
    if (primitive.indices >= 0) {
        indices = GltfAccessor(m_model, primitive.indices).indices(result.positions.size());
    } else {
        indices.resize(result.positions.size());
        for (std::size_t i = 0; i < indices.size(); ++i)
            indices[i] = static_cast<std::uint32_t>(i);
    }
    result.indices = separate(std::move(indices), mode);

    if (primitive.material >= 0 && !isIndex(primitive.material, m_fragment.materials.size()))
        throw GlbError(QStringLiteral("Mesh \"%1\" has a material that the file does not have.")
                           .arg(mesh.name));
    result.material = primitive.material;

    for (const QVector3D &position : result.positions)
        mesh.box.add(position);
    if (result.kind == ScenePrimitive::Kind::Triangles)
        mesh.triangles += result.indices.size() / 3;
    mesh.primitives.push_back(std::move(result));
}

void FragmentBuilder::addNode(const tinygltf::Node &node)
{
    if (node.mesh >= 0 && !isIndex(node.mesh, m_fragment.meshes.size()))
        throw GlbError(QStringLiteral("Node \"%1\" has a mesh that the file does not have.")
                           .arg(QString::fromStdString(node.name)));
    SceneFragment::Node result;
    result.name = QString::fromStdString(node.name);
    result.transform = transformOf(node, sourceAxes(node) == tnprotocol::glb::zUp);
    result.mesh = node.mesh;
    result.children = node.children;
    m_fragment.nodes.push_back(std::move(result));
}

void FragmentBuilder::checkTree()
{
    const std::size_t count = m_fragment.nodes.size();
    m_parents.assign(count, -1);
    for (std::size_t i = 0; i < count; ++i) {
        for (const int child : m_fragment.nodes[i].children) {
            if (!isIndex(child, count))
                throw GlbError(QStringLiteral("Node \"%1\" has a child that the file does not "
                                              "have.")
                                   .arg(m_fragment.nodes[i].name));
            int &parent = m_parents[static_cast<std::size_t>(child)];
            if (parent >= 0)
                throw GlbError(QStringLiteral("Node \"%1\" has more than one parent.")
                                   .arg(m_fragment.nodes[static_cast<std::size_t>(child)].name));
            parent = static_cast<int>(i);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        int depth = 0;
        // A ring of nodes has no end upwards, so the bound on the depth finds it as well.
        for (int node = static_cast<int>(i); node >= 0;
             node = m_parents[static_cast<std::size_t>(node)]) {
            if (++depth > deepestNode)
                throw GlbError(QStringLiteral("The file's nodes are nested too deeply, or in a "
                                              "ring."));
        }
    }
}

void FragmentBuilder::chooseRoots()
{
    const int scene = m_model.defaultScene >= 0 ? m_model.defaultScene : 0;
    if (isIndex(scene, m_model.scenes.size())) {
        m_fragment.roots = m_model.scenes[static_cast<std::size_t>(scene)].nodes;
    } else {
        for (std::size_t i = 0; i < m_parents.size(); ++i) {
            if (m_parents[i] < 0)
                m_fragment.roots.push_back(static_cast<int>(i));
        }
    }
    auto roots = m_fragment.roots;
    std::sort(roots.begin(), roots.end());
    if (std::adjacent_find(roots.begin(), roots.end()) != roots.end())
        throw GlbError(QStringLiteral("The file's scene names a node twice."));
    for (const int root : roots) {
        if (!isIndex(root, m_parents.size()) || m_parents[static_cast<std::size_t>(root)] >= 0)
            throw GlbError(QStringLiteral("The file's scene names a node that is no root."));
    }
}

void FragmentBuilder::dropAxisNode()
{
    // With its turn taken back, the converter's top node says nothing more.
    if (m_fragment.roots.size() != 1)
        return;
    const auto top = static_cast<std::size_t>(m_fragment.roots.front());
    const SceneFragment::Node &node = m_fragment.nodes[top];
    if (!sourceAxes(m_model.nodes[top]).empty() && node.mesh < 0 && node.transform.isIdentity())
        m_fragment.roots = node.children;
}

} // namespace tnhost
