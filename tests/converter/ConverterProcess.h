#pragma once

#include <QJsonObject>
#include <QProcess>

/// What a run of the program came to.
struct RunResult {
    int exitCode = -1; ///< -1 when it crashed or did not end
    QByteArray output;
    QByteArray errors;
};

/// Runs tnconvert to its end.
RunResult runConverter(const QStringList &arguments);

/// A worker to talk to.
class WorkerProcess : public QProcess {
public:
    WorkerProcess();
    ~WorkerProcess() override;

    void send(const QByteArray &line) { write(line + '\n'); }
    /// Relative inputs are samples; @p more is added to the request.
    void convert(int id, const QString &input, const QString &output, QJsonObject more = {});
    /// The next event; empty when none comes or when the line is no JSON object.
    QJsonObject next();
    /// All events up to the next "finished", which is included.
    QList<QJsonObject> untilFinished();
};
