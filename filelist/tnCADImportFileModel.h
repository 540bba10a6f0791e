#pragma once

#include "filelist/RecordList.h"

#include <QtCore/QAbstractTableModel>
#include <QtCore/QStringList>
#include <QtGui/QIcon>
#include <QtGui/QMovie>

#include <set>
#include <vector>

/// The table behind the file list: one row per record, the parts of an assembly directly below it.
/// It owns the records and is the only way to them; others name them by row or by path. Rows are
/// source rows throughout. A path is looked up from row 0 on, O(n), compared exactly, and the first
/// row with it wins. Unknown paths and rows out of range change nothing.
class tnCADImportFileModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { FileColumn, TypeColumn, SizeColumn, StateColumn, ColumnCount };
    /// The role that rows are to be sorted by: the parts of an assembly sort like the assembly.
    static constexpr int SortRole = Qt::UserRole;

    /// Learns of operations on many rows, whose signals still come row by row. What such an
    /// operation brings about in the middle, large or not, belongs to it.
    class BulkListener {
    public:
        virtual void beginBulk() = 0;
        virtual void endBulk() = 0;

    protected:
        ~BulkListener() = default;
    };

    explicit tnCADImportFileModel(QObject *parent = nullptr);
    ~tnCADImportFileModel() override;

    /// Not owned; null for none. In the middle of such an operation it ends for the last listener
    /// and begins for the new one.
    void setBulkListener(BulkListener *listener);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    /// Appends a row for each path that is not in the table yet, as given. O(n + paths), besides
    /// the file system's answers.
    void addFiles(const QStringList &paths);
    /// Inserts the parts of an assembly directly below it, in their order and without a test for
    /// known paths. False: the parent is not in the table, and nothing happened. O(n) per part.
    bool addChildFiles(const QStringList &paths, const QString &parentPath);
    /// Removes the rows and those of their parts, with which it extends the set. O(n) for all,
    /// besides what listeners do.
    void removeFiles(std::set<int> &rows);
    /// Removes the rows in that state, with the rows of their parts.
    void removeFilesInState(ImportState state, bool skipChildren);
    /// Removes everything, without changed().
    void clear();

    bool isEmpty() const;
    /// The paths in source order. O(n).
    QStringList fileNames(bool skipChildren) const;
    /// Inserts the types of the list, those that share the options of BCAD as BCAD, without
    /// Undefined. O(n).
    void collectFileTypes(std::set<tnCADFileTypes::FileType> &types) const;
    /// The paths of those rows that a batch may take, in the order of the rows given.
    QStringList importableFiles(const std::vector<int> &rows) const;
    /// O(n).
    int countFilesInState(ImportState state, bool skipChildren) const;
    /// The ImportState of a row, or -1.
    int stateOfRow(int row) const;
    /// The row behind an assembly's parts and the parts of those; the next row for other files.
    int endOfParts(int row) const;
    /// The scene node of a row, or a null node.
    tndNode nodeOfRow(int row) const;
    /// The absolute directory of a row's file, or an empty string.
    QString directoryOfRow(int row) const;

    /// Values that are no ImportState are ignored.
    void setFileState(const QString &path, ImportState state);
    void setFileProgress(const QString &path, unsigned int percent, const QString &message);
    void setFileNode(const QString &path, const tndNode &node);

    /// Animates the icons of the running rows; does nothing when the animation did not load.
    void startAnimation();
    void stopAnimation();

    /// Makes Incomplete assemblies Succeeded whose parts all are, or are gone. O(n) per assembly.
    void promoteCompletedParents();

Q_SIGNALS:
    /// The list of files changed, or the type of one.
    void changed();

protected Q_SLOTS:
    void onNextFrame();

private:
    class Bulk;

    const tnCADImportFile *recordAt(int row) const;
    QVariant displayText(const tnCADImportFile &file, int column) const;
    QVariant sortKey(const tnCADImportFile &file, int column) const;
    void requestFileType(const tnCADImportFile &file);
    void receiveFileType(const QString &path, tnCADFileTypes::FileType type);
    void announceCell(int row, Column column, const QVector<int> &roles = {});

    QIcon m_runningIcon;
    QMovie m_busyAnimation;
    RecordList m_rows;
    BulkListener *m_bulkListener = nullptr;
    int m_runningBulks = 0;
};
