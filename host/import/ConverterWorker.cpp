#include "host/import/ConverterWorker.h"

#include "host/import/ProcessEnd.h"
#include "host/import/WorkerEvent.h"
#include "platform/tnLog.h"
#include "protocol/WorkerProtocol.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QLocale>
#include <QtCore/QPointer>

#include <algorithm>
#include <unistd.h>

namespace tnhost {

using tnCADFileTypes::JobState;
namespace event = tnprotocol::event;
namespace key = tnprotocol::key;

namespace {

// Longer than any answer (one may name a hundred thousand missing parts), short enough that a
// worker gone wild cannot fill the host's memory.
constexpr int maximalLineLength = 1 << 26;
constexpr int errorTailLength = 2000;
// What a process may take to end by itself once it was told to, or once its output is closed.
constexpr int closeTime = 2000;
constexpr int exitTime = 500;
// How long the death of a killed process may take before its file no longer waits for it.
constexpr int killTime = 1000;

/// Once, rather than for each process and each batch.
void warnOfConverter(const QString &message)
{
    static QString told;
    if (!message.isEmpty() && message != told)
        tnLog::warning("%s", qUtf8Printable(message));
    told = message;
}

} // namespace

ConverterWorker::ConverterWorker(const QString &program, const WorkerLimits &limits,
                                 QObject *parent)
    : QObject(parent)
    , m_program(program)
    , m_limits(limits)
    , m_process(std::make_unique<PipedProcess>())
    , m_watch(limits.silence)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &ConverterWorker::onDeadline);

    PipedProcess *process = m_process.get();
    connect(process, &PipedProcess::pipeReady, this, &ConverterWorker::onOutput);
    connect(process, &QProcess::readyReadStandardError, this, &ConverterWorker::onErrorOutput);
    connect(process, &PipedProcess::pipeClosed, this, &ConverterWorker::onOutputClosed);
    connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &ConverterWorker::onProcessFinished);
    // Queued: a failing start is reported from within start(), and nobody listens that early.
    connect(process, &QProcess::errorOccurred, this, &ConverterWorker::onProcessError,
            Qt::QueuedConnection);

    // Each file has a process of its own below this one, which would look up anew what it calls.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_BIND_NOW"), QStringLiteral("1"));
    process->setProcessEnvironment(environment);
    m_deadline.start(m_limits.startTime);
    process->startPiped(m_program, {QLatin1String(tnprotocol::workerOption)});
}

ConverterWorker::~ConverterWorker()
{
    m_process->disconnect(this);
    m_process->kill();
    m_process->waitForFinished();
}

bool ConverterWorker::isIdle() const
{
    return (m_state == State::Starting || m_state == State::Ready) && !m_task.observer
        && !m_outputClosed;
}

void ConverterWorker::convert(const ConversionRequest &request, ConversionObserver &observer)
{
    Q_ASSERT(!m_task.observer);
    m_task = {request, &observer};
    ++m_taskId;
    m_taskRead = false;
    if (m_state == State::Ready)
        sendTask();
}

void ConverterWorker::abort()
{
    m_aborted = true;
    kill();
}

void ConverterWorker::watch()
{
    // What the converter says has to wait while an observer is being told, so silence says nothing.
    if (m_state != State::Ready || !m_task.observer || m_outputClosed || m_reading)
        return;
    if (m_watch.tick(m_limits.watchInterval))
        fail(QStringLiteral("The conversion of %1 reported nothing for %2 seconds and was ended.")
                 .arg(fileName(), QString::number(m_limits.silence / 1000.0)));
}

qint64 ConverterWorker::memory(ProcessMemory::Count count) const
{
    if (m_state == State::Killed || m_state == State::Dead)
        return 0;
    return ProcessMemory::of(m_process->processId(), count);
}

void ConverterWorker::endForMemory(qint64 memory)
{
    const QLocale locale = QLocale::c();
    const auto size = [&locale](qint64 bytes) {
        return locale.formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
    };
    fail(QStringLiteral("The conversion of %1 was ended: it took %2 of the %3 of memory that all "
                        "conversions together may take.")
             .arg(fileName(), size(memory), size(m_limits.budget)));
}

void ConverterWorker::kill()
{
    if (m_state == State::Dead || m_state == State::Killed)
        return;
    m_state = State::Killed;
    // Behind the application's end there are neither timers nor files that wait.
    if (QCoreApplication::instance())
        m_deadline.start(killTime);
    m_process->kill();
}

std::optional<ConverterWorker::Task> ConverterWorker::takeUnreadTask()
{
    if (!m_task.observer)
        return std::nullopt;
    return std::exchange(m_task, {});
}

void ConverterWorker::onOutput()
{
    const QPointer<ConverterWorker> self(this);
    m_buffer += m_process->readPipe();
    // Observers may run events of their own below this call, which come back here. What they bring
    // has to wait: a file must not end while its observer is still telling of an earlier step.
    if (m_reading)
        return;
    m_reading = true;
    readBuffer();
    if (self) {
        m_reading = false;
        if (const auto deferred = std::exchange(m_deferred, {}))
            deferred();
    }
}

void ConverterWorker::readBuffer()
{
    // Each line leaves the buffer before it is looked at; this object may be gone afterwards.
    const QPointer<ConverterWorker> self(this);
    while (self && (m_state == State::Starting || m_state == State::Ready)) {
        const int end = m_buffer.indexOf('\n', m_searched);
        m_searched = end < 0 ? m_buffer.size() : 0;
        if (end < 0) {
            if (m_buffer.size() > maximalLineLength)
                fail(QStringLiteral("The converter sent an endless answer%1.").arg(whileReading()));
            return;
        }
        const QByteArray line = m_buffer.left(end);
        m_buffer.remove(0, end + 1);
        readLine(line);
    }
}

void ConverterWorker::onErrorOutput()
{
    // Kept for the log, in case these are the process's last words.
    m_errorTail = (m_errorTail + m_process->readAllStandardError()).right(errorTailLength);
}

void ConverterWorker::onOutputClosed()
{
    if (m_state == State::Killed || m_state == State::Dead)
        return;
    // A process on its way out closes its output too, and how it ends says more about the reason.
    m_outputClosed = true;
    m_deadline.start(exitTime);
}

void ConverterWorker::onProcessError(QProcess::ProcessError error)
{
    switch (error) {
    case QProcess::FailedToStart:
        if (m_state == State::Dead)
            return;
        m_state = State::Dead;
        m_deadline.stop();
        endConversion(m_aborted ? JobState::JobAborted : JobState::Failure, -1.0,
                      QStringLiteral("The converter program %1 cannot be started: %2")
                          .arg(m_program, m_process->errorString()));
        emit ended();
        return;
    case QProcess::Crashed: // onProcessFinished() follows
    case QProcess::Timedout:
        return;
    case QProcess::WriteError:
    case QProcess::ReadError:
    case QProcess::UnknownError:
        break;
    }
    // A process that has just died cannot be written to either; its end tells the reason.
    if (m_state == State::Starting || m_state == State::Ready) {
        m_outputClosed = true;
        m_deadline.start(exitTime);
    }
}

void ConverterWorker::onProcessFinished(int exitCode, QProcess::ExitStatus status)
{
    const QPointer<ConverterWorker> self(this);
    onOutput();
    if (!self || m_state == State::Dead)
        return;
    if (m_reading) {
        m_deferred = [this, exitCode, status] { onProcessFinished(exitCode, status); };
        return;
    }
    const bool asked = m_state == State::Closing || m_aborted;
    m_state = State::Dead;
    m_deadline.stop();

    if (!asked && !m_errorTail.trimmed().isEmpty())
        tnLog::warning("The converter's last words: %s", m_errorTail.trimmed().constData());

    if (m_aborted) {
        endConversion(JobState::JobAborted, -1.0, QString());
    } else if (!m_fault.isEmpty()) {
        endConversion(JobState::Failure, -1.0, m_fault);
    } else if (!isBetweenFiles()) {
        endConversion(JobState::Failure, -1.0,
                      ProcessEnd::sentence(exitCode, status, whileReading()));
    }
    if (self)
        emit ended();
}

bool ConverterWorker::isBetweenFiles() const
{
    return !m_taskRead && m_taskId > 1;
}

void ConverterWorker::onDeadline()
{
    if (m_reading) {
        if (!m_deferred)
            m_deferred = [this] { onDeadline(); };
        return;
    }
    switch (m_state) {
    case State::Starting:
    case State::Ready:
        if (!m_task.observer && !m_outputClosed)
            close();
        else if (m_outputClosed && isBetweenFiles())
            kill();
        else if (m_outputClosed)
            fail(QStringLiteral("The converter closed its output%1.").arg(whileReading()));
        else
            fail(QStringLiteral("The converter does not answer."));
        return;
    case State::Closing:
        kill();
        return;
    case State::Killed:
        // The system takes its time; the file's end must not wait for that.
        endConversion(m_aborted ? JobState::JobAborted : JobState::Failure, -1.0, m_fault);
        return;
    case State::Dead:
        return;
    }
}

void ConverterWorker::readLine(const QByteArray &line)
{
    const QPointer<ConverterWorker> self(this);
    if (!readEvent(WorkerEvent(line)) && self)
        fail(QStringLiteral("The converter sent an answer that makes no sense%1.")
                 .arg(whileReading()));
}

bool ConverterWorker::readEvent(const WorkerEvent &event)
{
    if (m_state == State::Starting)
        return event.is(event::ready) && readReady(event);
    if (!m_task.observer || event.number(key::id, -1) != double(m_taskId))
        return false;
    if (event.is(event::finished))
        return readFinished(event);

    m_taskRead = true;
    if (event.is(event::progress))
        m_watch.notifyProgress(event.number(key::percent), event.text(key::message));
    else
        m_watch.notifyNews();
    return event.tell(*m_task.observer);
}

bool ConverterWorker::readReady(const WorkerEvent &event)
{
    if (event.number(key::version) != tnprotocol::version)
        return false;
    m_formats = event.texts(key::formats);
    warnOfConverter(event.text(key::message));
    emit programKnown(event.texts(key::program));
    m_state = State::Ready;
    if (m_task.observer)
        sendTask();
    else
        m_deadline.start(m_limits.idleTime);
    return true;
}

bool ConverterWorker::readFinished(const WorkerEvent &event)
{
    const std::optional<JobState> state = event.state();
    if (!state)
        return false;
    m_deadline.start(m_limits.idleTime);
    endConversion(*state, event.seconds(), event.text(key::message));
    return true;
}

void ConverterWorker::sendTask()
{
    m_deadline.stop();
    m_watch.restart();
    const ConversionRequest &request = m_task.request;
    if (!m_formats.contains(request.type)) {
        // Rather than within convert(): the observer hears nothing from inside its own call.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_state != State::Ready)
                    return;
                m_deadline.start(m_limits.idleTime);
                endConversion(JobState::Failure, -1.0,
                              QStringLiteral("This host has no converter for %1 files.")
                                  .arg(m_task.request.type));
            },
            Qt::QueuedConnection);
        return;
    }
    const QJsonObject object{
        {QLatin1String(key::command), QLatin1String(tnprotocol::command::convert)},
        {QLatin1String(key::id), m_taskId},
        {QLatin1String(key::input), request.input},
        {QLatin1String(key::output), request.output},
        {QLatin1String(key::type), request.type},
        {QLatin1String(key::sourceId), request.sourceId},
        {QLatin1String(key::settings), request.settings},
        {QLatin1String(key::threads), request.threads},
    };
    m_process->write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void ConverterWorker::fail(const QString &message)
{
    m_fault = message;
    kill();
}

void ConverterWorker::close()
{
    m_state = State::Closing;
    m_deadline.start(closeTime);
    m_process->closeWriteChannel();
}

void ConverterWorker::endConversion(JobState state, double seconds, const QString &message)
{
    const Task task = std::exchange(m_task, {});
    if (!task.observer)
        return;
    emit conversionEnded();
    task.observer->onConversionEnded(state, seconds, message);
}

QString ConverterWorker::fileName() const
{
    return QFileInfo(m_task.request.input).fileName();
}

QString ConverterWorker::whileReading() const
{
    return m_task.observer ? QStringLiteral(" while reading %1").arg(fileName()) : QString();
}

} // namespace tnhost
