#pragma once

#include "host/import/BackgroundThread.h"
#include "host/import/Conversions.h"
#include "host/import/FragmentLoader.h"
#include "host/import/ImportContext.h"
#include "host/import/ImportLog.h"
#include "host/import/ImportSettings.h"
#include "host/import/OutputNames.h"
#include "host/import/PartNames.h"
#include "platform/tnFileIOService.h"

#include <memory>
#include <vector>

namespace tnhost {

class ImportJob;

/// The host's file service: queues the files of all jobs, has them converted in processes of their
/// own and loads what comes out. Jobs that run at the same time take turns, file by file. A path
/// that stands twice in a job is two files, each with its own output and its own signals.
class FileService : public tnFileIOService {
    Q_OBJECT

public:
    /// The scene must outlive the service. The program is started with the first conversion; one
    /// that cannot be started fails each file. Without a store each file is converted.
    FileService(Scene &scene, const QString &converterProgram, const WorkerLimits &limits = {},
                std::unique_ptr<ResultStore> store = nullptr);
    /// Kills the converters and removes temporary files; jobs end without a signal.
    ~FileService() override;

    /// Reports what becomes of the files of all jobs, beyond what the signals say.
    const ImportLog &log() const { return m_log; }
    /// The jobs that have not come to their end, in the order of their ids.
    std::vector<JobResultPtr> runningJobs() const;
    /// Whether jobs from now on start with their largest files, so that no core idles at their end;
    /// false at first.
    void setLargestFirst(bool isLargestFirst) { m_isLargestFirst = isLargestFirst; }
    /// Announces a job, so that converters start before its files need them.
    void prepare(int files);
    /// The results of earlier conversions; null when there are none to be used.
    ResultStore *resultStore() const { return m_conversions.store(); }

    void setMaxParallelProcesses(int count) override;
    int getMaxParallelProcesses() override;

    void setImportSettings(tnCADFileTypes::FileType type, const tndXlatSettings &settings) override;
    tndXlatSettings getImportSettings(tnCADFileTypes::FileType type) override;
    tndXlatSettings getDefaultImportSettings(tnCADFileTypes::FileType type) override;
    void setSceneImportSettings(const tndSceneImportSettings &settings) override;
    tndSceneImportSettings getSceneImportSettings() override;
    void setProjectMergeSettings(const tndProjectMergeSettings &settings) override;
    tndProjectMergeSettings getProjectMergeSettings() override;

    bool isFileTypeEnabled(tnCADFileTypes::FileType type) override;
    bool isHandledByImportDialog(const QString &path) override;

    quint64 loadFiles(const QStringList &files, const tndNode &target,
                      const QString &outputDirectory, bool load, bool removeConverted,
                      bool direct) override;
    /// Gives a target for loadFiles() that stands for the places of these nodes: what is loaded
    /// from these paths is put there, as far as the nodes are still in the scene, all else at the
    /// root. A plug-in hands on a target with the list of files that it was sent with, so the
    /// places go with their list, whatever becomes of it. Only the last such target counts.
    tndNode preparePlaces(const QMultiHash<QString, tndNode> &places);
    /// Writes where the last job of loadFiles() wrote. A node without a source file is a job
    /// without files.
    quint64 reimportFile(const tndNode &node, bool removeConverted) override;

    void requestFileType(const QString &path) override;
    void abortImport(quint64 job) override;

    bool isFileSupported(const QString &path) override;
    bool isDirectLoadCandidate(const QString &path) override;
    QString fileSuffix(const QString &path) override;
    tnCADFileTypes::FileType fileType(const QString &path) override;

private:
    quint64 addJob(ImportRequest request);
    int limit() const;
    void schedule();
    void onSchedule();
    void onJobEnded(ImportJob *job);
    ImportJob *nextJob() const;

    // The order matters at the end: conversions and loader fall silent first, then the jobs clean
    // up behind processes that write no more, and they do need the names for that.
    ImportLog m_log;
    OutputNames m_names;
    PartNames m_partNames;
    std::vector<std::unique_ptr<ImportJob>> m_jobs; ///< in the order of their ids
    Conversions m_conversions;
    FragmentLoader m_loader;
    const ImportContext m_context;
    BackgroundThread m_probeThread;

    int m_maxParallelProcesses = -1;
    bool m_isLargestFirst = false;
    ImportSettings m_settings;
    tndSceneImportSettings m_sceneSettings;
    tndProjectMergeSettings m_mergeSettings;

    quint64 m_lastId = 0;
    quint64 m_lastServed = 0; ///< the job whose file was started last
    QString m_lastDirectory;
    tndNode m_placesTarget; ///< what preparePlaces() has given last
    QMultiHash<QString, tndNode> m_places;
    QHash<QString, QString> m_givenPaths; ///< by absolute path, as the signals are to name them
    bool m_isScheduled = false;
};

} // namespace tnhost
