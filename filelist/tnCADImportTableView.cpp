#include "filelist/tnCADImportTableView.h"

#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnFileImportDialog.h"
#include "filelist/tnHeaderView.h"
#include "platform/tnPlatform.h"
#include "records/tnFileTyp.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointer>
#include <QtCore/QScopeGuard>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QTimer>
#include <QtGui/QStandardItemModel>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <set>

namespace {

/// Milliseconds in which changes to the rows gather before the sorting is put right; with very many
/// rows so much more that the repairs take but a small part of the time.
constexpr int repairDelay = 50;
constexpr int repairShare = 10; // one tenth

/// From so many on, files are added behind the view's back.
constexpr int manyFiles = 1000;

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
    auto *repair = new QTimer(this);
    repair->setSingleShot(true);
    repair->setInterval(repairDelay);
    connect(repair, &QTimer::timeout, this, [this, repair] {
        QElapsedTimer duration;
        duration.start();
        restoreOrder();
        const auto share = static_cast<int>(duration.elapsed()) * repairShare;
        repair->setInterval(std::clamp(share, repairDelay, repairDelay * repairShare));
    });
    connect(header, &QHeaderView::sortIndicatorChanged, this,
            [this, repair, watched = QPointer<QAbstractItemModel>()]() mutable {
                if (model())
                    model()->sort(-1);
                if (watched == model())
                    return;
                if (watched)
                    watched->disconnect(repair);
                watched = model();
                if (watched)
                    watchRows(repair);
            });

    verticalHeader()->setDefaultSectionSize(static_cast<int>(tnPlatform::getTreeViewIconSizeY()));
    setWordWrap(false);
    setTabKeyNavigation(false); // else the keyboard never leaves a long list

    for (QObject *ancestor = parent; ancestor && !m_dialog; ancestor = ancestor->parent())
        m_dialog = qobject_cast<tnCADImportDialog *>(ancestor);
    createContextMenu();
}

tnCADImportTableView::~tnCADImportTableView() = default;

tnCADImportFileModel *tnCADImportTableView::fileModel() const
{
    const auto *sorted = proxy();
    return sorted ? qobject_cast<tnCADImportFileModel *>(sorted->sourceModel()) : nullptr;
}

void tnCADImportTableView::addFiles(const QStringList &paths)
{
    tnCADImportFileModel *const list = fileModel();
    if (!list)
        return;
    // The proxy renews its order for every row that comes, so that very many take their square. It
    // looks at an empty table meanwhile, of as many columns, for the header to keep what it shows.
    // What is selected would be lost.
    if (paths.size() < manyFiles || selectionModel()->hasSelection()) {
        list->addFiles(paths);
        return;
    }
    const int scrolled = verticalScrollBar()->value();
    const int current = proxy()->mapToSource(currentIndex()).row();
    {
        QStandardItemModel away(0, list->columnCount());
        const auto back = qScopeGuard([this, list] { proxy()->setSourceModel(list); });
        proxy()->setSourceModel(&away);
        list->addFiles(paths);
    }
    const QModelIndex again = proxy()->mapFromSource(list->index(current, 0));
    selectionModel()->setCurrentIndex(again, QItemSelectionModel::NoUpdate);
    executeDelayedItemsLayout(); // else there is nothing to scroll yet
    verticalScrollBar()->setValue(scrolled);
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
    // The view may go while the user chooses.
    const QPointer<tnCADImportTableView> self(this);
    tnFileImportDialog chooser;
    ++m_openChoosers;
    const bool isAccepted = chooser.exec() == QDialog::Accepted;
    if (!self)
        return;
    --m_openChoosers;
    if (!isAccepted || m_locked)
        return;
    const QStringList files = chooser.selectedImportFiles();
    addFiles(tnFileTyp::instance().supportedFiles(files));
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

void tnCADImportTableView::watchRows(QTimer *repair)
{
    // A sorted proxy moves a changed row by itself and puts new ones behind all their equals. The
    // parts of an assembly sort like the assembly, so they would be left behind or led astray.
    const auto startRepair = [repair] {
        if (!repair->isActive())
            repair->start();
    };
    connect(model(), &QAbstractItemModel::rowsInserted, repair, startRepair);
    connect(model(), &QAbstractItemModel::dataChanged, repair,
            [this, startRepair](const QModelIndex &first, const QModelIndex &last,
                                const QVector<int> &roles) {
                // Frames of the animation name their role, and change no order.
                const int column = proxy() ? proxy()->sortColumn() : -1;
                if (first.column() <= column && column <= last.column() && roles.isEmpty())
                    startRepair();
            });
}

/// Sorts again where rows have come to stand out of order; most changes leave nothing to do.
void tnCADImportTableView::restoreOrder()
{
    const auto *files = fileModel();
    const int column = files ? proxy()->sortColumn() : -1;
    if (column < 0 || isInOrder(*files, sortedRows(), column))
        return;
    const Qt::SortOrder order = proxy()->sortOrder();
    model()->sort(-1);
    model()->sort(column, order);
}

/// Whether the source rows stand by their keys, and equal ones as in the source.
bool tnCADImportTableView::isInOrder(const tnCADImportFileModel &files,
                                     const std::vector<int> &rows, int column) const
{
    const bool ascending = proxy()->sortOrder() == Qt::AscendingOrder;
    const auto keyOf = [&files, column](int row) {
        return files.index(row, column).data(tnCADImportFileModel::SortRole);
    };
    const auto compare = [](const QVariant &a, const QVariant &b) {
        if (a.type() == QVariant::String)
            return a.toString().compare(b.toString());
        return int(a.toLongLong() > b.toLongLong()) - int(a.toLongLong() < b.toLongLong());
    };
    return std::is_sorted(rows.begin(), rows.end(), [&](int a, int b) {
        const int keys = compare(keyOf(a), keyOf(b));
        return keys == 0 ? a < b : (keys < 0) == ascending;
    });
}

QSortFilterProxyModel *tnCADImportTableView::proxy() const
{
    return qobject_cast<QSortFilterProxyModel *>(model());
}
