#pragma once

#include "platform/tndNode.h"

#include <QtCore/QAbstractItemModel>
#include <QtGui/QIcon>

#include <unordered_map>

namespace tnhost {

class Scene;
class SceneNode;

/// The scene's tree, without its root, for item views. The scene must outlive the model.
class SceneModel : public QAbstractItemModel {
    Q_OBJECT

public:
    /// Shown holds an eye, open or closed.
    enum Column { Name, SourceFile, Triangles, Shown, ColumnCount };

    explicit SceneModel(const Scene &scene, QObject *parent = nullptr);

    /// Invalid for the root and for unknown nodes.
    QModelIndex indexOf(const tndNode &node) const;
    /// The root for the invalid index.
    tndNode nodeAt(const QModelIndex &index) const;

    QModelIndex index(int row, int column, const QModelIndex &parent) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent) const override;
    int columnCount(const QModelIndex &parent) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const SceneNode &node(const QModelIndex &index) const;
    QModelIndex indexOf(const SceneNode &node, int column) const;
    std::size_t triangles(const SceneNode &node) const;
    void refreshCounts(const SceneNode *node);

    const Scene &m_scene;
    const QIcon m_shownIcon;
    const QIcon m_hiddenIcon;
    /// By node id: views ask on every paint, and each count walks the subtree.
    mutable std::unordered_map<unsigned int, std::size_t> m_triangles;
};

} // namespace tnhost
