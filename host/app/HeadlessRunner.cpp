#include "host/app/HeadlessRunner.h"

#include "host/app/SceneReport.h"
#include "host/scene/Scene.h"
#include "platform/tnController.h"
#include "platform/tnFileIOService.h"
#include "platform/tnMessage.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTimer>

#include <utility>
#include <vector>

using tnCADFileTypes::JobState;

namespace {

constexpr int abortPatienceMs = 5000;

QString seconds(double value)
{
    return QString::number(value, 'f', 2) + QStringLiteral(" s");
}

QString stateName(JobState state)
{
    switch (state) {
    case JobState::Success:
        return QStringLiteral("finished");
    case JobState::JobAborted:
        return QStringLiteral("aborted");
    case JobState::Incomplete:
        return QStringLiteral("incomplete, parts are missing");
    case JobState::Failure:
        break;
    }
    return QStringLiteral("failed");
}

} // namespace

HeadlessRunner::HeadlessRunner(tnFileIOService &service, const Scene &scene,
                               const QStringList &files, Printer print)
    : m_service(service)
    , m_scene(scene)
    , m_files(files)
    , m_print(std::move(print))
{
    connectService();
}

void HeadlessRunner::connectService()
{
    using Service = tnFileIOService;
    // All other jobs are somebody else's.
    const auto mine = [this](quint64 job) { return m_job != 0 && job == m_job; };

    connect(&m_service, &Service::startingImport, this, [this](quint64 job, unsigned int) {
        if (m_job == 0 && m_current >= 0 && m_result == Result::Open)
            m_job = job;
    });
    connect(&m_service, &Service::importFinished, this, [this, mine](quint64 job) {
        if (mine(job))
            onImportFinished();
    });

    connect(&m_service, &Service::fileConversionStarted, this,
            [this, mine](quint64 job, const QString &path) {
                if (mine(job))
                    step(path, QStringLiteral("conversion started"));
            });
    connect(&m_service, &Service::fileConversionProgressChanged, this,
            [this, mine](quint64 job, const QString &path, unsigned int percent,
                         const QString &message) {
                if (mine(job))
                    step(path, QStringLiteral("%1 % %2").arg(percent).arg(message).trimmed());
            });
    const auto onMessage = [this, mine](quint64 job, const QString &path, const QString &message) {
        if (mine(job))
            step(path, message);
    };
    connect(&m_service, &Service::fileConversionFailed, this, onMessage);
    connect(&m_service, &Service::fileLoadingFailed, this, onMessage);
    connect(
        &m_service, &Service::fileConversionFinished, this,
        [this, mine](quint64 job, const QString &path, JobState state, double duration) {
            if (!mine(job))
                return;
            step(path,
                 QStringLiteral("conversion %1 after %2").arg(stateName(state), seconds(duration)));
            if (state != JobState::Success && path == m_files[m_current])
                m_result = Result::Failed;
        });
    connect(&m_service, &Service::fileLoadingStarted, this,
            [this, mine](quint64 job, const QString &path) {
                if (mine(job))
                    step(path, QStringLiteral("loading"));
            });
    connect(&m_service, &Service::fileAddedToScene, this,
            [this, mine](quint64 job, const QString &path, const tndNode &node) {
                if (mine(job))
                    step(path, QStringLiteral("loaded, node %1").arg(node.id()));
            });
    connect(&m_service, &Service::fileLoadingFinished, this,
            [this, mine](quint64 job, const QString &path, JobState state) {
                if (!mine(job))
                    return;
                if (state != JobState::Success) {
                    step(path, QStringLiteral("loading %1").arg(stateName(state)));
                    m_result = Result::Failed;
                } else if (m_result == Result::Open) {
                    m_result = Result::Succeeded;
                }
            });
}

void HeadlessRunner::start()
{
    if (m_files.isEmpty())
        m_print(QStringLiteral("There is no file to import."));
    startNext();
}

void HeadlessRunner::abort(int signal)
{
    if (m_isFinished)
        return;
    m_signal = signal;
    m_print(QStringLiteral("Aborted by signal %1.").arg(signal));
    // Without a job the next step of the loop sees the signal.
    if (m_job != 0)
        m_service.abortImport(m_job);
    // Whoever presses Ctrl+C wants to get out, even if the service never answers.
    QTimer::singleShot(abortPatienceMs, this, &HeadlessRunner::finish);
}

void HeadlessRunner::startNext()
{
    m_result = Result::Open;
    m_job = 0;
    m_lastStep.clear();
    if (m_signal != 0 || ++m_current >= m_files.size()) {
        finish();
        return;
    }
    const QString &file = m_files[m_current];
    const QFileInfo info(file);
    if (!info.exists())
        fail(QStringLiteral("there is no such file"));
    else if (!info.isFile())
        fail(QStringLiteral("not a file"));
    else if (m_service.isFileSupported(file) && !m_service.isDirectLoadCandidate(file))
        // It would end up in a dialog that nobody sees.
        fail(QStringLiteral("this host has no converter for this file type"));
    else
        sendCurrent();
}

void HeadlessRunner::sendCurrent()
{
    tnMessage message;
    message.set("files", std::vector<QString>{m_files[m_current]}, true);
    message.set("loadState", -1, true);
    if (!tnController::callCB("importCAD", message)) {
        fail(QStringLiteral("no plug-in offers the command importCAD"));
        return;
    }
    // The service tells of a job by a call that it has queued by now; this one comes behind it.
    QMetaObject::invokeMethod(this, &HeadlessRunner::onSent, Qt::QueuedConnection);
}

void HeadlessRunner::onSent()
{
    if (m_job != 0 || m_result != Result::Open) {
        if (m_signal != 0 && m_job != 0)
            m_service.abortImport(m_job);
        return;
    }
    fail(m_service.isFileSupported(m_files[m_current])
             ? QStringLiteral("the plug-in did not start an import")
             : QStringLiteral("not a supported file type"));
}

void HeadlessRunner::onImportFinished()
{
    m_job = 0;
    if (m_result == Result::Open)
        fail(QStringLiteral("the import ended without a result"));
    else
        endCurrent();
}

void HeadlessRunner::fail(const QString &reason)
{
    step(m_files[m_current], reason);
    m_result = Result::Failed;
    endCurrent();
}

void HeadlessRunner::endCurrent()
{
    ++(m_result == Result::Succeeded ? m_succeeded : m_failed);
    // By the event loop, so that thousands of missing files do not pile up on the stack.
    QMetaObject::invokeMethod(this, &HeadlessRunner::startNext, Qt::QueuedConnection);
}

void HeadlessRunner::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    for (const QString &line : SceneReport::lines(m_scene, m_scene.root()))
        m_print(line);
    const int all = m_files.size();
    QString counts =
        QStringLiteral("%1 of %2 files loaded, %3 failed").arg(m_succeeded).arg(all).arg(m_failed);
    if (const int left = all - m_succeeded - m_failed; left > 0)
        counts += QStringLiteral(", %1 not tried").arg(left);
    m_print(counts
            + QStringLiteral("; %1 nodes, %2 triangles")
                  .arg(m_scene.nodeCount())
                  .arg(m_scene.triangleCount(m_scene.root())));
    if (m_signal != 0)
        emit finished(128 + m_signal);
    else
        emit finished(all > 0 && m_succeeded == all ? 0 : 1);
}

void HeadlessRunner::step(const QString &path, const QString &text)
{
    const QString name = QFileInfo(m_files[m_current]).fileName();
    QString line = QStringLiteral("[%1/%2] %3: ").arg(m_current + 1).arg(m_files.size()).arg(name);
    if (path != m_files[m_current])
        line += QFileInfo(path).fileName() + QStringLiteral(": ");
    line += text;
    if (line == m_lastStep)
        return;
    m_lastStep = line;
    m_print(line);
}
