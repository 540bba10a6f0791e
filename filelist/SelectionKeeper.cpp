#include "filelist/SelectionKeeper.h"

#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnCADImportTableView.h"

#include <QtCore/QItemSelection>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <utility>

namespace {

bool isSelectable(const QModelIndex &index)
{
    return (index.flags() & Qt::ItemIsSelectable) != 0;
}

} // namespace

SelectionKeeper::SelectionKeeper(tnCADImportTableView *view)
    : QObject(view)
    , m_view(view)
{
    connect(view->model(), &QAbstractItemModel::modelAboutToBeReset, this, &SelectionKeeper::save);
    connect(view->model(), &QAbstractItemModel::modelReset, this, &SelectionKeeper::restore);
}

void SelectionKeeper::save()
{
    QItemSelectionModel &selection = *m_view->selectionModel();
    const QModelIndex current = selection.currentIndex();
    m_scrolled = m_view->verticalScrollBar()->value();
    if (!selection.hasSelection() && !current.isValid())
        return;

    const QAbstractItemModel &rows = *m_view->model();
    const QStringList paths = m_view->fileModel()->fileNames(false);
    const std::vector<int> sourceRows = m_view->sortedRows();
    const auto pathOf = [&](int row) {
        return paths.at(sourceRows.at(static_cast<std::size_t>(row)));
    };
    const QItemSelection selected = selection.selection();
    for (const QItemSelectionRange &range : selected) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (isSelectable(rows.index(row, 0)))
                m_selected.insert(pathOf(row));
        }
    }
    if (current.isValid()) {
        m_current = pathOf(current.row());
        m_currentRow = current.row();
        m_currentColumn = current.column();
    }
    selection.clearSelection(); // a reset would drop it without a signal
}

void SelectionKeeper::restore()
{
    const QSet<QString> wanted = std::exchange(m_selected, {});
    const QString wantedCurrent = std::exchange(m_current, {});
    if (wanted.isEmpty() && wantedCurrent.isEmpty())
        return;

    const QAbstractItemModel &rows = *m_view->model();
    const int lastColumn = rows.columnCount() - 1;
    const QStringList paths = m_view->fileModel()->fileNames(false);
    QItemSelection selected;
    int currentRow = -1;
    int row = 0;
    for (const int sourceRow : m_view->sortedRows()) {
        const QString &path = paths.at(sourceRow);
        if (currentRow < 0 && path == wantedCurrent)
            currentRow = row;
        if (wanted.contains(path) && isSelectable(rows.index(row, 0))) {
            const bool isNext = !selected.isEmpty() && selected.last().bottom() == row - 1;
            const int first = isNext ? selected.takeLast().top() : row;
            selected.append({rows.index(first, 0), rows.index(row, lastColumn)});
        }
        ++row;
    }
    // Where the current file has gone, the next one takes its place.
    if (currentRow < 0 && !wantedCurrent.isEmpty())
        currentRow = std::min(m_currentRow, row - 1);
    m_view->selectionModel()->select(selected, QItemSelectionModel::Select);
    m_view->selectionModel()->setCurrentIndex(rows.index(currentRow, m_currentColumn),
                                              QItemSelectionModel::NoUpdate);
    m_view->verticalScrollBar()->setValue(m_scrolled);
}
