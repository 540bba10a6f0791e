#pragma once

#include "host/app/results/ResultColumns.h"
#include "host/import/JobResult.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QTimer>
#include <QtGui/QIcon>

#include <map>
#include <set>
#include <vector>

namespace tnhost {

class ImportLog;

/// The results of all jobs since it was made, in the order in which they came: a row per file, with
/// the parts of an assembly below it. Rows stay, so what they show can be read at any time; changes
/// are announced some times a second, however fast they come.
class ResultsModel : public QAbstractItemModel {
    Q_OBJECT

public:
    /// The log must outlive the model.
    explicit ResultsModel(const ImportLog &log, QObject *parent = nullptr);

    /// The index must be a valid one of this model.
    ResultRow row(const QModelIndex &index) const;
    /// The first row of each file among these (a part stands for its file), as far as the file
    /// has come to its end without success and nothing newer is known of it. In order of arrival.
    QModelIndexList unsuccessful(const QModelIndexList &among) const;
    /// All top-level rows.
    QModelIndexList files() const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    struct Job {
        JobResultPtr result;
        int firstRow = 0;
        bool isOver = false;
    };
    struct File {
        std::size_t job = 0;
        int shownParts = 0; ///< the result may be ahead
    };

    void onJobStarted(const JobResultPtr &result);
    void onStep(const JobResultPtr &result, std::size_t position);
    void onJobEnded(const JobResultPtr &result);
    void markChanged(int row);
    void announceChanges();
    const FileResult &fileResult(int row) const;

    std::vector<Job> m_jobs;
    std::map<quint64, std::size_t> m_jobsById;
    std::vector<File> m_files; ///< by row
    QHash<QString, int> m_lastRows; ///< by path
    std::set<int> m_changed; ///< rows that are still to be announced
    QTimer m_delay;
    std::vector<QIcon> m_icons; ///< by state
};

} // namespace tnhost
