#pragma once

#include "host/import/Conversion.h"
#include "host/import/ConversionWatch.h"
#include "host/import/PipedProcess.h"
#include "host/import/ProcessMemory.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace tnhost {

class WorkerEvent;

/// What a converter process may do and use up.
struct WorkerLimits {
    int idleTime = 10000; ///< ms until a worker without work is ended
    int startTime = 30000; ///< ms until a new worker must have answered
    int silence = 120000; ///< ms without news that a conversion may take; 0: any time
    qint64 budget = 0; ///< bytes that all workers may take together; 0: any number
    int watchInterval = 500; ///< ms between two looks at the conversions
    bool followOutside = false; ///< references may lead out of the folder of the file
    bool fullSource = false; ///< outputs name the whole path of their source
};

/// One converter process: starts it, sends it one file after the other and reads its answers. A
/// process that dies, or writes what is no answer, ends its current file as failed and then itself.
class ConverterWorker : public QObject {
    Q_OBJECT

public:
    /// A conversion as the worker was given it.
    struct Task {
        ConversionRequest request;
        ConversionObserver *observer = nullptr;
    };

    /// Starts the process at once; what goes wrong with that ends the first conversion as failed.
    ConverterWorker(const QString &program, const WorkerLimits &limits, QObject *parent);
    /// Kills the process and waits for its end. The observer hears nothing of it.
    ~ConverterWorker() override;

    /// Whether convert() may be called, be it that the process has yet to start.
    bool isIdle() const;
    /// Whose file is being converted, or null.
    const ConversionObserver *observer() const { return m_task.observer; }

    void convert(const ConversionRequest &request, ConversionObserver &observer);
    /// Kills the process; the current file ends as aborted as soon as the process is gone.
    void abort();
    /// Looks after the current conversion, once each watchInterval: ends one that is too silent.
    void watch();
    /// Bytes that the process and those that it started take for themselves alone; 0 once it has
    /// been killed.
    qint64 memory(ProcessMemory::Count count) const;
    /// Kills the process; the current file, if there is one, ends as failed for that reason.
    void endForMemory(qint64 memory);
    /// Kills the process without waiting for its end, for a quick shutdown of many.
    void kill();

    /// The task that this worker took to its grave unread: a process that dies between two files
    /// is no fault of the next file. To be asked for when ended() arrives.
    std::optional<Task> takeUnreadTask();

signals:
    /// The process has started, and consists of these files.
    void programKnown(const QStringList &files);
    /// The worker is done with its current file; the observer is told next.
    void conversionEnded();
    /// The process is gone for good.
    void ended();

private:
    enum class State { Starting, Ready, Closing, Killed, Dead };

    void onOutput();
    void readBuffer();
    void onErrorOutput();
    void onOutputClosed();
    void onProcessError(QProcess::ProcessError error);
    void onProcessFinished(int exitCode, QProcess::ExitStatus status);
    void onDeadline();

    void readLine(const QByteArray &line);
    bool readEvent(const WorkerEvent &event);
    bool readReady(const WorkerEvent &event);
    bool readFinished(const WorkerEvent &event);
    void sendTask();
    void fail(const QString &message);
    void close();
    void endConversion(tnCADFileTypes::JobState state, double seconds, const QString &message);
    QString fileName() const;
    QString whileReading() const;
    /// Whether the worker has served files, and has not yet looked at the current one.
    bool isBetweenFiles() const;

    const QString m_program;
    const WorkerLimits m_limits;
    const std::unique_ptr<PipedProcess> m_process;
    QTimer m_deadline; ///< for the answer that is due next, or for the end of idleness
    State m_state = State::Starting;
    Task m_task;
    ConversionWatch m_watch;
    qint64 m_taskId = 0;
    bool m_taskRead = false; ///< the worker has confirmed the current task
    bool m_aborted = false;
    bool m_outputClosed = false;
    bool m_reading = false; ///< an observer is being told of an answer
    std::function<void()> m_deferred; ///< what happened meanwhile and must not overtake it
    QStringList m_formats;
    QString m_fault; ///< why the process was killed, a sentence for the user
    QByteArray m_buffer;
    int m_searched = 0; ///< so many bytes of the buffer hold no end of a line
    QByteArray m_errorTail;
};

} // namespace tnhost
