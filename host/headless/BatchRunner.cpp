#include "host/headless/BatchRunner.h"

#include "host/headless/DialogDriver.h"
#include "host/headless/ResultTable.h"
#include "host/headless/SceneReport.h"
#include "host/import/TmpDirectory.h"
#include "host/scene/Scene.h"
#include "platform/tnController.h"
#include "platform/tnMessage.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTimer>

#include <utility>

namespace tnhost {

namespace {

constexpr int abortPatienceMs = 1000;

/// Where the plug-in writes the logbook of a batch.
QString logbookPath()
{
    return TmpDirectory::preferred() + QStringLiteral("/import-logbook.txt");
}

} // namespace

BatchRunner::BatchRunner(FileService &service, const Scene &scene, const BatchOptions &options,
                         const FileCollector::Result &files, Printer print, Printer complain)
    : m_scene(scene)
    , m_options(options)
    , m_print(std::move(print))
    , m_complain(std::move(complain))
    , m_follower(service, m_print)
    , m_files(files)
{
    // The plug-in, which may learn of the end later, is to be done with it as well.
    connect(&m_follower, &JobFollower::jobEnded, this, &BatchRunner::onJobEnded,
            Qt::QueuedConnection);
}

void BatchRunner::start()
{
    m_logbookBefore = logbookTime();
    if (!m_files.omissions.isEmpty())
        m_complain(m_files.omissions);
    m_follower.plan(m_files.files);
    std::vector<QString> files;
    for (const FileCollector::File &file : m_files.files) {
        if (file.problem.isEmpty())
            files.push_back(file.path);
    }
    if (m_signal != 0 || files.empty()) {
        finish();
        return;
    }

    tnMessage message;
    message.set("files", files, true);
    message.set("loadState", 0, true);
    if (!tnController::callCB("importCAD", message)) {
        giveUp(QStringLiteral("no plug-in offers the command importCAD"));
        return;
    }
    DialogDriver dialog;
    if (!setUpDialog(dialog))
        return;
    dialog.pressImport();
    // The service announces a job by a call that it has queued by now; this one comes behind it.
    QMetaObject::invokeMethod(this, &BatchRunner::onPressed, Qt::QueuedConnection);
}

/// Gives false when the batch has come to its end for it.
bool BatchRunner::setUpDialog(DialogDriver &dialog)
{
    QString problem;
    if (!dialog.find(&problem)) {
        giveUp(problem);
        return false;
    }
    const QString remark = dialog.apply(m_options);
    if (!remark.isEmpty())
        m_complain(remark);
    if (!dialog.canImport()) {
        giveUp(QStringLiteral("the plug-in's dialog offers no import"));
        return false;
    }
    if (m_options.mode != BatchOptions::Mode::Import)
        m_print(QStringLiteral("Output directory: %1").arg(dialog.outputDirectory()));
    return true;
}

void BatchRunner::giveUp(const QString &reason)
{
    m_complain(QStringLiteral("Nothing was imported: %1.").arg(reason));
    m_follower.failWaiting(reason);
    finish();
}

void BatchRunner::abort(int signal)
{
    if (m_isFinished)
        return;
    m_signal = signal;
    m_print(QStringLiteral("Aborted by signal %1.").arg(signal));
    // Without a job the next step of the loop sees the signal.
    m_follower.abortAll();
    // Whoever presses Ctrl+C wants to get out, even if the service never answers.
    QTimer::singleShot(abortPatienceMs, this, &BatchRunner::finish);
}

void BatchRunner::onPressed()
{
    if (m_follower.startedJobs() == 0)
        giveUp(QStringLiteral("the plug-in did not start an import"));
    else if (m_signal != 0)
        m_follower.abortAll();
}

void BatchRunner::onJobEnded()
{
    if (m_follower.isAnyRunning())
        return;
    if (m_signal == 0)
        m_follower.failWaiting(QStringLiteral("the import ended without a result"));
    finish();
}

void BatchRunner::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    const bool loads = m_options.mode != BatchOptions::Mode::Convert;
    if (loads)
        printScene();
    const std::vector<FileResult> results = m_follower.results();
    for (const QString &line : ResultTable::lines(results))
        m_print(line);
    QString summary = ResultTable::summary(results);
    if (loads)
        summary += QStringLiteral("; %1 nodes, %2 triangles")
                       .arg(m_scene.nodeCount())
                       .arg(m_scene.triangleCount(m_scene.root()));
    m_print(summary);
    if (m_options.tellsLogbook)
        printLogbook();
    if (m_signal != 0)
        emit finished(128 + m_signal);
    else
        emit finished(m_files.omissions.isEmpty() && m_follower.haveAllSucceeded() ? 0 : 1);
}

void BatchRunner::printScene()
{
    for (const QString &line : SceneReport::lines(m_scene, m_scene.root()))
        m_print(line);
}

void BatchRunner::printLogbook()
{
    const QDateTime now = logbookTime();
    if (now.isValid() && now != m_logbookBefore)
        m_print(QStringLiteral("Logbook: %1").arg(logbookPath()));
    else
        m_print(QStringLiteral("No logbook was written."));
}

QDateTime BatchRunner::logbookTime() const
{
    return QFileInfo(logbookPath()).lastModified();
}

} // namespace tnhost
