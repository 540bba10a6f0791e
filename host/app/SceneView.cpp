#include "host/app/SceneView.h"

#include "host/app/SceneModel.h"
#include "host/scene/Scene.h"

#include <QtWidgets/QHeaderView>

SceneView::SceneView(Scene &scene, QWidget *parent)
    : QTreeView(parent)
    , m_scene(scene)
    , m_model(new SceneModel(scene, this))
{
    setModel(m_model);
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(true);
    setUniformRowHeights(true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(SceneModel::Name, QHeaderView::Stretch);
    header()->setSectionResizeMode(SceneModel::SourceFile, QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(SceneModel::Triangles, QHeaderView::ResizeToContents);
    connect(&scene, &Scene::selectionChanged, this, &SceneView::showSelection);
    connect(&scene, &Scene::changed, this, &SceneView::showSelection);
}

void SceneView::rowsAboutToBeRemoved(const QModelIndex &parent, int start, int end)
{
    // The base class now selects a neighbour, which nobody asked for. The scene has its say when
    // it is done.
    m_isFollowing = true;
    QTreeView::rowsAboutToBeRemoved(parent, start, end);
}

void SceneView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (m_isFollowing)
        return;
    std::vector<tndNode> nodes;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        nodes.push_back(m_model->nodeAt(index));
    m_scene.setSelection(nodes);
}

void SceneView::showSelection()
{
    // Also after the view's own choice: then nothing changes, as the root can be chosen in neither.
    QItemSelection selection;
    for (const tndNode &node : m_scene.selectedNodes(false)) {
        const QModelIndex index = m_model->indexOf(node);
        selection.select(index, index);
    }
    m_isFollowing = true;
    selectionModel()->select(selection,
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_isFollowing = false;
}
