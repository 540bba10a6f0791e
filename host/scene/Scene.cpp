#include "host/scene/Scene.h"

#include "host/scene/NodeBounds.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <functional>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace tnhost {

namespace {

/// Depth first, parents before children.
template <typename Visit>
void walk(const SceneNode &node, const Visit &visit)
{
    visit(node);
    for (const auto &child : node.children())
        walk(*child, visit);
}

bool isBelow(const SceneNode *node, const SceneNode *ancestor)
{
    while (node && node != ancestor)
        node = node->parent();
    return node != nullptr;
}

/// Whether the node or one above it, if there is one, is among them.
bool isBelowAny(const SceneNode *node, const std::unordered_set<const SceneNode *> &ancestors)
{
    while (node && ancestors.count(node) == 0)
        node = node->parent();
    return node != nullptr;
}

} // namespace

Scene::Scene(QObject *parent)
    : QObject(parent)
    , m_root(new SceneNode)
{
    m_root->m_id = ++m_lastId;
    m_root->m_name = tr("Scene");
    remember(*m_root);
}

Scene::~Scene() = default;

tndNode Scene::addFragment(const std::shared_ptr<const SceneFragment> &fragment,
                           const tndNode &parent, const QString &sourceFile,
                           const tndSceneImportSettings &settings)
{
    if (!fragment)
        return {};
    const auto found = m_nodes.find(parent.id());
    SceneNode &place = found == m_nodes.end() ? *m_root : *found->second;
    std::unique_ptr<SceneNode> file = buildFile(*fragment, sourceFile, settings);
    applyPlacement(*file, NodeBounds::worldOf(&place), settings);
    // Whoever receives the signals may remove the node at once.
    const tndNode result(
        insert(std::move(file), place, static_cast<int>(place.m_children.size()))->id());
    emit changed();
    return result;
}

tndNode Scene::replaceNode(const tndNode &node,
                           const std::shared_ptr<const SceneFragment> &fragment,
                           const QString &sourceFile, const tndSceneImportSettings &settings)
{
    const tndNode source = sourceNode(node);
    const auto found = m_nodes.find(source.isNull() ? node.id() : source.id());
    if (!fragment || found == m_nodes.end() || found->second == m_root.get())
        return {};

    SceneNode &old = *found->second;
    SceneNode &place = *old.m_parent;
    const int row = old.row();
    const unsigned int oldId = old.id();
    std::unique_ptr<SceneNode> file = buildFile(*fragment, sourceFile, settings);
    if (settings.getPreserveTransformations())
        file->m_transform = old.transform();
    else
        applyPlacement(*file, NodeBounds::worldOf(&place), settings);

    file->m_isHidden = old.isHidden();
    // What else the user has hung below the old file must not go with it.
    const QMatrix4x4 fromWorld = (NodeBounds::worldOf(&place) * file->transform()).inverted();
    for (SceneNode *added : filesBelow(old)) {
        added->m_transform = fromWorld * NodeBounds::worldOf(added);
        std::unique_ptr<SceneNode> taken = take(*added);
        file->m_children.push_back(std::move(taken));
        adopt(*file, static_cast<int>(file->m_children.size()) - 1);
    }

    const bool wasSelected = m_selection.erase(oldId) > 0;
    const std::unique_ptr<SceneNode> gone = take(old);
    const bool selectionShrank = forget(*gone);
    const tndNode result(insert(std::move(file), place, row)->id());
    if (wasSelected)
        m_selection.insert(result.id());
    emit changed();
    if (wasSelected || selectionShrank)
        emit selectionChanged();
    return result;
}

bool Scene::removeNode(const tndNode &node)
{
    if (!contains(node) || node == root())
        return false;
    removeNodes({node});
    return true;
}

void Scene::removeNodes(const std::vector<tndNode> &nodes)
{
    std::unordered_set<const SceneNode *> leaving;
    for (const tndNode &node : nodes)
        leaving.insert(find(node));
    leaving.erase(nullptr);
    leaving.erase(m_root.get());
    std::unordered_set<SceneNode *> places;
    for (const SceneNode *each : leaving) {
        if (!isBelowAny(each->parent(), leaving))
            places.insert(each->m_parent);
    }
    if (places.empty())
        return;
    bool selectionShrank = false;
    for (SceneNode *place : places) {
        const auto leaves = [&](int row) {
            return leaving.count(place->m_children[static_cast<std::size_t>(row)].get()) > 0;
        };
        for (int last = static_cast<int>(place->m_children.size()) - 1; last >= 0; --last) {
            if (!leaves(last))
                continue;
            int first = last;
            while (first > 0 && leaves(first - 1))
                --first;
            for (const auto &gone : takeRows(*place, first, last))
                selectionShrank |= forget(*gone);
            last = first;
        }
    }
    emit changed();
    if (selectionShrank)
        emit selectionChanged();
}

tndNode Scene::takeUnusedHandle()
{
    return tndNode(++m_lastId);
}

tndNode Scene::root() const
{
    return tndNode(m_root->id());
}

bool Scene::contains(const tndNode &node) const
{
    return m_nodes.count(node.id()) > 0;
}

const SceneNode *Scene::find(const tndNode &node) const
{
    const auto found = m_nodes.find(node.id());
    return found == m_nodes.end() ? nullptr : found->second;
}

tndNode Scene::sourceNode(const tndNode &node) const
{
    const SceneNode *current = find(node);
    while (current && current->sourceFile().isEmpty())
        current = current->parent();
    return current ? tndNode(current->id()) : tndNode();
}

QString Scene::sourceFile(const tndNode &node) const
{
    const SceneNode *source = find(sourceNode(node));
    return source ? source->sourceFile() : QString();
}

QMatrix4x4 Scene::worldTransform(const tndNode &node) const
{
    return NodeBounds::worldOf(find(node));
}

BoundingBox Scene::boundingBox(const tndNode &node) const
{
    BoundingBox box;
    if (const SceneNode *top = find(node))
        NodeBounds::addSubtree(box, *top, NodeBounds::worldOf(top->parent()));
    return box;
}

std::size_t Scene::triangleCount(const tndNode &node) const
{
    std::size_t count = 0;
    if (const SceneNode *top = find(node)) {
        walk(*top, [&count](const SceneNode &each) {
            if (each.mesh())
                count += each.mesh()->triangles;
        });
    }
    return count;
}

std::size_t Scene::nodeCount() const
{
    return m_nodes.size() - 1;
}

std::vector<std::shared_ptr<const SceneMaterial>> Scene::materials() const
{
    std::vector<std::shared_ptr<const SceneMaterial>> result;
    std::unordered_set<const SceneMaterial *> seen;
    walk(*m_root, [&](const SceneNode &node) {
        for (const auto &material : node.materials()) {
            if (material && seen.insert(material.get()).second)
                result.push_back(material);
        }
    });
    return result;
}

std::vector<tndNode> Scene::selectedNodes(bool topmostOnly) const
{
    std::vector<tndNode> result;
    if (m_selection.empty())
        return result; // mostly, and who asks, asks often
    const SceneNode *topmost = nullptr;
    walk(*m_root, [&](const SceneNode &node) {
        if (m_selection.count(node.id()) == 0)
            return;
        if (topmostOnly && topmost && isBelow(&node, topmost))
            return;
        topmost = &node;
        result.emplace_back(node.id());
    });
    return result;
}

void Scene::setSelection(const std::vector<tndNode> &nodes)
{
    std::unordered_set<unsigned int> selection;
    for (const tndNode &node : nodes) {
        if (contains(node))
            selection.insert(node.id());
    }
    if (selection == m_selection)
        return;
    m_selection = std::move(selection);
    emit selectionChanged();
}

BoundingBox Scene::shownBox() const
{
    BoundingBox box;
    NodeBounds::addSubtree(box, *m_root, {}, false);
    return box;
}

void Scene::hide(const std::vector<tndNode> &nodes)
{
    for (const tndNode &node : nodes) {
        if (contains(node) && node != root())
            m_nodes.at(node.id())->m_isHidden = true;
    }
    emit visibilityChanged();
}

void Scene::show(const std::vector<tndNode> &nodes)
{
    for (const tndNode &node : nodes) {
        if (!contains(node))
            continue;
        SceneNode &top = *m_nodes.at(node.id());
        showBelow(top);
        for (SceneNode *above = &top; above; above = above->m_parent)
            above->m_isHidden = false;
    }
    emit visibilityChanged();
}

void Scene::isolate(const std::vector<tndNode> &nodes)
{
    std::unordered_set<const SceneNode *> above{m_root.get()};
    std::unordered_set<const SceneNode *> isolated;
    for (const tndNode &node : nodes) {
        const SceneNode *each = find(node);
        isolated.insert(each);
        for (; each; each = each->parent())
            above.insert(each);
    }
    const std::function<void(SceneNode &)> hideOthers = [&](SceneNode &node) {
        node.m_isHidden = above.count(&node) == 0;
        if (node.m_isHidden || isolated.count(&node) > 0)
            return;
        for (const auto &child : node.m_children)
            hideOthers(*child);
    };
    hideOthers(*m_root);
    emit visibilityChanged();
}

void Scene::showBelow(SceneNode &node)
{
    node.m_isHidden = false;
    for (const auto &child : node.m_children)
        showBelow(*child);
}

std::unique_ptr<SceneNode> Scene::buildFile(const SceneFragment &fragment,
                                            const QString &sourceFile,
                                            const tndSceneImportSettings &settings)
{
    std::unordered_multimap<std::string, std::shared_ptr<const SceneMaterial>> known;
    if (settings.getMergeMaterials()) {
        for (const auto &material : materials())
            known.emplace(material->name.toStdString(), material);
    }
    std::vector<std::shared_ptr<const SceneMaterial>> used;
    used.reserve(fragment.materials.size());
    for (const SceneMaterial &material : fragment.materials) {
        const std::string name = material.name.toStdString();
        const auto [begin, end] = known.equal_range(name);
        const auto equal = std::find_if(
            begin, end, [&material](const auto &entry) { return *entry.second == material; });
        if (equal != end) {
            used.push_back(equal->second);
            continue;
        }
        used.push_back(std::make_shared<const SceneMaterial>(material));
        if (settings.getMergeMaterials())
            known.emplace(name, used.back());
    }

    std::unique_ptr<SceneNode> file(new SceneNode);
    file->m_id = ++m_lastId;
    file->m_name = QFileInfo(sourceFile).fileName();
    file->m_sourceFile = sourceFile;
    for (const int root : fragment.roots)
        file->m_children.push_back(buildNode(fragment, root, used));
    adopt(*file, 0);
    return file;
}

std::unique_ptr<SceneNode>
Scene::buildNode(const SceneFragment &fragment, int index,
                 const std::vector<std::shared_ptr<const SceneMaterial>> &materials)
{
    const SceneFragment::Node &from = fragment.nodes[static_cast<std::size_t>(index)];
    std::unique_ptr<SceneNode> node(new SceneNode);
    node->m_id = ++m_lastId;
    node->m_name = from.name;
    node->m_transform = from.transform;
    if (from.mesh >= 0) {
        node->m_mesh = fragment.meshes[static_cast<std::size_t>(from.mesh)];
        for (const ScenePrimitive &primitive : node->m_mesh->primitives) {
            node->m_materials.push_back(
                primitive.material < 0 ? nullptr
                                       : materials[static_cast<std::size_t>(primitive.material)]);
        }
    }
    node->m_children.reserve(from.children.size());
    for (const int child : from.children)
        node->m_children.push_back(buildNode(fragment, child, materials));
    adopt(*node, 0);
    return node;
}

void Scene::applyPlacement(SceneNode &node, const QMatrix4x4 &parentWorld,
                           const tndSceneImportSettings &settings)
{
    BoundingBox box;
    NodeBounds::addSubtree(box, node, parentWorld);
    if (box.isEmpty())
        return;
    QVector3D shift;
    if (settings.getCenterInOrigin())
        shift = -box.center();
    if (settings.getPutOnGround())
        shift.setZ(-box.min.z());
    if (shift.isNull())
        return;
    bool invertible = false;
    const QMatrix4x4 fromWorld = parentWorld.inverted(&invertible);
    if (!invertible)
        return; // flat parents have no way back from the world
    QMatrix4x4 move;
    move.translate(shift);
    node.m_transform = fromWorld * move * parentWorld * node.m_transform;
}

std::vector<SceneNode *> Scene::filesBelow(SceneNode &file)
{
    std::vector<SceneNode *> files;
    const std::function<void(SceneNode &)> search = [&](SceneNode &node) {
        for (const auto &child : node.m_children) {
            if (child->sourceFile().isEmpty())
                search(*child);
            else
                files.push_back(child.get());
        }
    };
    search(file);
    return files;
}

void Scene::adopt(SceneNode &parent, int firstRow)
{
    for (auto row = static_cast<std::size_t>(firstRow); row < parent.m_children.size(); ++row) {
        parent.m_children[row]->m_parent = &parent;
        parent.m_children[row]->m_row = static_cast<int>(row);
    }
}

SceneNode *Scene::insert(std::unique_ptr<SceneNode> node, SceneNode &parent, int row)
{
    emit aboutToInsert(&parent, row);
    const auto position = parent.m_children.begin() + row;
    SceneNode *const inside = parent.m_children.insert(position, std::move(node))->get();
    adopt(parent, row);
    remember(*inside);
    emit inserted(inside);
    return inside;
}

std::unique_ptr<SceneNode> Scene::take(SceneNode &node)
{
    const int row = node.row();
    return std::move(takeRows(*node.m_parent, row, row).front());
}

std::vector<std::unique_ptr<SceneNode>> Scene::takeRows(SceneNode &parent, int first, int last)
{
    emit aboutToRemoveRows(&parent, first, last);
    const auto begin = parent.m_children.begin() + first;
    const auto end = parent.m_children.begin() + last + 1;
    for (auto each = begin; each != end; ++each)
        emit aboutToRemove(each->get());
    std::vector<std::unique_ptr<SceneNode>> taken(std::make_move_iterator(begin),
                                                  std::make_move_iterator(end));
    parent.m_children.erase(begin, end);
    adopt(parent, first);
    for (const auto &each : taken)
        each->m_parent = nullptr;
    emit rowsRemoved(&parent);
    return taken;
}

void Scene::remember(SceneNode &node)
{
    m_nodes[node.id()] = &node;
    for (const auto &child : node.m_children)
        remember(*child);
}

bool Scene::forget(const SceneNode &node)
{
    bool selectionShrank = false;
    walk(node, [&](const SceneNode &each) {
        m_nodes.erase(each.id());
        if (m_selection.erase(each.id()) > 0)
            selectionShrank = true;
    });
    return selectionShrank;
}

} // namespace tnhost
