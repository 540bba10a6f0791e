#include "filelist/tnCADImportTableView.h"

#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnFileImportDialog.h"
#include "filelist/tnHeaderView.h"
#include "platform/tnPlatform.h"
#include "records/tnFileTyp.h"

#include <QtCore/QPointer>
#include <QtCore/QSortFilterProxyModel>

#include <set>

tnCADImportTableView::tnCADImportTableView(QWidget *parent)
    : QTableView(parent)
{
    auto *header = new tnHeaderView<tnCADImportTableView>(model(), parent, this);
    // Whichever column a header names at first, enabling the sorting would sort by it.
    header->setSortIndicator(-1, header->sortIndicatorOrder());
    setHorizontalHeader(header);
    connect(header, &QHeaderView::sectionDoubleClicked, this, &tnCADImportTableView::sort);
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
    if (m_locked)
        return;
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
    if (auto *list = fileModel())
        list->addFiles(tnFileTyp::instance().supportedFiles(chooser.selectedImportFiles()));
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

QSortFilterProxyModel *tnCADImportTableView::proxy() const
{
    return qobject_cast<QSortFilterProxyModel *>(model());
}
