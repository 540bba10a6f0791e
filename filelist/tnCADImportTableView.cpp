#include "filelist/tnCADImportTableView.h"

#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnFileImportDialog.h"
#include "filelist/tnHeaderView.h"
#include "platform/tnPlatform.h"
#include "records/tnFileTyp.h"

#include <QtCore/QPointer>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QTimer>

#include <algorithm>
#include <set>

namespace {

/// Milliseconds in which changes to the rows gather before the sorting is put right.
constexpr int repairDelay = 50;

} // namespace

tnCADImportTableView::tnCADImportTableView(QWidget *parent)
    : QTableView(parent)
{
    auto *header = new tnHeaderView<tnCADImportTableView>(model(), parent, this);
    // Whichever column a header names at first, enabling the sorting would sort by it.
    header->setSortIndicator(-1, header->sortIndicatorOrder());
    setHorizontalHeader(header);
    connect(header, &QHeaderView::sectionDoubleClicked, this, &tnCADImportTableView::sort);
    // This connection is older than that of the sorting, so it comes first: the proxy leaves equal
    // rows as it shows them, where the order of the source is wanted.
    connect(header, &QHeaderView::sortIndicatorChanged, this,
            [this, watched = QPointer<QAbstractItemModel>()]() mutable {
                if (model())
                    model()->sort(-1);
                if (watched != model())
                    watchRows();
                watched = model();
            });

    verticalHeader()->setDefaultSectionSize(static_cast<int>(tnPlatform::getTreeViewIconSizeY()));
    setWordWrap(false);
}

tnCADImportTableView::~tnCADImportTableView() = default;

tnCADImportFileModel *tnCADImportTableView::fileModel() const
{
    const auto *sorted = proxy();
    return sorted ? qobject_cast<tnCADImportFileModel *>(sorted->sourceModel()) : nullptr;
}

std::vector<int> tnCADImportTableView::sortedRows() const
{
    std::vector<int> rows;
    const auto *sorted = proxy();
    const int count = sorted ? sorted->rowCount() : 0;
    rows.reserve(static_cast<std::size_t>(count));
    for (int row = 0; row < count; ++row)
        rows.push_back(sorted->mapToSource(sorted->index(row, 0)).row());
    return rows;
}

void tnCADImportTableView::setLocked(bool locked)
{
    m_locked = locked;
    setContextMenuPolicy(locked ? Qt::PreventContextMenu : Qt::DefaultContextMenu);
    setEditTriggers(locked ? EditTriggers(NoEditTriggers)
                           : DoubleClicked | EditKeyPressed | AnyKeyPressed);
}

void tnCADImportTableView::onAdd()
{
    tnFileImportDialog chooser;
    if (chooser.exec() != QDialog::Accepted)
        return;
    const QStringList files = chooser.selectedImportFiles();
    if (auto *list = fileModel())
        list->addFiles(tnFileTyp::instance().supportedFiles(files));
}

void tnCADImportTableView::onRemove()
{
    auto *list = fileModel();
    if (m_locked || !list || !selectionModel()->hasSelection())
        return;
    std::set<int> rows;
    const QModelIndexList selected = selectedIndexes();
    for (const QModelIndex &index : selected) {
        if (index.isValid())
            rows.insert(proxy()->mapToSource(index).row());
    }
    list->removeFiles(rows);
}

void tnCADImportTableView::sort(int column)
{
    const bool ascending = horizontalHeader()->sortIndicatorOrder() == Qt::AscendingOrder;
    sortByColumn(column, ascending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void tnCADImportTableView::watchRows()
{
    // A sorted proxy moves a changed row by itself and puts new ones behind all their equals. The
    // parts of an assembly sort like the assembly, so they would be left behind or led astray.
    auto *repair = new QTimer(model());
    repair->setSingleShot(true);
    repair->setInterval(repairDelay);
    connect(repair, &QTimer::timeout, this, &tnCADImportTableView::bringPartsBack);
    connect(model(), &QAbstractItemModel::rowsInserted, repair, qOverload<>(&QTimer::start));
    connect(model(), &QAbstractItemModel::dataChanged, repair,
            [this, repair](const QModelIndex &first, const QModelIndex &last,
                           const QVector<int> &roles) {
                // Frames of the animation name their role, and change no order.
                const int column = proxy() ? proxy()->sortColumn() : -1;
                const bool sorts = first.column() <= column && column <= last.column();
                if (sorts && roles.isEmpty() && !repair->isActive())
                    repair->start();
            });
}

void tnCADImportTableView::bringPartsBack()
{
    const auto *files = fileModel();
    const int column = files ? proxy()->sortColumn() : -1;
    const auto isPart = [files](int row) {
        return !(files->index(row, 0).flags() & Qt::ItemIsSelectable);
    };
    const std::vector<int> rows = sortedRows();
    if (column < 0 || std::none_of(rows.begin(), rows.end(), isPart))
        return;
    const Qt::SortOrder order = proxy()->sortOrder();
    model()->sort(-1);
    model()->sort(column, order);
}

const QSortFilterProxyModel *tnCADImportTableView::proxy() const
{
    return qobject_cast<const QSortFilterProxyModel *>(model());
}
