#include "host/app/SceneView.h"

#include "host/app/SceneModel.h"
#include "host/scene/Scene.h"
#include "host/services/HostIcons.h"

#include <QtWidgets/QAction>
#include <QtWidgets/QHeaderView>

#include <unordered_set>

namespace tnhost {

namespace {

constexpr int leastWidth = 50;
constexpr int eyeWidth = 34;
constexpr int mostWidth = 2000;
/// In characters, from the second column on.
constexpr int usualWidths[] = {14, 10};

} // namespace

SceneView::SceneView(Scene &scene, QWidget *parent)
    : QTreeView(parent)
    , m_scene(scene)
    , m_model(new SceneModel(scene, this))
{
    setModel(m_model);
    // What has been imported below a collapsed node would seem not to have come.
    connect(m_model, &QAbstractItemModel::rowsInserted, this, [this](QModelIndex above) {
        for (; above.isValid(); above = above.parent())
            expand(above);
    });
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(true);
    setUniformRowHeights(true);
    setTextElideMode(Qt::ElideMiddle); // names of parts and files differ at their ends
    header()->setStretchLastSection(false);
    header()->setSectionsMovable(false);
    header()->setMinimumSectionSize(eyeWidth);
    header()->setSectionResizeMode(SceneModel::Name, QHeaderView::Stretch);
    int column = SceneModel::SourceFile;
    for (const int width : usualWidths)
        header()->resizeSection(column++, width * fontMetrics().averageCharWidth());
    header()->setSectionResizeMode(SceneModel::Shown, QHeaderView::Fixed);
    header()->resizeSection(SceneModel::Shown, eyeWidth);
    createActions();
    connect(this, &QTreeView::clicked, this, &SceneView::onClicked);
    connect(&scene, &Scene::visibilityChanged, viewport(), qOverload<>(&QWidget::update));
    connect(&scene, &Scene::selectionChanged, this, [this] {
        showSelection();
        const std::vector<tndNode> selected = m_scene.selectedNodes(false);
        if (!m_isTelling && !selected.empty())
            scrollTo(m_model->indexOf(selected.front())); // opens what lies above, too
    });
    connect(&scene, &Scene::changed, this, &SceneView::showSelection);
}

std::vector<tndNode> SceneView::selectedFileNodes() const
{
    std::vector<tndNode> result;
    // Those below one file need not follow one another: other files may have been added there.
    std::unordered_set<unsigned int> seen;
    for (const tndNode &node : m_scene.selectedNodes(false)) {
        const tndNode file = m_scene.sourceNode(node);
        if (!file.isNull() && seen.insert(file.id()).second)
            result.push_back(file);
    }
    return result;
}

void SceneView::showNode(const tndNode &node)
{
    m_scene.setSelection({node});
    scrollTo(m_model->indexOf(node));
}

QVariantList SceneView::columnWidths() const
{
    QVariantList widths;
    for (int column = SceneModel::SourceFile; column < SceneModel::Shown; ++column)
        widths << columnWidth(column);
    return widths;
}

void SceneView::setColumnWidths(const QVariantList &widths)
{
    if (widths.size() != SceneModel::Shown - SceneModel::SourceFile)
        return;
    int column = SceneModel::SourceFile;
    for (const QVariant &width : widths) {
        if (width.toInt() >= leastWidth && width.toInt() <= mostWidth)
            setColumnWidth(column, width.toInt());
        ++column;
    }
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
    m_isTelling = true;
    m_scene.setSelection(nodes);
    m_isTelling = false;
}

void SceneView::onClicked(const QModelIndex &index)
{
    if (index.column() != SceneModel::Shown)
        return;
    const tndNode node = m_model->nodeAt(index);
    if (m_scene.find(node)->isHidden())
        m_scene.show({node});
    else
        m_scene.hide({node});
}

void SceneView::createActions()
{
    setContextMenuPolicy(Qt::ActionsContextMenu);
    const auto add = [this](const QString &text, const QKeySequence &shortcut, auto slot) {
        auto *action = new QAction(text, this);
        // Not the whole window's: in the log these keys are about the text.
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, slot);
        addAction(action);
        return action;
    };
    QAction *remove = add(tr("Re&move"), QKeySequence::Delete, &SceneView::removeSelected);
    remove->setIcon(HostIcons::icon(QStringLiteral("Remove")));
    auto *separator = new QAction(this);
    separator->setSeparator(true);
    addAction(separator);
    const QList<QAction *> all = {
        add(tr("Select &All"), QKeySequence::SelectAll, &QTreeView::selectAll),
        add(tr("&Expand All"), {}, &QTreeView::expandAll),
        add(tr("&Collapse All"), {}, &QTreeView::collapseAll)};
    const auto update = [this, remove, all] {
        remove->setEnabled(!m_scene.selectedNodes(true).empty());
        for (QAction *action : all)
            action->setEnabled(m_scene.nodeCount() > 0);
    };
    connect(&m_scene, &Scene::selectionChanged, this, update);
    connect(&m_scene, &Scene::changed, this, update);
    update();
}

void SceneView::removeSelected()
{
    const std::vector<tndNode> nodes = m_scene.selectedNodes(true);
    m_scene.setSelection({}); // at once, and not bit by bit
    m_scene.removeNodes(nodes);
}

void SceneView::showSelection()
{
    if (m_isTelling)
        return;
    // By ranges: single rows take their square.
    QItemSelection selection;
    QModelIndex first;
    QModelIndex last;
    const auto addRange = [&] {
        if (last.isValid())
            selection.append(QItemSelectionRange(first, last));
    };
    for (const tndNode &node : m_scene.selectedNodes(false)) {
        const QModelIndex index = m_model->indexOf(node);
        if (!last.isValid() || index != last.siblingAtRow(last.row() + 1)) {
            addRange();
            first = index;
        }
        last = index;
    }
    addRange();
    m_isFollowing = true;
    selectionModel()->select(selection,
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_isFollowing = false;
}

} // namespace tnhost
