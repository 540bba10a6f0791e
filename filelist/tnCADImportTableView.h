#pragma once

#include <QtWidgets/QTableView>

#include <vector>

class QAction;
class QMenu;
class QSortFilterProxyModel;
class tnCADImportDialog;
class tnCADImportFileModel;

/// The list of files: a table over a sorting proxy over tnCADImportFileModel. Its rows stand in the
/// order in which they came until the user sorts by a header section. Rows in the interface are
/// source rows. Its context menu asks the dialog, the first one among its parents, for what goes
/// beyond the list; without a dialog it offers the rest.
class tnCADImportTableView : public QTableView {
    Q_OBJECT

public:
    explicit tnCADImportTableView(QWidget *parent = nullptr);
    ~tnCADImportTableView() override;

    /// The model below the proxy, null until both are set. Not owned.
    tnCADImportFileModel *fileModel() const;
    /// The source rows in the order of the view. O(n).
    std::vector<int> sortedRows() const;

    /// Whether the user is choosing files to add.
    bool isChoosing() const { return m_openChoosers > 0; }

    /// A locked view lets nobody edit, add or remove rows, or open its menu.
    void setLocked(bool locked);

public Q_SLOTS:
    /// Lets the user choose files and adds those that can be imported, unless the view is locked,
    /// or becomes so meanwhile.
    void onAdd();
    /// Removes the selected rows, and with an assembly its parts.
    void onRemove();
    /// Removes the rows of what has been imported.
    void onRemoveImported();
    /// Opens the folder of the first selected row, or of the first row, in the system's file
    /// browser.
    void onShowFiles();
    /// Opens the folder of the logbook in the system's file browser.
    void onShowLog();
    /// Imports the first selected row, or the first row, again in the place of its scene node.
    void onReimport();

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;

protected Q_SLOTS:
    /// Sorts by the column, in the opposite of the order that the header shows.
    void sort(int column);

private:
    void createContextMenu();
    void updateContextMenu();
    int currentSourceRow() const;
    QSortFilterProxyModel *proxy() const;

    tnCADImportDialog *m_dialog = nullptr; ///< not owned; outlives its child
    QMenu *m_contextMenu = nullptr; ///< owned as QObject child, and its actions with it
    QAction *m_removeAction = nullptr;
    QAction *m_showLogAction = nullptr;
    QAction *m_removeImportedAction = nullptr;
    QAction *m_showFilesAction = nullptr;
    QAction *m_reimportAction = nullptr;
    bool m_locked = false;
    int m_openChoosers = 0;
};
