#include "host/import/ImportJob.h"

#include "host/import/FileTypeProbe.h"
#include "host/import/TmpDirectory.h"
#include "platform/tnLog.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <numeric>

namespace tnhost {

ImportJob::ImportJob(const ImportContext &context, ImportRequest request)
    : m_context(context)
    , m_request(std::move(request))
{
    m_clock.start();
    const auto count = static_cast<std::size_t>(m_request.files.size());
    m_result->id = m_request.id;
    m_result->openFiles = m_request.files.size();
    m_result->files.resize(count);
    m_files.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        FileResult &file = m_result->files[i];
        file.path = m_request.files[static_cast<int>(i)];
        file.type = FileTypeProbe::byName(file.path);
        m_files.push_back(std::make_unique<FileImport>(*this, i, file));
    }
    m_order.resize(count);
    std::iota(m_order.begin(), m_order.end(), std::size_t(0));
    if (m_request.isLargestFirst)
        sortBySize();
    QMetaObject::invokeMethod(this, &ImportJob::begin, Qt::QueuedConnection);
}

ImportJob::~ImportJob()
{
    m_files.clear();
    cleanUp();
}

void ImportJob::cleanUp()
{
    m_work.reset();
    for (const auto &[file, claim] : m_claims)
        m_context.names.release(claim);
    m_claims.clear();
}

/// A large file that starts last would keep one core busy while the others idle.
void ImportJob::sortBySize()
{
    std::vector<qint64> sizes;
    sizes.reserve(m_files.size());
    for (const FileResult &file : m_result->files)
        sizes.push_back(QFileInfo(file.path).size());
    std::stable_sort(m_order.begin(), m_order.end(),
                     [&sizes](std::size_t a, std::size_t b) { return sizes[a] > sizes[b]; });
}

void ImportJob::begin()
{
    emit m_context.log.jobStarted(m_result);
    emit service().startingImport(id(), static_cast<unsigned int>(m_files.size()));
    if (!m_files.empty() && !m_aborted)
        prepareOutput();
    m_begun = true;
    emit workAdded();
    checkEnd();
}

void ImportJob::prepareOutput()
{
    const bool isNamed = !m_request.outputDirectory.isEmpty();
    m_directory =
        QDir(isNamed ? m_request.outputDirectory : TmpDirectory::preferred()).absolutePath();
    if (!QDir().mkpath(m_directory)) {
        m_problem = QStringLiteral("The output directory %1 cannot be created.").arg(m_directory);
        return;
    }
    m_isOutputTemporary = m_request.removeConverted || !isNamed;
    m_work = std::make_unique<WorkDirectory>(m_directory);
    if (!m_work->isValid()) {
        m_problem =
            QStringLiteral("The output directory %1 cannot be written to.").arg(m_directory);
    }
}

int ImportJob::waitingFiles() const
{
    return m_begun && !m_aborted ? int(m_files.size() - m_started) : 0;
}

void ImportJob::startNext()
{
    if (hasWaitingFile())
        m_files[m_order[m_started++]]->start();
}

void ImportJob::abort()
{
    if (m_aborted)
        return;
    m_aborted = true;
    const auto abortFiles = [this] {
        for (std::size_t i = 0; i < m_started; ++i)
            m_files[m_order[i]]->abort();
        checkEnd();
    };
    QMetaObject::invokeMethod(this, abortFiles, Qt::QueuedConnection);
}

QString ImportJob::workFile(std::size_t file) const
{
    return QStringLiteral("%1/%2/%2.glb").arg(m_work->path(), QString::number(file));
}

void ImportJob::claimOutput(std::size_t file, const QString &source)
{
    OutputNames::Claim &claim = m_claims[file];
    claim = {m_directory, FileTypeProbe::baseName(source), source, {}};
    m_context.names.claim(claim);
}

QString ImportJob::publishOutput(std::size_t file, QString *error)
{
    OutputNames::Claim &claim = m_claims[file];
    if (m_context.names.publish(workFile(file), claim, error))
        return claim.path;
    *error = QStringLiteral("The file %1 cannot be written: %2.").arg(claim.path, *error);
    return {};
}

tndNode ImportJob::target()
{
    if (!m_request.target.isNull() && !m_context.scene.contains(m_request.target)) {
        tnLog::warning("The node %u to import into is gone; the files go to the scene's root.",
                       m_request.target.id());
        m_request.target = tndNode();
    }
    return m_request.target;
}

void ImportJob::onStep(std::size_t file, const QString &words)
{
    emit m_context.log.stepTaken(m_result, file, words);
}

void ImportJob::onProgress(std::size_t file, unsigned int percent)
{
    m_result->setPercent(m_result->files[file], percent);
}

void ImportJob::onFileFinished(std::size_t file)
{
    onProgress(file, 100);
    --m_result->openFiles;
    emit m_context.log.fileEnded(m_result, file);
    // Reported first and counted afterwards: who runs events below the signal must not see the job
    // end there, with the file's own calls still on the stack.
    ++m_reported;
    emit service().importProgressChanged(
        id(), static_cast<unsigned int>(m_reported * 100 / m_files.size()));
    ++m_ended;
    QMetaObject::invokeMethod(this, &ImportJob::checkEnd, Qt::QueuedConnection);
}

void ImportJob::checkEnd()
{
    if (!m_begun || m_hasEnded || m_ended < m_started || hasWaitingFile())
        return;
    m_hasEnded = true;
    emit ended();
}

} // namespace tnhost
