#pragma once

#include "host/headless/FileCollector.h"
#include "host/import/JobResult.h"

#include <QtCore/QHash>
#include <QtCore/QObject>

#include <functional>
#include <map>
#include <vector>

namespace tnhost {

class FileService;

/// Follows all jobs of the file service: prints each step, and keeps the results of all files. The
/// steps of an assembly's parts are printed below its name.
class JobFollower : public QObject {
    Q_OBJECT

public:
    using Printer = std::function<void(const QString &line)>;

    /// The service must outlive the follower.
    JobFollower(FileService &service, Printer print);

    /// Numbers these files in their order, before a job has them; each path once. Those with a
    /// problem have failed. Once.
    void plan(const std::vector<FileCollector::File> &files);
    /// Fails the planned files that no job has had.
    void failWaiting(const QString &reason);

    bool isAnyRunning() const { return !m_running.empty(); }
    /// How many jobs have started so far.
    int startedJobs() const { return m_startedJobs; }
    /// Asks the service to end all running jobs.
    void abortAll();

    /// By their number, or in the order of their jobs.
    std::vector<FileResult> results() const;
    bool haveAllSucceeded() const;

signals:
    /// From within the service's own signal: other listeners have not received it yet.
    void jobEnded();

private:
    struct File {
        QString name;
        int number = 0;
        int total = 0;
        FileResult planned; ///< counts until a job has the file
        JobResultPtr job;
        std::size_t position = 0; ///< in the job
        QString lastStep; ///< repeated progress is printed once

        const FileResult &result() const { return job ? job->files[position] : planned; }
    };

    void onJobStarted(const JobResultPtr &job);
    void onStep(const JobResultPtr &job, std::size_t position, const QString &words);
    void onJobEnded(const JobResultPtr &job);
    File &append(const FileResult &result, std::size_t number, std::size_t total);
    void fail(File &file, const QString &reason);
    void print(File &file, const QString &words);

    FileService &m_service;
    const Printer m_print;
    std::vector<File> m_files;
    QHash<QString, std::size_t> m_planned; ///< from path to place, until a job has the file
    std::map<quint64, std::vector<std::size_t>> m_running; ///< the places of the jobs' files
    int m_startedJobs = 0;
};

} // namespace tnhost
