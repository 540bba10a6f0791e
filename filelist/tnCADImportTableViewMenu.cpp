// The context menu of the list.

#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "filelist/tnCADImportTableView.h"
#include "logbook/logbookPath.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QUrl>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QDesktopServices>
#include <QtWidgets/QMenu>

void tnCADImportTableView::createContextMenu()
{
    m_contextMenu = new QMenu(this);
    m_reimportAction = m_contextMenu->addAction(tr("Reimport Missing Components"), this,
                                                &tnCADImportTableView::onReimport);
    m_contextMenu->addSeparator();
    m_contextMenu->addAction(tr("Add Files"), this, &tnCADImportTableView::onAdd);
    m_removeAction = m_contextMenu->addAction(
        tr("Remove Selected Files"), this, &tnCADImportTableView::onRemove, QKeySequence::Delete);
    m_removeImportedAction = m_contextMenu->addAction(tr("Clear Imported Files"), this,
                                                      &tnCADImportTableView::onRemoveImported);
    m_contextMenu->addSeparator();
    m_showLogAction =
        m_contextMenu->addAction(tr("Show Import Log"), this, &tnCADImportTableView::onShowLog);
    m_showFilesAction = m_contextMenu->addAction(tr("Show File in Explorer"), this,
                                                 &tnCADImportTableView::onShowFiles);

    // The key is the list's: pressed in another field of the window it must not cost any files.
    m_removeAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(m_removeAction);
}

void tnCADImportTableView::updateContextMenu()
{
    const auto *list = fileModel();
    const bool isOne =
        list && selectionModel()->selectedRows(tnCADImportFileModel::FileColumn).size() == 1;
    const int state = isOne ? list->stateOfRow(currentSourceRow()) : -1;

    m_reimportAction->setVisible(state == static_cast<int>(ImportState::Incomplete));
    m_removeAction->setEnabled(list && selectionModel()->hasSelection());
    m_removeImportedAction->setEnabled(
        list && list->countFilesInState(ImportState::Succeeded, false) > 0);
    m_showLogAction->setEnabled(m_dialog && m_dialog->hasLogbookEntries());
    m_showFilesAction->setEnabled(isOne);
}

void tnCADImportTableView::contextMenuEvent(QContextMenuEvent *event)
{
    updateContextMenu();
    m_contextMenu->exec(event->globalPos());
}

void tnCADImportTableView::onRemoveImported()
{
    if (auto *list = fileModel(); list && !m_locked)
        list->removeFilesInState(ImportState::Succeeded, false);
}

void tnCADImportTableView::onShowFiles()
{
    if (const auto *list = fileModel(); list && !list->isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(list->directoryOfRow(currentSourceRow())));
}

void tnCADImportTableView::onShowLog()
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(defaultOutputDirectory()));
}

void tnCADImportTableView::onReimport()
{
    if (const auto *list = fileModel(); list && !list->isEmpty() && m_dialog)
        m_dialog->reimportRow(currentSourceRow());
}

/// The source row of the first selected index; 0, which is there unless the list is empty, without
/// a selection.
int tnCADImportTableView::currentSourceRow() const
{
    const QModelIndexList selected = selectedIndexes();
    return selected.isEmpty() ? 0 : proxy()->mapToSource(selected.first()).row();
}
