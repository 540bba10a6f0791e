#include "host/app/SceneModel.h"

#include "host/scene/Scene.h"
#include "host/services/HostIcons.h"

#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>

namespace tnhost {

SceneModel::SceneModel(const Scene &scene, QObject *parent)
    : QAbstractItemModel(parent)
    , m_scene(scene)
    , m_shownIcon(HostIcons::icon(QStringLiteral("Shown")))
    , m_hiddenIcon(HostIcons::icon(QStringLiteral("Hidden")))
{
    connect(&scene, &Scene::aboutToInsert, this, [this](const SceneNode *place, int row) {
        beginInsertRows(indexOf(*place, Name), row, row);
    });
    connect(&scene, &Scene::inserted, this, [this](const SceneNode *inserted) {
        endInsertRows();
        refreshCounts(inserted->parent());
    });
    connect(&scene, &Scene::aboutToRemoveRows, this,
            [this](const SceneNode *place, int first, int last) {
                beginRemoveRows(indexOf(*place, Name), first, last);
            });
    connect(&scene, &Scene::rowsRemoved, this, [this](const SceneNode *place) {
        endRemoveRows();
        refreshCounts(place);
    });
}

QModelIndex SceneModel::indexOf(const tndNode &handle) const
{
    const SceneNode *found = m_scene.find(handle);
    return found ? indexOf(*found, Name) : QModelIndex();
}

tndNode SceneModel::nodeAt(const QModelIndex &index) const
{
    return tndNode(node(index).id());
}

QModelIndex SceneModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const auto &children = node(parent).children();
    return createIndex(row, column,
                       const_cast<SceneNode *>(children[static_cast<std::size_t>(row)].get()));
}

QModelIndex SceneModel::parent(const QModelIndex &child) const
{
    const SceneNode *parent = child.isValid() ? node(child).parent() : nullptr;
    return parent ? indexOf(*parent, Name) : QModelIndex();
}

int SceneModel::rowCount(const QModelIndex &parent) const
{
    return parent.column() > 0 ? 0 : static_cast<int>(node(parent).children().size());
}

int SceneModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QVariant SceneModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const SceneNode &at = node(index);
    switch (index.column()) {
    case Name:
        if (role == Qt::DisplayRole)
            return at.name().isEmpty() ? tr("(no name)") : at.name();
        break;
    case SourceFile:
        if (role == Qt::DisplayRole)
            return QFileInfo(at.sourceFile()).fileName();
        if (role == Qt::ToolTipRole)
            return at.sourceFile();
        break;
    case Triangles:
        if (role == Qt::DisplayRole)
            return QLocale().toString(static_cast<qulonglong>(triangles(at)));
        if (role == Qt::TextAlignmentRole)
            return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
        break;
    case Shown:
        if (role == Qt::DecorationRole)
            return at.isHidden() ? m_hiddenIcon : m_shownIcon;
        if (role == Qt::ToolTipRole)
            return at.isHidden() ? tr("Click to show it") : tr("Click to hide it");
        break;
    default:
        break;
    }
    if (role == Qt::ForegroundRole && !at.isShown())
        return QGuiApplication::palette().brush(QPalette::PlaceholderText);
    return {};
}

QVariant SceneModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole && section == Triangles)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter); // as the numbers below
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return tr("Name");
    case SourceFile:
        return tr("Source file");
    case Triangles:
        return tr("Triangles");
    default:
        return {};
    }
}

const SceneNode &SceneModel::node(const QModelIndex &index) const
{
    return index.isValid() ? *static_cast<const SceneNode *>(index.internalPointer())
                           : *m_scene.find(m_scene.root());
}

QModelIndex SceneModel::indexOf(const SceneNode &node, int column) const
{
    return node.parent() ? createIndex(node.row(), column, const_cast<SceneNode *>(&node))
                         : QModelIndex();
}

std::size_t SceneModel::triangles(const SceneNode &node) const
{
    const auto known = m_triangles.find(node.id());
    if (known != m_triangles.end())
        return known->second;
    return m_triangles[node.id()] = m_scene.triangleCount(tndNode(node.id()));
}

void SceneModel::refreshCounts(const SceneNode *node)
{
    for (; node && node->parent(); node = node->parent()) {
        m_triangles.erase(node->id());
        const QModelIndex index = indexOf(*node, Triangles);
        emit dataChanged(index, index, {Qt::DisplayRole});
    }
}

} // namespace tnhost
