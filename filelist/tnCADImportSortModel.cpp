#include "filelist/tnCADImportSortModel.h"

#include <QtCore/QSignalBlocker>

namespace {

/// Negative, 0 or positive, like strcmp. Keys are strings or whole numbers.
int compareKeys(const QVariant &a, const QVariant &b)
{
    if (a.userType() == QMetaType::QString)
        return a.toString().compare(b.toString());
    const qlonglong left = a.toLongLong();
    const qlonglong right = b.toLongLong();
    return static_cast<int>(left > right) - static_cast<int>(left < right);
}

} // namespace

tnCADImportSortModel::tnCADImportSortModel(QObject *parent)
    : QSortFilterProxyModel(parent)
{
    // It follows the base class's own handling of the change.
    connect(this, &QAbstractItemModel::dataChanged, this, &tnCADImportSortModel::sortPartsAlong);
}

tnCADImportSortModel::~tnCADImportSortModel()
{
    if (m_files)
        m_files->setBulkListener(nullptr);
}

void tnCADImportSortModel::setSourceModel(QAbstractItemModel *source)
{
    if (m_files)
        m_files->setBulkListener(nullptr);
    m_files = qobject_cast<tnCADImportFileModel *>(source);
    QSortFilterProxyModel::setSourceModel(source);
    if (m_files)
        m_files->setBulkListener(this);
}

// The base class renews its whole mapping, and a view its layout, for every row that comes or goes:
// very many rows would take the square of their number. So in a bulk the base class hears nothing
// from the source, and the views are in a reset. The mapping is made by the base class when
// somebody asks, and made anew when somebody asks after the next change.

void tnCADImportSortModel::beginBulk()
{
    beginResetModel();
    const QSignalBlocker quiet(this);
    QSortFilterProxyModel::setSourceModel(nullptr); // lets go of the source's signals
    // But goes on to answer from it: past the base class, which would listen again.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    QAbstractProxyModel::setSourceModel(m_files);
    m_isMappingOld = true;

    m_bulkChanges = std::make_unique<QObject>();
    const auto follow = [this](auto signal) {
        connect(m_files.data(), signal, m_bulkChanges.get(), [this] { m_isMappingOld = true; });
    };
    // Also before the change: others may hear of it earlier than this model.
    follow(&QAbstractItemModel::rowsAboutToBeInserted);
    follow(&QAbstractItemModel::rowsInserted);
    follow(&QAbstractItemModel::rowsAboutToBeRemoved);
    follow(&QAbstractItemModel::rowsRemoved);
    follow(&QAbstractItemModel::modelAboutToBeReset);
    follow(&QAbstractItemModel::modelReset);
    follow(&QAbstractItemModel::dataChanged);
}

void tnCADImportSortModel::endBulk()
{
    m_bulkChanges.reset();
    m_isMappingOld = false;
    {
        const QSignalBlocker quiet(this);
        QSortFilterProxyModel::setSourceModel(nullptr);
        QSortFilterProxyModel::setSourceModel(m_files);
    }
    endResetModel();
}

void tnCADImportSortModel::renewMapping() const
{
    if (!m_isMappingOld)
        return;
    m_isMappingOld = false;
    // What is shown stays the same, only the way to find it is forgotten.
    auto *const self = const_cast<tnCADImportSortModel *>(this);
    const QSignalBlocker quiet(self);
    self->invalidate();
}

QModelIndex tnCADImportSortModel::index(int row, int column, const QModelIndex &parent) const
{
    renewMapping();
    return QSortFilterProxyModel::index(row, column, parent);
}

int tnCADImportSortModel::rowCount(const QModelIndex &parent) const
{
    renewMapping();
    return QSortFilterProxyModel::rowCount(parent);
}

bool tnCADImportSortModel::hasChildren(const QModelIndex &parent) const
{
    renewMapping();
    return QSortFilterProxyModel::hasChildren(parent);
}

QModelIndex tnCADImportSortModel::mapFromSource(const QModelIndex &source) const
{
    renewMapping();
    return QSortFilterProxyModel::mapFromSource(source);
}

void tnCADImportSortModel::sort(int column, Qt::SortOrder order)
{
    renewMapping();
    QSortFilterProxyModel::sort(column, order);
}

bool tnCADImportSortModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const int keys = compareKeys(left.data(sortRole()), right.data(sortRole()));
    if (keys != 0)
        return keys < 0;
    // The base class asks the other way round when it sorts in descending order.
    return sortOrder() == Qt::AscendingOrder ? left.row() < right.row() : left.row() > right.row();
}

/// The base class moves the row that has changed. With an assembly the keys of its parts change.
void tnCADImportSortModel::sortPartsAlong(const QModelIndex &first, const QModelIndex &last,
                                          const QVector<int> &roles)
{
    // Changes of the look alone, as the frames of an animation, name their roles.
    const bool isSortKey = first.column() <= sortColumn() && sortColumn() <= last.column()
        && (roles.isEmpty() || roles.contains(sortRole()));
    if (!m_files || !isSortKey)
        return;
    for (int row = first.row(); row <= last.row(); ++row) {
        const int source = mapToSource(index(row, 0)).row();
        const int end = m_files->endOfParts(source);
        if (end > source + 1 && !isInOrder(source, end)) {
            invalidate();
            return;
        }
    }
}

/// Whether the source rows stand one behind the other, and between their neighbours.
bool tnCADImportSortModel::isInOrder(int firstSourceRow, int endSourceRow) const
{
    const int first = mapFromSource(m_files->index(firstSourceRow, 0)).row();
    const int end = first + endSourceRow - firstSourceRow;
    for (int row = first; row < end; ++row) {
        if (mapToSource(index(row, 0)).row() != firstSourceRow + row - first)
            return false;
    }
    const auto standsBefore = [this](int row, int next) {
        if (row < 0 || next >= rowCount())
            return true;
        const QModelIndex a = mapToSource(index(row, sortColumn()));
        const QModelIndex b = mapToSource(index(next, sortColumn()));
        return sortOrder() == Qt::AscendingOrder ? lessThan(a, b) : lessThan(b, a);
    };
    return standsBefore(first - 1, first) && standsBefore(end - 1, end);
}
