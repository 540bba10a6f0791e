#include "host/services/FileService.h"

#include "host/import/FileTypeProbe.h"
#include "host/import/ImportJob.h"
#include "host/import/InputCheck.h"
#include "platform/tnLog.h"

#include <QtCore/QFileInfo>
#include <QtCore/QThread>

#include <algorithm>
#include <numeric>
#include <utility>

namespace tnhost {

using tnCADFileTypes::FileType;

namespace {

bool isImportable(FileType type)
{
    return type != FileType::Python && type != FileType::Undefined && type != FileType::Unsupported;
}

} // namespace

FileService::FileService(Scene &scene, const QString &converterProgram, const WorkerLimits &limits,
                         std::unique_ptr<ResultStore> store)
    : m_conversions(converterProgram, limits, std::move(store))
    , m_context{*this, m_log, m_conversions, m_loader, m_names, m_partNames, scene}
{
    connect(&m_conversions, &Conversions::conversionEnded, this, &FileService::schedule);
}

FileService::~FileService() = default;

std::vector<JobResultPtr> FileService::runningJobs() const
{
    std::vector<JobResultPtr> results;
    results.reserve(m_jobs.size());
    for (const auto &job : m_jobs)
        results.push_back(job->result());
    return results;
}

void FileService::setMaxParallelProcesses(int count)
{
    m_maxParallelProcesses = count;
    schedule();
}

int FileService::getMaxParallelProcesses()
{
    return m_maxParallelProcesses;
}

void FileService::setImportSettings(FileType type, const tndXlatSettings &settings)
{
    m_settings.set(type, settings);
}

tndXlatSettings FileService::getImportSettings(FileType type)
{
    return m_settings.get(type);
}

tndXlatSettings FileService::getDefaultImportSettings(FileType type)
{
    return ImportSettings::defaults(type);
}

void FileService::setSceneImportSettings(const tndSceneImportSettings &settings)
{
    m_sceneSettings = settings;
}

tndSceneImportSettings FileService::getSceneImportSettings()
{
    return m_sceneSettings;
}

void FileService::setProjectMergeSettings(const tndProjectMergeSettings &settings)
{
    m_mergeSettings = settings;
}

tndProjectMergeSettings FileService::getProjectMergeSettings()
{
    return m_mergeSettings;
}

bool FileService::isFileTypeEnabled(FileType type)
{
    return type >= FileType::Cinema4D && type <= FileType::BCAD && isImportable(type);
}

bool FileService::isHandledByImportDialog(const QString &path)
{
    return isFileSupported(path);
}

quint64 FileService::loadFiles(const QStringList &files, const tndNode &target,
                               const QString &outputDirectory, bool load, bool removeConverted,
                               bool /*direct*/)
{
    if (!outputDirectory.isEmpty())
        m_lastDirectory = outputDirectory;
    ImportRequest request;
    request.files = files;
    if (target.isNull() || target != m_placesTarget)
        request.target = target;
    else
        request.places = m_places;
    request.outputDirectory = outputDirectory;
    request.load = load;
    request.removeConverted = removeConverted;
    for (const QString &file : files) {
        if (const QFileInfo info(file); info.isRelative())
            m_givenPaths.insert(info.absoluteFilePath(), file);
    }
    return addJob(std::move(request));
}

tndNode FileService::preparePlaces(const QMultiHash<QString, tndNode> &places)
{
    m_places = places;
    m_placesTarget = m_context.scene.takeUnusedHandle();
    return m_placesTarget;
}

quint64 FileService::reimportFile(const tndNode &node, bool removeConverted)
{
    ImportRequest request;
    request.replaced = node;
    request.outputDirectory = m_lastDirectory;
    request.load = true;
    request.removeConverted = removeConverted;
    const QString source = m_context.scene.sourceFile(node);
    if (source.isEmpty())
        tnLog::warning("The node %u comes from no file, so it is not imported again.", node.id());
    else
        request.files << m_givenPaths.value(source, source);
    return addJob(std::move(request));
}

void FileService::requestFileType(const QString &path)
{
    m_probeThread.run([this, path] {
        const FileType type = FileTypeProbe::byContent(path);
        QMetaObject::invokeMethod(
            this, [this, path, type] { emit fileTypeReceived(path, type); }, Qt::QueuedConnection);
    });
}

void FileService::abortImport(quint64 job)
{
    for (const auto &each : m_jobs) {
        if (each->id() == job)
            each->abort();
    }
}

bool FileService::isFileSupported(const QString &path)
{
    return isImportable(FileTypeProbe::byName(path));
}

bool FileService::isDirectLoadCandidate(const QString &path)
{
    return InputCheck::isConvertible(FileTypeProbe::byName(path));
}

QString FileService::fileSuffix(const QString &path)
{
    return FileTypeProbe::suffix(path);
}

FileType FileService::fileType(const QString &path)
{
    return FileTypeProbe::byName(path);
}

quint64 FileService::addJob(ImportRequest request)
{
    m_partNames.reserve(request.files);
    request.id = ++m_lastId;
    request.isLargestFirst = m_isLargestFirst;
    request.settings = m_settings;
    request.sceneSettings = m_sceneSettings;
    m_jobs.push_back(std::make_unique<ImportJob>(m_context, std::move(request)));
    ImportJob *job = m_jobs.back().get();
    connect(job, &ImportJob::workAdded, this, &FileService::schedule);
    connect(job, &ImportJob::ended, this, [this, job] { onJobEnded(job); });
    return m_lastId;
}

void FileService::prepare(int files)
{
    m_conversions.prepare(std::min(files, limit()));
}

/// How many conversions may run at a time.
int FileService::limit() const
{
    return std::max(
        1, m_maxParallelProcesses > 0 ? m_maxParallelProcesses : QThread::idealThreadCount());
}

void FileService::schedule()
{
    if (m_isScheduled)
        return;
    m_isScheduled = true;
    QMetaObject::invokeMethod(this, &FileService::onSchedule, Qt::QueuedConnection);
}

void FileService::onSchedule()
{
    m_isScheduled = false;
    ImportJob *job = nextJob();
    if (!job || m_conversions.running() >= limit())
        return;
    // A core that no other file waits for would be idle.
    const int waiting =
        std::accumulate(m_jobs.begin(), m_jobs.end(), 0,
                        [](int sum, const auto &each) { return sum + each->waitingFiles(); });
    const int cores = std::min(limit(), QThread::idealThreadCount());
    m_conversions.setThreads(std::max(1, (cores - m_conversions.running()) / waiting));
    // One at a time: whoever learns of the start may do anything, to the jobs and to the limit.
    m_lastServed = job->id();
    schedule();
    job->startNext();
}

ImportJob *FileService::nextJob() const
{
    ImportJob *first = nullptr;
    for (const auto &job : m_jobs) {
        if (!job->hasWaitingFile())
            continue;
        if (job->id() > m_lastServed)
            return job.get();
        if (!first)
            first = job.get();
    }
    return first;
}

void FileService::onJobEnded(ImportJob *job)
{
    const auto found = std::find_if(m_jobs.begin(), m_jobs.end(),
                                    [job](const auto &each) { return each.get() == job; });
    if (found == m_jobs.end())
        return;
    const JobResultPtr result = job->result();
    const double seconds = job->seconds();
    // The job is the sender of this signal, so it must outlive the call.
    found->release()->setParent(this);
    m_jobs.erase(found);
    job->deleteLater();
    job->cleanUp();
    emit m_log.jobEnded(result);
    emit importFinished(result->id, seconds);
}

} // namespace tnhost
