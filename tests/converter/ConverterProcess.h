#pragma once

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

/// The program tnconvert, as a worker unless it is started with other arguments.
class ConverterProcess : public QProcess {
public:
    explicit ConverterProcess(const QStringList &arguments = {"--worker"})
    {
        start(TN_BIN_DIR "/tnconvert", arguments);
    }
    ~ConverterProcess() override { end(); }

    /// Ends the requests; the exit code, or -1 when it crashed or did not end.
    int end()
    {
        closeWriteChannel();
        const bool hasEnded = state() == NotRunning || waitForFinished(patience);
        return hasEnded && exitStatus() == NormalExit ? exitCode() : -1;
    }

    void send(const QByteArray &line) { write(line + '\n'); }
    /// Relative inputs are samples; @p more is added to the request.
    void convert(int id, const QString &input, const QString &output, QJsonObject more = {})
    {
        more.insert("command", "convert");
        more.insert("id", id);
        more.insert("input", QDir(TN_SAMPLES_DIR).filePath(input));
        more.insert("output", output);
        send(QJsonDocument(more).toJson(QJsonDocument::Compact));
    }
    /// The next event; empty when none comes in time or when the line is no JSON object.
    QJsonObject next(int milliseconds = patience)
    {
        while (!canReadLine()) {
            if (!waitForReadyRead(milliseconds))
                return {};
        }
        return QJsonDocument::fromJson(readLine()).object();
    }
    /// All events up to the next "finished", which is included.
    QList<QJsonObject> untilFinished()
    {
        QList<QJsonObject> events;
        do {
            events << next();
        } while (!events.last().isEmpty() && events.last()["event"] != "finished");
        return events;
    }

private:
    static constexpr int patience = 60000;
};
