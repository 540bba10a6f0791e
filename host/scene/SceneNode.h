#pragma once

#include "host/scene/SceneFragment.h"

#include <QtCore/QString>
#include <QtGui/QMatrix4x4>

#include <memory>
#include <vector>

namespace tnhost {

/// One node of the scene's tree. Belongs to its parent; the Scene alone changes it.
class SceneNode {
public:
    unsigned int id() const { return m_id; }
    const QString &name() const { return m_name; }
    /// Relative to the parent; lengths in mm.
    const QMatrix4x4 &transform() const { return m_transform; }
    /// The file that this node stands for, as an absolute path; empty for all other nodes, those
    /// below such a node included.
    const QString &sourceFile() const { return m_sourceFile; }

    /// Whether it was hidden itself, together with all below it.
    bool isHidden() const { return m_isHidden; }
    /// Whether neither it nor a node above it is hidden. O(depth).
    bool isShown() const;

    /// The geometry at this node, or null.
    const std::shared_ptr<const SceneMesh> &mesh() const { return m_mesh; }
    /// One per primitive of the mesh; null for a primitive without material.
    const std::vector<std::shared_ptr<const SceneMaterial>> &materials() const
    {
        return m_materials;
    }

    /// Null for the root.
    const SceneNode *parent() const { return m_parent; }
    const std::vector<std::unique_ptr<SceneNode>> &children() const { return m_children; }
    /// Position among the siblings, 0 for the root.
    int row() const { return m_row; }

private:
    friend class Scene;

    SceneNode() = default;

    unsigned int m_id = 0;
    QString m_name;
    QMatrix4x4 m_transform;
    QString m_sourceFile;
    bool m_isHidden = false;
    std::shared_ptr<const SceneMesh> m_mesh;
    std::vector<std::shared_ptr<const SceneMaterial>> m_materials;
    SceneNode *m_parent = nullptr;
    int m_row = 0;
    std::vector<std::unique_ptr<SceneNode>> m_children;
};

} // namespace tnhost
