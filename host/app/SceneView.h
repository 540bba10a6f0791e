#pragma once

#include <QtWidgets/QTreeView>

class Scene;
class SceneModel;

/// Shows the scene's tree; its selection and the scene's are one.
class SceneView : public QTreeView {
    Q_OBJECT

public:
    /// The scene must outlive the view.
    explicit SceneView(Scene &scene, QWidget *parent = nullptr);

protected:
    void rowsAboutToBeRemoved(const QModelIndex &parent, int start, int end) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    void showSelection();

    Scene &m_scene;
    SceneModel *m_model; ///< owned as QObject child
    bool m_isFollowing = false; ///< the selection comes from the scene, or is about to
};
