#include "scene/SceneOperations.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tnconvert {

namespace {

bool drawsSomething(const Node &node)
{
    return node.mesh
        && std::any_of(node.mesh->primitives.begin(), node.mesh->primitives.end(),
                       [](const Primitive &p) { return !p.indices.empty(); });
}

Vec3 widened(const Vec3f &v)
{
    return {v[0], v[1], v[2]};
}

Vec3f narrowed(const Vec3 &v)
{
    return {float(v.x), float(v.y), float(v.z)};
}

Primitive transformed(Primitive primitive, const Transform &transform)
{
    for (Vec3f &p : primitive.positions)
        p = narrowed(transform.point(widened(p)));
    for (Vec3f &n : primitive.normals)
        n = narrowed(transform.normal(widened(n)));
    if (transform.determinant() < 0 && primitive.mode == Primitive::Mode::Triangles) {
        for (std::size_t i = 0; i + 2 < primitive.indices.size(); i += 3)
            std::swap(primitive.indices[i + 1], primitive.indices[i + 2]);
    }
    return primitive;
}

using FlushedMeshes =
    std::map<std::pair<const Mesh *, std::array<double, 16>>, std::shared_ptr<const Mesh>>;

void flush(Node &node, const Transform &above, FlushedMeshes &done)
{
    const Transform total = above * node.transform;
    node.transform = Transform();
    if (node.mesh && !total.isIdentity()) {
        std::shared_ptr<const Mesh> &flushed = done[{node.mesh.get(), total.values()}];
        if (!flushed) {
            auto mesh = std::make_shared<Mesh>();
            mesh->name = node.mesh->name;
            for (const Primitive &primitive : node.mesh->primitives)
                mesh->primitives.push_back(transformed(primitive, total));
            flushed = mesh;
        }
        node.mesh = flushed;
    }
    for (Node &child : node.children)
        flush(child, total, done);
}

class EdgeSplitter {
public:
    EdgeSplitter(Primitive &primitive, double maximum)
        : m_primitive(primitive)
        , m_maximum(maximum)
    {
    }

    /// One round of halving; false when every edge was short enough.
    bool round()
    {
        m_midpoints.clear();
        std::vector<std::uint32_t> result;
        const std::vector<std::uint32_t> old = std::move(m_primitive.indices);
        if (m_primitive.mode == Primitive::Mode::Lines) {
            for (std::size_t i = 0; i + 1 < old.size(); i += 2)
                splitSegment(old[i], old[i + 1], result);
        } else {
            for (std::size_t i = 0; i + 2 < old.size(); i += 3)
                splitTriangle({old[i], old[i + 1], old[i + 2]}, result);
        }
        m_primitive.indices = std::move(result);
        return !m_midpoints.empty();
    }

private:
    bool isLong(std::uint32_t a, std::uint32_t b) const
    {
        return (widened(m_primitive.positions[a]) - widened(m_primitive.positions[b])).length()
            > m_maximum;
    }

    std::uint32_t midpoint(std::uint32_t a, std::uint32_t b)
    {
        const auto [entry, isNew] =
            m_midpoints.try_emplace(std::minmax(a, b), std::uint32_t(m_primitive.positions.size()));
        if (isNew) {
            Primitive &p = m_primitive;
            p.positions.push_back(
                narrowed((widened(p.positions[a]) + widened(p.positions[b])) * 0.5));
            if (!p.normals.empty()) {
                const Vec3 sum = widened(p.normals[a]) + widened(p.normals[b]);
                p.normals.push_back(sum.length() > 1e-3 ? narrowed(sum.normalized())
                                                        : Vec3f(p.normals[a]));
            }
        }
        return entry->second;
    }

    void splitSegment(std::uint32_t a, std::uint32_t b, std::vector<std::uint32_t> &result)
    {
        if (!isLong(a, b)) {
            result.insert(result.end(), {a, b});
            return;
        }
        const std::uint32_t m = midpoint(a, b);
        result.insert(result.end(), {a, m, m, b});
    }

    void splitTriangle(std::array<std::uint32_t, 3> t, std::vector<std::uint32_t> &result)
    {
        std::array<bool, 3> isSplit{};
        int count = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            isSplit[i] = isLong(t[i], t[(i + 1) % 3]);
            count += isSplit[i] ? 1 : 0;
        }
        if (count == 0) {
            result.insert(result.end(), {t[0], t[1], t[2]});
            return;
        }
        // Turned so that one split edge comes first and, of two, the whole edge comes last.
        while (!isSplit[0] || (count == 2 && isSplit[2])) {
            std::rotate(t.begin(), t.begin() + 1, t.end());
            std::rotate(isSplit.begin(), isSplit.begin() + 1, isSplit.end());
        }
        const std::uint32_t ab = midpoint(t[0], t[1]);
        if (count == 1) {
            result.insert(result.end(), {t[0], ab, t[2], ab, t[1], t[2]});
            return;
        }
        const std::uint32_t bc = midpoint(t[1], t[2]);
        if (count == 2) {
            result.insert(result.end(), {ab, t[1], bc, t[0], ab, bc, t[0], bc, t[2]});
            return;
        }
        const std::uint32_t ca = midpoint(t[2], t[0]);
        result.insert(result.end(), {t[0], ab, ca, ab, t[1], bc, ca, bc, t[2], ab, bc, ca});
    }

    Primitive &m_primitive;
    const double m_maximum;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> m_midpoints;
};

} // namespace

void removeEmptyGroups(std::vector<Node> &nodes)
{
    for (Node &node : nodes)
        removeEmptyGroups(node.children);
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                               [](const Node &node) {
                                   return node.children.empty() && !drawsSomething(node);
                               }),
                nodes.end());
}

void unshareMeshes(std::vector<Node> &nodes)
{
    for (Node &node : nodes) {
        if (node.mesh)
            node.mesh = std::make_shared<Mesh>(*node.mesh);
        unshareMeshes(node.children);
    }
}

void flushTransformations(std::vector<Node> &nodes)
{
    FlushedMeshes done;
    for (Node &node : nodes)
        flush(node, Transform(), done);
}

void createLayerGroups(std::vector<Node> &nodes)
{
    std::vector<Node> result;
    std::map<std::string, std::size_t> groups;
    for (Node &node : nodes) {
        createLayerGroups(node.children);
        if (node.layer.empty()) {
            result.push_back(std::move(node));
            continue;
        }
        const auto [group, isNew] = groups.try_emplace(node.layer, result.size());
        if (isNew) {
            result.emplace_back();
            result.back().name = node.layer;
        }
        result[group->second].children.push_back(std::move(node));
    }
    nodes = std::move(result);
}

bool limitEdgeLength(Primitive &primitive, double maximum, std::size_t triangleBound)
{
    EdgeSplitter splitter(primitive, maximum);
    while (primitive.indices.size() / 3 < triangleBound) {
        if (!splitter.round())
            return true;
    }
    return false;
}

std::uint64_t triangleCount(const Mesh &mesh)
{
    std::uint64_t count = 0;
    for (const Primitive &primitive : mesh.primitives)
        count += primitive.mode == Primitive::Mode::Triangles ? primitive.indices.size() / 3 : 0;
    return count;
}

std::uint64_t triangleCount(const std::vector<Node> &nodes)
{
    std::uint64_t count = 0;
    for (const Node &node : nodes)
        count += (node.mesh ? triangleCount(*node.mesh) : 0) + triangleCount(node.children);
    return count;
}

bool hasGeometry(const std::vector<Node> &nodes)
{
    return std::any_of(nodes.begin(), nodes.end(), [](const Node &node) {
        return drawsSomething(node) || hasGeometry(node.children);
    });
}

std::size_t nodeCount(const std::vector<Node> &nodes)
{
    std::size_t count = nodes.size();
    for (const Node &node : nodes)
        count += nodeCount(node.children);
    return count;
}

} // namespace tnconvert
