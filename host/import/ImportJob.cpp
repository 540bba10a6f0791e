#include "host/import/ImportJob.h"

#include "host/import/FileTypeProbe.h"
#include "platform/tnFile.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace tnhost {

namespace {

/// Where files go when the caller names no place: the user's preference, else the system's.
QString temporaryDirectory()
{
    const boost::any &preference = tnPreferences::getData().get("FileIO tmp path");
    const auto *path = boost::any_cast<QString>(&preference);
    return path && !path->isEmpty() ? *path : tnFile::getTmpDir();
}

} // namespace

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
    QMetaObject::invokeMethod(this, &ImportJob::begin, Qt::QueuedConnection);
}

ImportJob::~ImportJob()
{
    m_files.clear();
    cleanUp();
}

void ImportJob::cleanUp()
{
    m_temporary.reset();
    for (const QString &path : qAsConst(m_outputs))
        m_context.names.release(path);
    m_outputs.clear();
}

void ImportJob::begin()
{
    emit m_context.log.jobStarted(m_result);
    emit service().startingImport(id(), unsigned(m_files.size()));
    if (!m_files.empty() && !m_aborted)
        prepareOutput();
    m_begun = true;
    emit workAdded();
    checkEnd();
}

void ImportJob::prepareOutput()
{
    const bool isNamed = !m_request.outputDirectory.isEmpty();
    const QString parent =
        QDir(isNamed ? m_request.outputDirectory : temporaryDirectory()).absolutePath();
    m_directory = parent;
    if (!QDir().mkpath(m_directory)) {
        m_problem = QStringLiteral("The output directory %1 cannot be created.").arg(m_directory);
        return;
    }
    bool isWritable = QFileInfo(m_directory).isWritable();
    if (m_request.removeConverted || !isNamed) {
        // A directory of the job's own: nothing collides there, and all of it may go.
        m_temporary =
            std::make_unique<QTemporaryDir>(m_directory + QStringLiteral("/.import-XXXXXX"));
        isWritable = m_temporary->isValid();
        m_directory = m_temporary->path();
    }
    if (!isWritable)
        m_problem = QStringLiteral("The output directory %1 cannot be written to.").arg(parent);
}

bool ImportJob::hasWaitingFile() const
{
    return m_begun && !m_aborted && m_started < m_files.size();
}

void ImportJob::startNext()
{
    if (hasWaitingFile())
        m_files[m_started++]->start();
}

void ImportJob::abort()
{
    if (m_aborted)
        return;
    m_aborted = true;
    const auto abortFiles = [this] {
        for (std::size_t i = 0; i < m_started; ++i)
            m_files[i]->abort();
        checkEnd();
    };
    QMetaObject::invokeMethod(this, abortFiles, Qt::QueuedConnection);
}

QString ImportJob::claimOutput(const QString &baseName, const QString &source)
{
    m_outputs << m_context.names.claim(m_directory, baseName, source);
    return m_outputs.constLast();
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
    emit service().importProgressChanged(id(), unsigned(m_reported * 100 / m_files.size()));
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
