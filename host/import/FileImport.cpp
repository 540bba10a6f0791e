#include "host/import/FileImport.h"

#include "host/import/FileTypeProbe.h"
#include "host/import/ImportContext.h"
#include "host/import/ImportJob.h"
#include "host/import/InputCheck.h"
#include "protocol/WorkerProtocol.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <array>
#include <numeric>

namespace tnhost {

using tnCADFileTypes::JobState;
using State = FileResult::State;

namespace {

QString ending(JobState state)
{
    // By the values of JobState.
    constexpr std::array<const char *, 4> words{"finished", "failed", "aborted",
                                                "incomplete, parts are missing"};
    return QString::fromLatin1(words.at(static_cast<std::size_t>(state)));
}

QString percentage(unsigned int percent, const QString &message)
{
    return QStringLiteral("%1 % %2").arg(QString::number(percent), message).trimmed();
}

bool isOutput(JobState state)
{
    return state == JobState::Success || state == JobState::Incomplete;
}

std::size_t triangleCount(const SceneFragment &fragment)
{
    return std::accumulate(
        fragment.nodes.begin(), fragment.nodes.end(), std::size_t{0},
        [&fragment](std::size_t sum, const SceneFragment::Node &node) {
            return node.mesh < 0
                ? sum
                : sum + fragment.meshes[static_cast<std::size_t>(node.mesh)]->triangles;
        });
}

} // namespace

FileImport::FileImport(ImportJob &job, std::size_t position, FileResult &result)
    : m_job(job)
    , m_position(position)
    , m_result(result)
    , m_path(result.path)
{
}

void FileImport::start()
{
    m_phase = Phase::Reporting;
    m_clock.start();
    m_result.state = State::Running;
    step(QStringLiteral("conversion started"));
    emit m_job.service().fileConversionStarted(m_job.id(), m_path);
    if (m_job.isAborted()) {
        onConversionEnded(JobState::JobAborted, 0.0, QString());
        return;
    }
    const QString problem =
        m_job.problem().isEmpty() ? InputCheck::problemOf(m_path, m_result.type) : m_job.problem();
    if (!problem.isEmpty()) {
        onConversionEnded(JobState::Failure, 0.0, problem);
        return;
    }

    const QString source = QFileInfo(m_path).absoluteFilePath();
    m_output = m_job.workFile(m_position);
    QDir().mkpath(QFileInfo(m_output).path());
    if (!m_job.isOutputTemporary())
        m_job.claimOutput(m_position, source);
    m_phase = Phase::Converting;
    m_job.context().conversions.start(
        {source, m_output, FileTypeProbe::displayName(m_result.type), OutputNames::idOf(source),
         ImportSettings::toJson(m_job.request().settings.get(m_result.type))},
        *this);
}

void FileImport::abort()
{
    switch (m_phase) {
    case Phase::Waiting:
    case Phase::Reporting:
    case Phase::Done:
        return;
    case Phase::Converting:
        m_job.context().conversions.abort(*this);
        return;
    case Phase::LoadQueued:
    case Phase::Loading:
        m_job.context().loader.cancel(*this);
        endLoad(JobState::JobAborted, QString(), false);
        return;
    }
}

void FileImport::onProgress(unsigned int percent, const QString &message)
{
    m_job.onProgress(m_position, percent);
    step(percentage(percent, message));
    emit m_job.service().fileConversionProgressChanged(m_job.id(), m_path, percent, message);
}

void FileImport::onWarning(const QString &message)
{
    m_result.warnings << message;
    const unsigned int percent = m_result.percent;
    step(percentage(percent, message));
    emit m_job.service().fileConversionProgressChanged(m_job.id(), m_path, percent, message);
}

void FileImport::onPart(const QString &file)
{
    FileResult part;
    part.path = m_job.context().partNames.nameOf(file, m_path);
    part.type = FileTypeProbe::byName(file);
    part.state = State::Running;
    m_result.parts.push_back(part);
    m_parts.push_back({file});
    step(wordsOf(part, QStringLiteral("conversion started")));
    emit m_job.service().childFileImportAdded(m_job.id(), m_path, part.path);
    emit m_job.service().fileConversionStarted(m_job.id(), part.path);
}

void FileImport::onPartFinished(const QString &file, JobState state, double seconds,
                                const QString &message)
{
    const auto part = std::find_if(m_parts.begin(), m_parts.end(), [&file](const Part &each) {
        return each.isConverting && each.file == file;
    });
    if (part != m_parts.end())
        endPart(static_cast<std::size_t>(part - m_parts.begin()), state, seconds, message);
}

void FileImport::endPart(std::size_t index, JobState state, double seconds, const QString &message)
{
    m_parts[index].isConverting = false;
    m_partSeconds += seconds;
    FileResult &part = m_result.parts[index];
    // What was converted is still to be loaded, together with its assembly.
    const bool isLoadable = state == JobState::Success && m_job.request().load;
    part.state = isLoadable ? State::Running : FileResult::stateOf(state);
    part.percent = 100;
    part.seconds = seconds;
    part.message = message;
    const FileResult copy = part; // whoever listens may bring further parts
    reportConversion(copy, 100, state, seconds, message);
    emit m_job.service().childFileImportFinished(m_job.id(), m_path, copy.path);
}

void FileImport::onConversionEnded(JobState state, double seconds, const QString &message)
{
    m_phase = Phase::Reporting;
    const double taken = seconds < 0.0 ? static_cast<double>(m_clock.elapsed()) / 1000.0 : seconds;
    QString error;
    if (isOutput(state) && !takeOutput(&error))
        endConversion(JobState::Failure, taken, error);
    else
        endConversion(state, taken, message);

    if (!isOutput(m_conversionState))
        removeOutput();
    if (!m_job.request().load) {
        finish(m_conversionState);
    } else if (!isOutput(m_conversionState)) {
        endPartLoads(m_conversionState,
                     QStringLiteral("%1 was not converted.").arg(QFileInfo(m_path).fileName()),
                     false);
        finish(m_conversionState);
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

bool FileImport::takeOutput(QString *error)
{
    if (!QFileInfo::exists(m_output)) {
        *error =
            QStringLiteral("The converter wrote no file for %1.").arg(QFileInfo(m_path).fileName());
        return false;
    }
    if (m_job.isOutputTemporary())
        return true;
    const QString path = m_job.publishOutput(m_position, error);
    if (path.isEmpty())
        return false;
    m_output = path;
    m_result.output = path;
    return true;
}

void FileImport::endConversion(JobState state, double seconds, const QString &message)
{
    m_conversionState = state;
    tnFileIOService &service = m_job.service();
    closeParts(state, message);
    if (state == JobState::Incomplete)
        addOwnLoss(message);
    if (!m_parts.empty())
        emit service.childrenFileConversionFinished(m_job.id(), m_path, m_partSeconds);
    if (!message.isEmpty())
        m_result.message = message;
    reportConversion(m_result, m_result.percent, state, seconds, message);
    // The converter's clock runs on while it reads the parts.
    emit service.conversionFinished(m_job.id(), std::max(0.0, seconds - m_partSeconds));
}

void FileImport::reportConversion(const FileResult &result, unsigned int percent, JobState state,
                                  double seconds, const QString &message)
{
    tnFileIOService &service = m_job.service();
    if (state == JobState::Failure) {
        step(wordsOf(result, message));
        emit service.fileConversionFailed(m_job.id(), result.path, message);
    } else if (!message.isEmpty()) {
        step(wordsOf(result, percentage(percent, message)));
        emit service.fileConversionProgressChanged(m_job.id(), result.path, percent, message);
    }
    step(wordsOf(result,
                 QStringLiteral("conversion %1 after %2 s")
                     .arg(ending(state), QString::number(seconds, 'f', 2))));
    emit service.fileConversionFinished(m_job.id(), result.path, state, seconds);
}

void FileImport::closeParts(JobState state, const QString &message)
{
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        if (m_parts[i].isConverting) {
            endPart(i, isOutput(state) ? JobState::Failure : state, 0.0,
                    state == JobState::JobAborted ? QString() : message);
        }
    }
}

/// Whoever lists an assembly takes it for whole once all of its parts are. So what is missing from
/// the assembly's own file is reported as one more part: that file, under a name of its own.
void FileImport::addOwnLoss(const QString &message)
{
    const bool areAllSound =
        std::none_of(m_result.parts.begin(), m_result.parts.end(), [](const FileResult &part) {
            return !part.isOpen() && part.state != State::Succeeded;
        });
    if (m_parts.empty() || !areAllSound)
        return;
    onPart(m_path);
    endPart(m_parts.size() - 1, JobState::Incomplete, 0.0, message);
}

void FileImport::onReadingStarted()
{
    m_phase = Phase::Loading;
    step(QStringLiteral("loading"));
    // The load may end, and this object with it, in events that a listener runs.
    const QString path = m_path;
    emit m_job.service().fileLoadingStarted(m_job.id(), path);
}

void FileImport::onFragmentRead(const std::shared_ptr<const SceneFragment> &fragment,
                                const QString &error)
{
    m_phase = Phase::Reporting;
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
    m_result.node = node;
    m_result.triangles = triangleCount(*fragment);
    step(QStringLiteral("loaded, node %1").arg(node.id()));
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
    m_phase = Phase::Reporting;
    endPartLoads(isOutput(state) ? JobState::Success : state, message, wasRead);
    if (state == JobState::Failure) {
        m_result.message = message;
        step(message);
        emit m_job.service().fileLoadingFailed(m_job.id(), m_path, message);
    }
    if (state != JobState::Success)
        step(QStringLiteral("loading %1").arg(ending(state)));
    emit m_job.service().fileLoadingFinished(m_job.id(), m_path, state);
    // Long before the job's end, as a batch of large files would fill the disk.
    if (m_job.isOutputTemporary())
        QFile::remove(m_output);
    finish(state);
}

void FileImport::endPartLoads(JobState state, const QString &message, bool wasRead)
{
    // The parts' geometry lies in the file of their assembly, and shares its fate.
    tnFileIOService &service = m_job.service();
    for (FileResult &part : m_result.parts) {
        if (!part.isOpen())
            continue;
        part.state = FileResult::stateOf(state);
        if (wasRead) {
            step(wordsOf(part, QStringLiteral("loading")));
            emit service.fileLoadingStarted(m_job.id(), part.path);
        }
        if (state == JobState::Failure) {
            part.message = message;
            step(wordsOf(part, message));
            emit service.fileLoadingFailed(m_job.id(), part.path, message);
        }
        if (state != JobState::Success)
            step(wordsOf(part, QStringLiteral("loading %1").arg(ending(state))));
        emit service.fileLoadingFinished(m_job.id(), part.path, state);
    }
}

void FileImport::finish(JobState state)
{
    m_phase = Phase::Done;
    m_result.state = FileResult::stateOf(state);
    m_result.seconds = static_cast<double>(m_clock.elapsed()) / 1000.0;
    if (m_result.state == State::Incomplete && m_result.message.isEmpty())
        m_result.message = QStringLiteral("parts are missing");
    m_job.onFileFinished(m_position);
}

void FileImport::removeOutput()
{
    if (m_output.isEmpty())
        return;
    QFile::remove(m_output);
    QFile::remove(m_output + QLatin1String(tnprotocol::partialSuffix)); // what a crash has left
}

void FileImport::step(const QString &words)
{
    m_job.onStep(m_position, words);
}

QString FileImport::wordsOf(const FileResult &result, const QString &words) const
{
    return &result == &m_result
        ? words
        : QStringLiteral("%1: %2").arg(QFileInfo(result.path).fileName(), words);
}

} // namespace tnhost
