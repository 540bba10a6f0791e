#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>

/// What a run of the program came to.
struct RunResult {
    int exitCode = -1; ///< -1 when it crashed or did not end
    QByteArray output;
    QByteArray errors;
};

/// Runs tnconvert to its end.
RunResult runConverter(const QStringList &arguments);

/// A worker to talk to.
class WorkerProcess {
public:
    WorkerProcess();
    ~WorkerProcess();

    void send(const QByteArray &line);
    void convert(int id, const QString &input, const QString &output,
                 const QJsonObject &settings = {});
    /// The next event; empty when none comes or when the line is no JSON object.
    QJsonObject next();
    /// All events up to the next "finished", which is included.
    QList<QJsonObject> untilFinished();
    /// Ends the requests; the exit code, or -1.
    int close();
    QProcess &process() { return m_process; }

private:
    QProcess m_process;
};
