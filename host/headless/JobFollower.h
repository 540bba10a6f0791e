#pragma once

#include "host/headless/FileResult.h"
#include "platform/tnCADFileTypes.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <functional>
#include <vector>

class tnFileIOService;

namespace tnhost {

/// Follows all jobs of the file service: prints each step, and keeps what becomes of each file. The
/// parts of an assembly are told below its name and have no result of their own.
class JobFollower : public QObject {
    Q_OBJECT

public:
    using Printer = std::function<void(const QString &line)>;

    /// The service must outlive the follower.
    JobFollower(tnFileIOService &service, Printer print);

    /// Takes files into the results, numbered in their order, before a job tells of them. Once.
    void plan(const QStringList &files);
    /// Ends a planned file, by its position, before it came into a job.
    void fail(int position, const QString &reason);
    /// The same for all files that have not come to their end.
    void failOpen(const QString &reason);

    bool isAnyRunning() const { return !m_jobs.isEmpty(); }
    /// How many jobs have started so far.
    int startedJobs() const { return m_startedJobs; }
    /// Asks the service to end all running jobs.
    void abortAll();

    /// By their number, or in the order in which their jobs came to them.
    std::vector<FileResult> results() const;
    /// Files that ended jobs were to have, and that nobody said anything about.
    int unreportedFiles() const { return m_unreported; }
    bool haveAllSucceeded() const;

signals:
    /// From within the service's own signal: other listeners have not heard of it yet.
    void jobEnded();

private:
    struct File {
        FileResult result;
        int number = 0;
        int total = 0;
        bool isInScene = false;
        QString lastStep; ///< repeated progress is printed once
        QElapsedTimer clock;
    };
    /// The end of a conversion, before it is known whether it was that of a file or of a part that
    /// has the same path: the next signal tells.
    struct ConversionEnd {
        QString path;
        tnCADFileTypes::JobState state = tnCADFileTypes::Success;
        double seconds = 0.0;
        QString message;
    };
    struct Job {
        int total = 0;
        QHash<QString, int> files; ///< from path to position
        QHash<QString, QString> assemblies; ///< from a part's path to that of its file
        QString announcedPart;
        ConversionEnd lastEnd;
    };

    template <typename... Told, typename Action>
    void follow(void (tnFileIOService::*signal)(quint64, Told...), Action action);
    void connectJobs();
    void connectConversion();
    void connectLoading();
    void onConversionStarted(Job &job, const QString &path);
    void onConversionEnded(Job &job, const QString &part);
    void onLoadingFinished(Job &job, const QString &path, tnCADFileTypes::JobState state);
    void onJobEnded(quint64 id);

    int append(const QString &path);
    File &fileOf(Job &job, const QString &path);
    bool isPart(const Job &job, const QString &path) const;
    /// Prints what happened to a file, or to a part of one.
    void tell(Job &job, const QString &path, const QString &text);
    void tellFailure(Job &job, const QString &path, const QString &message);
    void step(File &file, const QString &text);
    static void end(File &file, tnCADFileTypes::JobState state);

    tnFileIOService &m_service;
    const Printer m_print;
    std::vector<File> m_files;
    QHash<QString, int> m_planned; ///< from path to position, until a job comes to the file
    QHash<quint64, Job> m_jobs; ///< the running ones
    int m_startedJobs = 0;
    int m_unreported = 0;
    bool m_isAborting = false;
};

} // namespace tnhost
