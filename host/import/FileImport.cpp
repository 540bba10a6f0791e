#include "host/import/FileImport.h"

#include "host/import/FileTypeProbe.h"
#include "host/import/ImportContext.h"
#include "host/import/ImportJob.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <array>

namespace tnhost {

using tnCADFileTypes::FileType;
using tnCADFileTypes::JobState;

namespace {

// The types that the converter reads. A new worker names its formats too, but a file of any other
// type needs no process to fail.
constexpr std::array<FileType, 5> convertibleTypes{FileType::Step, FileType::Iges, FileType::STL,
                                                   FileType::Obj, FileType::VRML};

QString displayName(FileType type)
{
    return QString::fromLatin1(tnCADFileTypes::fileTypeFacts.at(std::size_t(type)).name);
}

bool isOutput(JobState state)
{
    return state == JobState::Success || state == JobState::Incomplete;
}

} // namespace

FileImport::FileImport(ImportJob &job, const QString &path)
    : m_job(job)
    , m_path(path)
{
}

FileImport::~FileImport()
{
    if (m_phase == Phase::Converting)
        removeOutput();
}

bool FileImport::isConvertible(FileType type)
{
    return std::find(convertibleTypes.begin(), convertibleTypes.end(), type)
        != convertibleTypes.end();
}

void FileImport::start()
{
    m_phase = Phase::Telling;
    m_clock.start();
    emit m_job.service().fileConversionStarted(m_job.id(), m_path);
    if (m_job.isAborted()) {
        onConversionEnded(JobState::JobAborted, 0.0, QString());
        return;
    }
    const QString problem = objection();
    if (!problem.isEmpty()) {
        onConversionEnded(JobState::Failure, 0.0, problem);
        return;
    }

    const FileType type = FileTypeProbe::byName(m_path);
    const QString source = QFileInfo(m_path).absoluteFilePath();
    m_output = m_job.claimOutput(FileTypeProbe::baseName(m_path), source);
    m_outputIsNew = !QFileInfo::exists(m_output);
    m_phase = Phase::Converting;
    m_job.context().pool.start({source, m_output, displayName(type),
                                ImportSettings::toJson(m_job.request().settings.get(type))},
                               *this);
}

void FileImport::abort()
{
    switch (m_phase) {
    case Phase::Waiting:
    case Phase::Telling:
    case Phase::Done:
        return;
    case Phase::Converting:
        m_job.context().pool.abort(*this);
        return;
    case Phase::LoadQueued:
    case Phase::Loading:
        m_job.context().loader.cancel(*this);
        endLoad(JobState::JobAborted, QString(), false);
        return;
    }
}

QString FileImport::objection() const
{
    if (!m_job.problem().isEmpty())
        return m_job.problem();
    const QFileInfo info(m_path);
    const QString name = info.fileName();
    if (!info.exists())
        return QStringLiteral("The file %1 does not exist.").arg(m_path);
    if (info.isDir())
        return QStringLiteral("%1 is a folder.").arg(name);
    if (!info.isFile())
        return QStringLiteral("%1 is no regular file.").arg(name);
    if (!info.isReadable())
        return QStringLiteral("The file %1 cannot be read.").arg(name);
    if (info.size() == 0)
        return QStringLiteral("The file %1 is empty.").arg(name);

    // Of a shared suffix the message should name the right system.
    const FileType type = FileTypeProbe::byContent(m_path);
    if (type == FileType::Unsupported)
        return QStringLiteral("The type of %1 is not known.").arg(name);
    if (!isConvertible(type))
        return QStringLiteral("This host has no converter for %1 files.").arg(displayName(type));
    return QString();
}

void FileImport::onProgress(unsigned int percent, const QString &message)
{
    m_percent = percent;
    emit m_job.service().fileConversionProgressChanged(m_job.id(), m_path, percent, message);
}

void FileImport::onWarning(const QString &message)
{
    emit m_job.service().fileConversionProgressChanged(m_job.id(), m_path, m_percent, message);
}

void FileImport::onPart(const QString &file)
{
    m_parts.push_back({file});
    emit m_job.service().childFileImportAdded(m_job.id(), m_path, file);
    emit m_job.service().fileConversionStarted(m_job.id(), file);
}

void FileImport::onPartFinished(const QString &file, JobState state, double seconds,
                                const QString &message)
{
    const auto part = std::find_if(m_parts.begin(), m_parts.end(), [&file](const Part &each) {
        return each.isOpen && each.path == file;
    });
    if (part == m_parts.end())
        return;
    part->isOpen = false;
    part->isLoadable = state == JobState::Success;
    m_partSeconds += seconds;

    tnFileIOService &service = m_job.service();
    if (state == JobState::Failure)
        emit service.fileConversionFailed(m_job.id(), file, message);
    else if (!message.isEmpty())
        emit service.fileConversionProgressChanged(m_job.id(), file, 100, message);
    emit service.fileConversionFinished(m_job.id(), file, state, seconds);
    emit service.childFileImportFinished(m_job.id(), m_path, file);
}

void FileImport::onConversionEnded(JobState state, double seconds, const QString &message)
{
    m_phase = Phase::Telling;
    const double taken = seconds < 0.0 ? double(m_clock.elapsed()) / 1000.0 : seconds;
    if (isOutput(state) && !QFileInfo::exists(m_output)) {
        tellConversionEnd(JobState::Failure, taken,
                          QStringLiteral("The converter wrote no file for %1.")
                              .arg(QFileInfo(m_path).fileName()));
    } else {
        tellConversionEnd(state, taken, message);
    }

    if (!isOutput(m_conversionState))
        removeOutput();
    if (!m_job.request().load) {
        finish();
    } else if (!isOutput(m_conversionState)) {
        const QString reason =
            QStringLiteral("%1 was not converted.").arg(QFileInfo(m_path).fileName());
        endPartLoads(m_conversionState, reason, false);
        finish();
    } else if (m_job.isAborted()) {
        endLoad(JobState::JobAborted, QString(), false);
    } else {
        emit m_job.service().fileAddedToLoadQueue(m_job.id(), m_path);
        if (m_job.isAborted()) {
            endLoad(JobState::JobAborted, QString(), false);
            return;
        }
        m_phase = Phase::LoadQueued;
        m_job.context().loader.load(m_output, *this);
    }
}

void FileImport::tellConversionEnd(JobState state, double seconds, const QString &message)
{
    m_conversionState = state;
    tnFileIOService &service = m_job.service();
    closeParts(state, message);
    if (!m_parts.empty())
        emit service.childrenFileConversionFinished(m_job.id(), m_path, m_partSeconds);
    if (state == JobState::Failure) {
        emit service.fileConversionFailed(m_job.id(), m_path, message);
    } else if (!message.isEmpty()) {
        emit service.fileConversionProgressChanged(m_job.id(), m_path, m_percent, message);
    }
    emit service.fileConversionFinished(m_job.id(), m_path, state, seconds);
    // The converter's clock runs on while it reads the parts.
    emit service.conversionFinished(m_job.id(), std::max(0.0, seconds - m_partSeconds));
}

void FileImport::closeParts(JobState state, const QString &message)
{
    // A part that is still open went down with the converter.
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        if (m_parts[i].isOpen) {
            onPartFinished(m_parts[i].path, isOutput(state) ? JobState::Failure : state, 0.0,
                           state == JobState::JobAborted ? QString() : message);
        }
    }
}

void FileImport::onReadingStarted()
{
    m_phase = Phase::Loading;
    // The load may end, and this object with it, in events that a listener runs.
    const QString path = m_path;
    emit m_job.service().fileLoadingStarted(m_job.id(), path);
}

void FileImport::onFragmentRead(const std::shared_ptr<const SceneFragment> &fragment,
                                const QString &error)
{
    m_phase = Phase::Telling;
    // An abort takes effect a turn of the event loop later; what was read meanwhile is not wanted.
    if (m_job.isAborted()) {
        endLoad(JobState::JobAborted, QString(), false);
        return;
    }
    if (!fragment) {
        endLoad(JobState::Failure, error, true);
        return;
    }
    const tndNode node = attach(fragment);
    if (node.isNull()) {
        endLoad(JobState::Failure, QStringLiteral("The node that was to be replaced is gone."),
                true);
        return;
    }
    emit m_job.service().fileAddedToScene(m_job.id(), m_path, node);
    endLoad(m_conversionState, QString(), true);
}

tndNode FileImport::attach(const std::shared_ptr<const SceneFragment> &fragment)
{
    const ImportRequest &request = m_job.request();
    const QString source = QFileInfo(m_path).absoluteFilePath();
    Scene &scene = m_job.context().scene;
    if (!request.replaced.isNull())
        return scene.replaceNode(request.replaced, fragment, source, request.sceneSettings);
    tndNode node;
    for (const tndNode &place : request.places.values(m_path)) {
        if (scene.contains(place))
            node = scene.replaceNode(place, fragment, source, request.sceneSettings);
    }
    return node.isNull()
        ? scene.addFragment(fragment, m_job.target(), source, request.sceneSettings)
        : node;
}

void FileImport::endLoad(JobState state, const QString &message, bool wasRead)
{
    m_phase = Phase::Telling;
    endPartLoads(isOutput(state) ? JobState::Success : state, message, wasRead);
    if (state == JobState::Failure)
        emit m_job.service().fileLoadingFailed(m_job.id(), m_path, message);
    emit m_job.service().fileLoadingFinished(m_job.id(), m_path, state);
    // Long before the job's end, as a batch of large files would fill the disk.
    if (m_job.isOutputTemporary())
        QFile::remove(m_output);
    finish();
}

void FileImport::endPartLoads(JobState state, const QString &message, bool wasRead)
{
    // The parts' geometry lies in the file of their assembly, and shares its fate.
    tnFileIOService &service = m_job.service();
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        if (!m_parts[i].isLoadable)
            continue;
        const QString path = m_parts[i].path;
        if (wasRead)
            emit service.fileLoadingStarted(m_job.id(), path);
        if (state == JobState::Failure)
            emit service.fileLoadingFailed(m_job.id(), path, message);
        emit service.fileLoadingFinished(m_job.id(), path, state);
    }
}

void FileImport::finish()
{
    m_phase = Phase::Done;
    m_job.onFileFinished();
}

void FileImport::removeOutput()
{
    if (m_output.isEmpty())
        return;
    QFile::remove(m_output + QStringLiteral(".part"));
    // The converter may have got ready just before it was killed.
    if (m_outputIsNew)
        QFile::remove(m_output);
}

} // namespace tnhost
