#pragma once

#include "host/scene/Scene.h"
#include "host/view/EdgeFinder.h"
#include "host/view/MeshShape.h"
#include "host/view/NodePtr.h"
#include "host/view/PartNode.h"

#include <Inventor/nodes/SoMaterial.h>

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tnhost {

/// The scene as a scene graph, which follows its changes. What arrives is built in small steps from
/// the event loop, so that a large file does not stop the window. Instances share their shapes.
class SceneGraph : public QObject {
    Q_OBJECT

public:
    /// The scene must outlive the graph.
    explicit SceneGraph(const Scene &scene, QObject *parent = nullptr);
    ~SceneGraph() override;

    /// Of the whole scene; lives as long as the graph.
    SoNode *root() const { return m_root.get(); }
    /// Whether bodies show their edges, once these have been found.
    void showEdges(bool areShown);
    /// Builds at once what is still waiting, edges that are shown included.
    void finish();

signals:
    /// What is to be seen has changed.
    void changed();

private:
    void onInserted(const SceneNode *node);
    void onAboutToRemove(const SceneNode *node);
    void onVisibilityChanged();
    void buildSome();
    void build(const SceneNode &node);
    void addGeometry(PartNode &part, const SceneNode &node);
    const std::vector<NodePtr<MeshShape>> &shapesOf(const std::shared_ptr<const SceneMesh> &mesh);
    SoMaterial *materialOf(const std::shared_ptr<const SceneMaterial> &material);
    void showSelection();
    void onEdgesFound(const std::shared_ptr<const SceneMesh> &mesh,
                      const std::vector<EdgeFinder::Edges> &edges);
    void forget(const SceneNode &node);
    void dropUnused();

    const Scene &m_scene;
    NodePtr<PartNode> m_root; ///< of the scene's root
    std::unordered_map<unsigned int, PartNode *> m_parts; ///< by node; each belongs to its parent
    std::unordered_map<std::shared_ptr<const SceneMesh>, std::vector<NodePtr<MeshShape>>> m_shapes;
    std::unordered_map<std::shared_ptr<const SceneMaterial>, NodePtr<SoMaterial>> m_materials;
    NodePtr<SoMaterial> m_selectedLook;
    std::unordered_set<unsigned int> m_selected; ///< the parts that have it
    std::deque<unsigned int> m_waiting; ///< nodes to build, parents before their children
    QTimer m_step;
    bool m_showsEdges = false;
    EdgeFinder m_edgeFinder;
};

} // namespace tnhost
