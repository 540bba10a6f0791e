#pragma once

#include "platform/tndNode.h"

#include <QtCore/QVariantList>
#include <QtWidgets/QTreeView>

#include <vector>

namespace tnhost {

class Scene;
class SceneModel;

/// Shows the scene's tree; its selection and the scene's are one. Its actions make the context
/// menu; a click on the eye of a node hides or shows it.
class SceneView : public QTreeView {
    Q_OBJECT

public:
    /// The scene must outlive the view.
    explicit SceneView(Scene &scene, QWidget *parent = nullptr);

    /// The nodes that stand for the files of the selected nodes, each once, in the order of the
    /// tree.
    std::vector<tndNode> selectedFileNodes() const;

    /// Selects the node and scrolls to it.
    void showNode(const tndNode &node);

    /// Of all columns but the first, which takes what remains, and that of the eye.
    QVariantList columnWidths() const;
    /// A list that does not fit changes nothing, and neither does a width that makes no sense.
    void setColumnWidths(const QVariantList &widths);

protected:
    void rowsAboutToBeRemoved(const QModelIndex &parent, int start, int end) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    void onClicked(const QModelIndex &index);
    void createActions();
    void removeSelected();
    void showSelection();

    Scene &m_scene;
    SceneModel *m_model; ///< owned as QObject child
    bool m_isFollowing = false; ///< the selection comes from the scene, or is about to
    bool m_isTelling = false; ///< the scene learns the selection from the view
};

} // namespace tnhost
