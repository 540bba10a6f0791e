#pragma once

#include "host/scene/BoundingBox.h"

#include <QtGui/QMatrix4x4>

namespace tnhost {

class SceneNode;

/// Where nodes lie in the world, and how much room they take.
class NodeBounds {
public:
    NodeBounds() = delete;

    /// From the node's own coordinates to those of the world; the identity without a node.
    /// O(depth).
    static QMatrix4x4 worldOf(const SceneNode *node);

    /// Adds all geometry at the node and below it, in mm; without what is hidden below it if that
    /// does not count. O(nodes), and O(vertices) where a transformation turns the axes.
    static void addSubtree(BoundingBox &box, const SceneNode &node, const QMatrix4x4 &parentWorld,
                           bool withHidden = true);
};

} // namespace tnhost
