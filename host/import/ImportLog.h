#pragma once

#include "host/import/JobResult.h"

#include <QtCore/QObject>

namespace tnhost {

/// Announces what becomes of the files of all jobs, for whoever shows or keeps it: the results
/// themselves say the same at any time. All signals come from the event loop, in the GUI thread.
class ImportLog : public QObject {
    Q_OBJECT

signals:
    void jobStarted(const JobResultPtr &job);
    /// Something has happened to a file, by its position, or to a part of it, in a few English
    /// words; the same words may come several times in a row.
    void stepTaken(const JobResultPtr &job, std::size_t file, const QString &words);
    void fileEnded(const JobResultPtr &job, std::size_t file);
    /// Nothing more comes of this job. Files that never were begun are still pending.
    void jobEnded(const JobResultPtr &job);
};

} // namespace tnhost
