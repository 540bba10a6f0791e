#include "ConverterProcess.h"

#include <QJsonDocument>

namespace {

constexpr int patience = 60000;

QString program()
{
    return QStringLiteral(TN_CONVERTER);
}

} // namespace

RunResult runConverter(const QStringList &arguments)
{
    QProcess process;
    process.start(program(), arguments);
    RunResult result;
    if (process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

WorkerProcess::WorkerProcess()
{
    m_process.start(program(), {"--worker"});
}

WorkerProcess::~WorkerProcess()
{
    close();
}

void WorkerProcess::send(const QByteArray &line)
{
    m_process.write(line + '\n');
}

void WorkerProcess::convert(int id, const QString &input, const QString &output,
                            const QJsonObject &settings)
{
    const QJsonObject request{{"command", "convert"},
                              {"id", id},
                              {"input", input},
                              {"output", output},
                              {"settings", settings}};
    send(QJsonDocument(request).toJson(QJsonDocument::Compact));
}

QJsonObject WorkerProcess::next()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(patience))
            return {};
    }
    return QJsonDocument::fromJson(m_process.readLine()).object();
}

QList<QJsonObject> WorkerProcess::untilFinished()
{
    QList<QJsonObject> events;
    do {
        events << next();
    } while (!events.last().isEmpty() && events.last()["event"] != "finished");
    return events;
}

int WorkerProcess::close()
{
    m_process.closeWriteChannel();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(patience))
        m_process.kill();
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
