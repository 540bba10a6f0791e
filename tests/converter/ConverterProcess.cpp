#include "ConverterProcess.h"

#include <QDir>
#include <QJsonDocument>

namespace {

constexpr int patience = 60000;

} // namespace

RunResult runConverter(const QStringList &arguments)
{
    QProcess process;
    process.start(TN_BIN_DIR "/tnconvert", arguments);
    const bool hasEnded =
        process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit;
    return {hasEnded ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

WorkerProcess::WorkerProcess()
{
    start(TN_BIN_DIR "/tnconvert", {"--worker"});
}

WorkerProcess::~WorkerProcess()
{
    closeWriteChannel();
    waitForFinished();
}

void WorkerProcess::convert(int id, const QString &input, const QString &output, QJsonObject more)
{
    more.insert("command", "convert");
    more.insert("id", id);
    more.insert("input", QDir(TN_SAMPLES_DIR).filePath(input));
    more.insert("output", output);
    send(QJsonDocument(more).toJson(QJsonDocument::Compact));
}

QJsonObject WorkerProcess::next()
{
    while (!canReadLine()) {
        if (!waitForReadyRead(patience))
            return {};
    }
    return QJsonDocument::fromJson(readLine()).object();
}

QList<QJsonObject> WorkerProcess::untilFinished()
{
    QList<QJsonObject> events;
    do {
        events << next();
    } while (!events.last().isEmpty() && events.last()["event"] != "finished");
    return events;
}
