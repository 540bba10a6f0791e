#pragma once

#include "host/scene/BoundingBox.h"

#include <QtCore/QString>
#include <QtGui/QMatrix4x4>
#include <QtGui/QVector3D>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace tnhost {

/// A surface's look, after the metallic-roughness model. All values lie between 0 and 1.
struct SceneMaterial {
    QString name;
    std::array<float, 4> baseColor{1.0F, 1.0F, 1.0F, 1.0F}; ///< linear RGBA
    float metallic = 1.0F;
    float roughness = 1.0F;
};

inline bool operator==(const SceneMaterial &a, const SceneMaterial &b)
{
    return a.name == b.name && a.baseColor == b.baseColor && a.metallic == b.metallic
        && a.roughness == b.roughness;
}

/// One run of triangles or lines of one material.
struct ScenePrimitive {
    enum class Kind { Triangles, Lines };

    Kind kind = Kind::Triangles;
    std::vector<QVector3D> positions; ///< mm
    std::vector<QVector3D> normals; ///< one per position, or none at all
    std::vector<std::uint32_t> indices; ///< into positions; three per triangle, two per line
    int material = -1; ///< into SceneFragment::materials; -1: none
};

/// Geometry that any number of nodes may show.
struct SceneMesh {
    QString name;
    std::vector<ScenePrimitive> primitives;
    BoundingBox box; ///< of all positions, in the mesh's own coordinates
    std::size_t triangles = 0;
};

/// What one file turns into: built off the GUI thread, unchanged from then on, so it may be shared
/// between threads.
struct SceneFragment {
    struct Node {
        QString name;
        QMatrix4x4 transform; ///< relative to the parent; lengths in mm
        int mesh = -1; ///< into meshes; -1: none
        std::vector<int> children; ///< into nodes
    };

    std::vector<SceneMaterial> materials;
    std::vector<std::shared_ptr<const SceneMesh>> meshes;
    std::vector<Node> nodes; ///< each is the child of at most one other, and none of itself
    std::vector<int> roots; ///< into nodes
};

} // namespace tnhost
