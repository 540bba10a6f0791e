#pragma once

#include "platform/tnBaseService.h"
#include "platform/tnCADFileTypes.h"
#include "platform/tndNode.h"
#include "platform/tndProjectMergeSettings.h"
#include "platform/tndSceneImportSettings.h"
#include "platform/tndXlatSettings.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

/// Converts and loads files in the background, job by job, and reports every step by signal. No
/// signal is emitted from inside the operation that caused it.
///
/// Per file the signals come in this order: fileConversionStarted, any number of
/// fileConversionProgressChanged, for each part of an assembly childFileImportAdded, the part's own
/// conversion signals and childFileImportFinished, then childrenFileConversionFinished;
/// fileConversionFailed where it went wrong; fileConversionFinished, conversionFinished. In a job
/// that loads: fileAddedToLoadQueue, fileLoadingStarted, fileAddedToScene, fileLoadingFailed where
/// it went wrong, fileLoadingFinished; parts that were converted are reported as loading and loaded
/// together with their assembly, since their geometry is in its file. At the end of each top-level
/// file importProgressChanged. Between files nothing is promised.
class TNPLATFORM_EXPORT tnFileIOService : public QObject, public tnBaseService {
    Q_OBJECT

public:
    tnFileIOService();
    ~tnFileIOService() override;

    /// How many conversions run at a time, in all jobs together; -1 or 0: as many as the machine
    /// has cores.
    virtual void setMaxParallelProcesses(int count) = 0;
    virtual int getMaxParallelProcesses() = 0;

    virtual void setImportSettings(tnCADFileTypes::FileType type,
                                   const tndXlatSettings &settings) = 0;
    virtual tndXlatSettings getImportSettings(tnCADFileTypes::FileType type) = 0;
    virtual tndXlatSettings getDefaultImportSettings(tnCADFileTypes::FileType type) = 0;
    virtual void setSceneImportSettings(const tndSceneImportSettings &settings) = 0;
    virtual tndSceneImportSettings getSceneImportSettings() = 0;
    virtual void setProjectMergeSettings(const tndProjectMergeSettings &settings) = 0;
    virtual tndProjectMergeSettings getProjectMergeSettings() = 0;

    /// Whether this host offers options for the type.
    virtual bool isFileTypeEnabled(tnCADFileTypes::FileType type) = 0;
    /// Whether files of this kind are to go through the import dialog.
    virtual bool isHandledByImportDialog(const QString &path) = 0;

    /// Starts a job and gives its id, never 0. The files are converted into the output directory
    /// (empty: a temporary one); with load they are then loaded under the target node (null: the
    /// root); with removeConverted the converted files go when they are no longer needed. Files
    /// that stood on disk before the job are never removed. direct says that no dialog follows the
    /// job. A job without files ends like any other.
    virtual quint64 loadFiles(const QStringList &files, const tndNode &target,
                              const QString &outputDirectory, bool load, bool removeConverted,
                              bool direct) = 0;
    /// Starts a job that imports the source file of a node again, in the node's place.
    virtual quint64 reimportFile(const tndNode &node, bool removeConverted) = 0;

    /// Looks into the file; the answer comes by fileTypeReceived.
    virtual void requestFileType(const QString &path) = 0;
    /// Ends a job early: running files end as aborted, waiting ones are never reported. An id that
    /// is not running does nothing.
    virtual void abortImport(quint64 job) = 0;

    /// Whether the file's kind can be imported. A quick answer by name, the file need not exist.
    virtual bool isFileSupported(const QString &path) = 0;
    /// Whether a single file of this kind may be loaded without asking the user for options.
    virtual bool isDirectLoadCandidate(const QString &path) = 0;
    /// The suffix that tells the kind of file, without dot, in the file's own case.
    virtual QString fileSuffix(const QString &path) = 0;
    /// The type by name; also for files that do not exist. Unsupported for unknown suffixes.
    virtual tnCADFileTypes::FileType fileType(const QString &path) = 0;

Q_SIGNALS:
    void startingImport(quint64 job, unsigned int fileCount);
    /// Exactly once for each job that was accepted. Seconds of wall-clock time.
    void importFinished(quint64 job, double seconds);
    /// A top-level file has come to its end; value is the job's progress in percent.
    void importProgressChanged(quint64 job, unsigned int value);
    void childFileImportAdded(quint64 job, const QString &parentPath, const QString &childPath);
    void childFileImportFinished(quint64 job, const QString &parentPath, const QString &childPath);
    /// The conversion of one top-level file took that many seconds, without its parts.
    void conversionFinished(quint64 job, double seconds);
    void fileConversionStarted(quint64 job, const QString &path);
    void fileConversionFinished(quint64 job, const QString &path, tnCADFileTypes::JobState state,
                                double seconds);
    void fileConversionFailed(quint64 job, const QString &path, const QString &message);
    void fileConversionProgressChanged(quint64 job, const QString &path, unsigned int percent,
                                       const QString &message);
    /// All parts of an assembly are converted; they took that many seconds together.
    void childrenFileConversionFinished(quint64 job, const QString &path, double seconds);
    void fileLoadingStarted(quint64 job, const QString &path);
    void fileLoadingFinished(quint64 job, const QString &path, tnCADFileTypes::JobState state);
    void fileLoadingFailed(quint64 job, const QString &path, const QString &message);
    void fileAddedToScene(quint64 job, const QString &path, const tndNode &node);
    void fileAddedToLoadQueue(quint64 job, const QString &path);
    void fileTypeReceived(const QString &path, tnCADFileTypes::FileType type);
};
