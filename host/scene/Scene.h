#pragma once

#include "host/scene/BoundingBox.h"
#include "host/scene/SceneFragment.h"
#include "host/scene/SceneNode.h"
#include "platform/tndNode.h"
#include "platform/tndSceneImportSettings.h"

#include <QtCore/QObject>

#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tnhost {

/// The host's scene: a tree of nodes in right-handed coordinates and mm, with z upwards. Ids start
/// with 1, the root, and are never given twice. GUI thread only.
///
/// Every operation that takes a node answers for null and unknown nodes as it says, and costs
/// O(depth) unless it says otherwise.
class Scene : public QObject {
    Q_OBJECT

public:
    explicit Scene(QObject *parent = nullptr);
    ~Scene() override;

    /// Adds the file's content as last child of the parent (null or unknown: the root) and gives
    /// the node that stands for the file, named after it. A null fragment adds nothing and gives
    /// null. Of the settings CenterInOrigin, PutOnGround (lowest z at 0, in world coordinates) and
    /// MergeMaterials (equal materials of the scene are shared) count. O(nodes of the fragment).
    tndNode addFragment(const std::shared_ptr<const SceneFragment> &fragment, const tndNode &parent,
                        const QString &sourceFile, const tndSceneImportSettings &settings);

    /// Puts the file's content in the place of sourceNode(node), or of the node itself when it
    /// comes from no file: same parent and position, a new id, and with PreserveTransformations
    /// the old node's transform. Files that had been added below the old node move along and stay
    /// where they are in the world. Gives null and changes nothing for the root, an unknown node
    /// and a null fragment.
    tndNode replaceNode(const tndNode &node, const std::shared_ptr<const SceneFragment> &fragment,
                        const QString &sourceFile, const tndSceneImportSettings &settings);

    /// Removes the node with all its children. False for the root and for an unknown node.
    bool removeNode(const tndNode &node);
    /// Removes them all as one operation; the root and unknown nodes are left out. Neighbours go
    /// together, so this costs O(their siblings) and not a walk through the siblings for each.
    void removeNodes(const std::vector<tndNode> &nodes);

    /// A handle that no node has and no node will ever have.
    tndNode takeUnusedHandle();

    tndNode root() const;
    bool contains(const tndNode &node) const;
    /// Null for an unknown node. Valid until the node is removed.
    const SceneNode *find(const tndNode &node) const;

    /// The nearest node upwards, from the node itself on, that stands for a file; else null.
    tndNode sourceNode(const tndNode &node) const;
    /// The file of sourceNode(node), else empty.
    QString sourceFile(const tndNode &node) const;

    /// From the node's coordinates into those of the world. Identity for an unknown node.
    QMatrix4x4 worldTransform(const tndNode &node) const;
    /// In world coordinates, children included; empty for an unknown node. At most O(vertices).
    BoundingBox boundingBox(const tndNode &node) const;
    /// Children included, each instance counted. O(nodes below).
    std::size_t triangleCount(const tndNode &node) const;
    /// All nodes but the root.
    std::size_t nodeCount() const;
    /// The different materials in use. O(nodes).
    std::vector<std::shared_ptr<const SceneMaterial>> materials() const;

    /// In the order of the tree. With topmostOnly without those below another selected one.
    std::vector<tndNode> selectedNodes(bool topmostOnly) const;
    /// Unknown nodes are left out.
    void setSelection(const std::vector<tndNode> &nodes);

    /// Of all that is shown, in world coordinates. At most O(vertices).
    BoundingBox shownBox() const;
    /// Unknown nodes are left out, here and below, and the root is always shown.
    void hide(const std::vector<tndNode> &nodes);
    /// Shows them with all that is below and above them.
    void show(const std::vector<tndNode> &nodes);
    /// Shows them and what is shown below them, and nothing else. O(nodes).
    void isolate(const std::vector<tndNode> &nodes);

signals:
    // For item models: subtrees are built before they are inserted and whole until they have been
    // removed. Who receives these must not change the tree.
    void aboutToInsert(const SceneNode *parent, int row);
    void inserted(const SceneNode *node);
    void aboutToRemoveRows(const SceneNode *parent, int first, int last);
    /// For each of the rows, behind aboutToRemoveRows().
    void aboutToRemove(const SceneNode *node);
    void rowsRemoved(const SceneNode *parent);

    /// Once after each operation that changed the tree.
    void changed();
    void selectionChanged();
    /// What is hidden has changed, by other means than by what comes and goes.
    void visibilityChanged();

private:
    std::unique_ptr<SceneNode> buildFile(const SceneFragment &fragment, const QString &sourceFile,
                                         const tndSceneImportSettings &settings);
    std::unique_ptr<SceneNode>
    buildNode(const SceneFragment &fragment, int index,
              const std::vector<std::shared_ptr<const SceneMaterial>> &materials);
    /// Centres the new node, or puts it on the ground, as the settings say.
    static void applyPlacement(SceneNode &node, const QMatrix4x4 &parentWorld,
                               const tndSceneImportSettings &settings);
    /// The topmost files that were added somewhere below the file.
    static std::vector<SceneNode *> filesBelow(SceneNode &file);
    static void showBelow(SceneNode &node);
    /// Tells the children from that row on who and where they are.
    static void adopt(SceneNode &parent, int firstRow);
    SceneNode *insert(std::unique_ptr<SceneNode> node, SceneNode &parent, int row);
    std::unique_ptr<SceneNode> take(SceneNode &node);
    std::vector<std::unique_ptr<SceneNode>> takeRows(SceneNode &parent, int first, int last);
    void remember(SceneNode &node);
    /// Gives whether a selected node was among them.
    bool forget(const SceneNode &node);

    std::unique_ptr<SceneNode> m_root;
    std::unordered_map<unsigned int, SceneNode *> m_nodes;
    std::unordered_set<unsigned int> m_selection;
    unsigned int m_lastId = 0;
};

} // namespace tnhost
