#pragma once

#include "filelist/tnCADImportFileModel.h"

#include <QtCore/QPointer>
#include <QtCore/QSortFilterProxyModel>

#include <memory>

/// The rows of tnCADImportFileModel in the order in which the view shows them. Rows with equal keys
/// stand in source order, whichever way a column is sorted, and so the parts of an assembly always
/// stand behind it. A change of many rows at once costs one reset of this model, O(n log n) when
/// sorted; who asks in the middle of it gets the rows of that moment.
class tnCADImportSortModel : public QSortFilterProxyModel,
                             private tnCADImportFileModel::BulkListener {
    Q_OBJECT

public:
    explicit tnCADImportSortModel(QObject *parent = nullptr);
    ~tnCADImportSortModel() override;

    /// Not owned, may be null; changes of many rows are followed in a tnCADImportFileModel only.
    void setSourceModel(QAbstractItemModel *source) override;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QModelIndex mapFromSource(const QModelIndex &source) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    void beginBulk() override;
    void endBulk() override;
    void renewMapping() const;

    void sortPartsAlong(const QModelIndex &first, const QModelIndex &last,
                        const QVector<int> &roles);
    bool isInOrder(int firstSourceRow, int endSourceRow) const;

    QPointer<tnCADImportFileModel> m_files;
    std::unique_ptr<QObject> m_bulkChanges; ///< receives the source's signals while a bulk runs
    mutable bool m_isMappingOld = false; ///< only while a bulk runs
};
