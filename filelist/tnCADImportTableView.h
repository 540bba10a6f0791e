#pragma once

#include <QtWidgets/QTableView>

#include <vector>

class QSortFilterProxyModel;
class QTimer;
class tnCADImportFileModel;

/// The list of files: a table over a sorting proxy over tnCADImportFileModel. Its rows stand in the
/// order in which they came until the user sorts by a header section. Rows in the interface are
/// source rows.
class tnCADImportTableView : public QTableView {
    Q_OBJECT

public:
    explicit tnCADImportTableView(QWidget *parent = nullptr);
    ~tnCADImportTableView() override;

    /// The model below the proxy, null until both are set. Not owned.
    tnCADImportFileModel *fileModel() const;
    /// The source rows in the order of the view. O(n).
    std::vector<int> sortedRows() const;

    /// A locked view lets nobody edit, remove rows, or open its menu.
    void setLocked(bool locked);

public Q_SLOTS:
    /// Lets the user choose files and adds those that can be imported.
    void onAdd();
    /// Removes the selected rows, and with an assembly its parts.
    void onRemove();

protected Q_SLOTS:
    /// Sorts by the column, in the opposite of the order that the header shows.
    void sort(int column);

private:
    void watchRows(QTimer *repair);
    void restoreOrder();
    bool isInOrder(const std::vector<int> &rows, int column) const;
    const QSortFilterProxyModel *proxy() const;

    bool m_locked = false;
};
