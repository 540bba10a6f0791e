#pragma once

#include "platform/tndNode.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

class QVector3D;

namespace tnhost {

class Scene;

/// The scene as text, the same in every locale.
class SceneReport {
public:
    SceneReport() = delete;

    /// One line per node, indented by its depth: name, triangles and, in mm and in world
    /// coordinates, the corners of its bounding box, all with children. O(nodes * depth), and more
    /// where turned geometry must be measured vertex by vertex.
    static QStringList lines(const Scene &scene, const tndNode &top);
    /// A point in mm with three decimals; never a negative zero.
    static QString text(const QVector3D &point);
};

} // namespace tnhost
