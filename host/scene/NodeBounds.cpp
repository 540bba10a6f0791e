#include "host/scene/NodeBounds.h"

#include "host/scene/SceneNode.h"

#include <cmath>

namespace tnhost {

namespace {

/// Whether the matrix maps boxes to boxes, so that a box's image is that of its corners.
bool keepsBoxes(const QMatrix4x4 &matrix)
{
    constexpr float negligible = 1e-5F;
    for (int row = 0; row < 3; ++row) {
        const float length = matrix.row(row).toVector3D().length();
        int used = 0;
        for (int column = 0; column < 3; ++column) {
            if (std::abs(matrix(row, column)) > negligible * length)
                ++used;
        }
        if (used > 1)
            return false;
    }
    return true;
}

void addMesh(BoundingBox &box, const SceneMesh &mesh, const QMatrix4x4 &world)
{
    if (mesh.box.isEmpty())
        return;
    if (keepsBoxes(world)) {
        box.add(world.map(mesh.box.min));
        box.add(world.map(mesh.box.max));
        return;
    }
    for (const ScenePrimitive &primitive : mesh.primitives) {
        for (const QVector3D &position : primitive.positions)
            box.add(world.map(position));
    }
}

} // namespace

QMatrix4x4 NodeBounds::worldOf(const SceneNode *node)
{
    QMatrix4x4 result;
    for (; node; node = node->parent())
        result = node->transform() * result;
    return result;
}

void NodeBounds::addSubtree(BoundingBox &box, const SceneNode &node, const QMatrix4x4 &parentWorld,
                            bool withHidden)
{
    const QMatrix4x4 world = parentWorld * node.transform();
    if (node.mesh())
        addMesh(box, *node.mesh(), world);
    for (const auto &child : node.children()) {
        if (withHidden || !child->isHidden())
            addSubtree(box, *child, world, withHidden);
    }
}

} // namespace tnhost
