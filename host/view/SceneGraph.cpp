#include "host/view/SceneGraph.h"

#include <Inventor/nodes/SoMatrixTransform.h>

#include <QtCore/QElapsedTimer>

#include <cmath>
#include <utility>

namespace tnhost {

namespace {

constexpr int stepMs = 10;
constexpr float plainGrey[] = {0.5F, 0.5F, 0.5F, 1.0F};

/// What a screen needs for a linear value.
float screenValue(float linear)
{
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

SoMaterial *makeMaterial(const SceneMaterial *from)
{
    const float *color = from ? from->baseColor.data() : plainGrey;
    const float shine = from ? 0.25F * (1 - from->roughness) : 0.0F;
    auto *material = new SoMaterial;
    material->diffuseColor.setValue(screenValue(color[0]), screenValue(color[1]),
                                    screenValue(color[2]));
    material->ambientColor = material->diffuseColor[0] * 0.5F;
    material->specularColor.setValue(shine, shine, shine);
    material->shininess = 0.3F;
    material->transparency = 1 - color[3];
    return material;
}

} // namespace

SceneGraph::SceneGraph(const Scene &scene, QObject *parent)
    : QObject(parent)
    , m_scene(scene)
    , m_root(new PartNode(scene.root().id()))
    , m_selectedLook(new SoMaterial)
{
    m_selectedLook->diffuseColor.setValue(1.0F, 0.55F, 0.1F);
    m_selectedLook->ambientColor.setValue(0.6F, 0.33F, 0.06F);
    m_selectedLook->setOverride(TRUE); // of the looks of all that lies below
    m_parts[scene.root().id()] = m_root.get();
    m_step.setSingleShot(true);
    connect(&m_step, &QTimer::timeout, this, &SceneGraph::buildSome);
    connect(&scene, &Scene::inserted, this, &SceneGraph::onInserted);
    connect(&scene, &Scene::aboutToRemove, this, &SceneGraph::onAboutToRemove);
    connect(&scene, &Scene::selectionChanged, this, [this] {
        showSelection();
        emit changed();
    });
    connect(&scene, &Scene::visibilityChanged, this, &SceneGraph::onVisibilityChanged);
    connect(&m_edgeFinder, &EdgeFinder::found, this, &SceneGraph::onEdgesFound);
    for (const auto &child : scene.find(scene.root())->children())
        onInserted(child.get());
}

SceneGraph::~SceneGraph() = default;

void SceneGraph::finish()
{
    for (; !m_waiting.empty(); m_waiting.pop_front()) {
        // It may be gone again.
        if (const SceneNode *node = m_scene.find(tndNode(m_waiting.front())))
            build(*node);
    }
    m_edgeFinder.finish();
    showSelection();
}

void SceneGraph::onInserted(const SceneNode *node)
{
    m_waiting.push_back(node->id());
    m_step.start(0);
}

void SceneGraph::onAboutToRemove(const SceneNode *node)
{
    const auto part = m_parts.find(node->id());
    if (part != m_parts.end())
        m_parts.at(node->parent()->id())->removeChild(part->second);
    forget(*node);
    m_step.start(0);
}

void SceneGraph::buildSome()
{
    QElapsedTimer time;
    time.start();
    while (!m_waiting.empty() && time.elapsed() < stepMs) {
        const unsigned int id = m_waiting.front();
        m_waiting.pop_front();
        if (const SceneNode *node = m_scene.find(tndNode(id)))
            build(*node);
    }
    if (m_waiting.empty()) {
        showSelection();
        dropUnused();
    } else {
        m_step.start(0);
    }
    emit changed();
}

void SceneGraph::build(const SceneNode &node)
{
    auto *part = new PartNode(node.id());
    if (!node.transform().isIdentity()) {
        auto *transform = new SoMatrixTransform;
        SbMatrix matrix;
        matrix.setValue(node.transform().constData());
        transform->matrix = matrix;
        part->addChild(transform);
    }
    if (node.mesh())
        addGeometry(*part, node);
    m_parts.at(node.parent()->id())->addChild(part);
    m_parts[node.id()] = part;
    part->setShown(!node.isHidden());
    for (const auto &child : node.children())
        m_waiting.push_back(child->id());
}

void SceneGraph::addGeometry(PartNode &part, const SceneNode &node)
{
    std::size_t primitive = 0;
    for (const NodePtr<MeshShape> &shape : shapesOf(node.mesh())) {
        part.addChild(materialOf(node.materials()[primitive++]));
        part.addChild(shape.get());
    }
}

const std::vector<NodePtr<MeshShape>> &
SceneGraph::shapesOf(const std::shared_ptr<const SceneMesh> &mesh)
{
    const auto [place, isNew] = m_shapes.try_emplace(mesh);
    if (isNew) {
        for (const ScenePrimitive &primitive : mesh->primitives)
            place->second.emplace_back(new MeshShape(mesh, primitive));
        if (m_showsEdges)
            m_edgeFinder.request(mesh);
    }
    return place->second;
}

SoMaterial *SceneGraph::materialOf(const std::shared_ptr<const SceneMaterial> &material)
{
    NodePtr<SoMaterial> &known = m_materials[material];
    if (!known)
        known.reset(makeMaterial(material.get()));
    return known.get();
}

void SceneGraph::showSelection()
{
    std::unordered_set<unsigned int> selected;
    for (const tndNode &node : m_scene.selectedNodes(true)) {
        const auto part = m_parts.find(node.id());
        if (part == m_parts.end())
            continue; // not built yet
        selected.insert(node.id());
        if (m_selected.erase(node.id()) == 0)
            part->second->setLook(m_selectedLook.get());
    }
    for (const unsigned int id : m_selected)
        m_parts.at(id)->setLook(nullptr);
    m_selected = std::move(selected);
}

void SceneGraph::onVisibilityChanged()
{
    for (const auto &[id, part] : m_parts)
        part->setShown(!m_scene.find(tndNode(id))->isHidden());
    emit changed();
}

void SceneGraph::showEdges(bool areShown)
{
    m_showsEdges = areShown;
    for (const auto &[mesh, shapes] : m_shapes) {
        if (areShown && !shapes.empty() && !shapes.front()->hasEdges())
            m_edgeFinder.request(mesh);
        for (const NodePtr<MeshShape> &shape : shapes)
            shape->showEdges(areShown);
    }
    emit changed();
}

void SceneGraph::onEdgesFound(const std::shared_ptr<const SceneMesh> &mesh,
                              const std::vector<EdgeFinder::Edges> &edges)
{
    const auto shapes = m_shapes.find(mesh);
    if (shapes == m_shapes.end())
        return; // removed meanwhile
    for (std::size_t i = 0; i < edges.size(); ++i) {
        shapes->second[i]->setEdges(edges[i]);
        shapes->second[i]->showEdges(m_showsEdges);
    }
    emit changed();
}

void SceneGraph::forget(const SceneNode &node)
{
    m_parts.erase(node.id());
    m_selected.erase(node.id());
    for (const auto &child : node.children())
        forget(*child);
}

void SceneGraph::dropUnused()
{
    for (auto entry = m_shapes.begin(); entry != m_shapes.end();) {
        const auto &shapes = entry->second;
        const bool isUsed = !shapes.empty() && shapes.front()->getRefCount() > 1;
        entry = isUsed ? std::next(entry) : m_shapes.erase(entry);
    }
    for (auto entry = m_materials.begin(); entry != m_materials.end();)
        entry = entry->second->getRefCount() > 1 ? std::next(entry) : m_materials.erase(entry);
}

} // namespace tnhost
