#include "host/import/ReusableConversion.h"

#include "host/import/BackgroundThread.h"
#include "host/import/WorkerPool.h"

#include <QtCore/QPointer>

namespace tnhost {

using tnCADFileTypes::JobState;
using Event = ConversionRecord::Event;

ReusableConversion::ReusableConversion(const Surroundings &surroundings,
                                       const ConversionRequest &request, bool followsOutside,
                                       ConversionObserver &observer)
    : m_surroundings(surroundings)
    , m_request(request)
    , m_observer(observer)
    , m_reuse(surroundings.store, request, followsOutside)
{
}

void ReusableConversion::start()
{
    m_clock.start();
    m_surroundings.looking.run([this, program = m_surroundings.program] {
        const auto record = m_reuse.take(program, m_isCancelled);
        QMetaObject::invokeMethod(
            this, [this, record] { onLookedUp(record); }, Qt::QueuedConnection);
    });
}

void ReusableConversion::abort()
{
    if (m_phase == Phase::Looking)
        m_isCancelled = true;
    else if (m_phase == Phase::Converting)
        m_surroundings.pool.abort(*this);
}

void ReusableConversion::onLookedUp(const std::optional<ConversionRecord> &record)
{
    if (m_isCancelled) {
        end(JobState::JobAborted, -1.0, QString());
    } else if (record) {
        tell(*record);
    } else {
        m_phase = Phase::Converting;
        m_surroundings.pool.start(m_request, *this);
    }
}

void ReusableConversion::tell(const ConversionRecord &record)
{
    // Whoever listens may run events below, in which this is aborted or ends with its owner.
    const QPointer<ReusableConversion> self(this);
    for (const Event &event : record.events) {
        if (!self || m_isCancelled)
            break;
        event.tell(m_observer);
    }
    if (self && !m_isCancelled)
        m_observer.onProgress(100, QStringLiteral("Unchanged, an earlier result is used again"));
    if (self)
        end(m_isCancelled ? JobState::JobAborted : JobState::Success,
            static_cast<double>(m_clock.nsecsElapsed()) / 1e9, QString());
}

void ReusableConversion::onProgress(unsigned int percent, const QString &message)
{
    m_observer.onProgress(percent, message);
}

void ReusableConversion::onWarning(const QString &message)
{
    m_record.events.push_back({Event::Kind::Warning, QString(), message});
    m_observer.onWarning(message);
}

void ReusableConversion::onPart(const QString &file)
{
    m_record.events.push_back({Event::Kind::Part, file, QString()});
    m_observer.onPart(file);
}

void ReusableConversion::onPartFinished(const QString &file, JobState state, double seconds,
                                        const QString &message)
{
    m_record.events.push_back({Event::Kind::PartFinished, file, message, state});
    m_observer.onPartFinished(file, state, seconds, message);
}

void ReusableConversion::onReference(const QString &file)
{
    m_record.references.push_back({file, QByteArray()});
}

void ReusableConversion::onConversionEnded(JobState state, double seconds, const QString &message)
{
    if (state != JobState::Success) {
        end(state, seconds, message);
        return;
    }
    // Before the observer takes the output away.
    m_phase = Phase::Keeping;
    m_surroundings.keeping.run([this, converter = m_surroundings.converter, seconds, message] {
        m_reuse.keep(m_record, converter.value_or(QByteArray()), m_isCancelled);
        QMetaObject::invokeMethod(
            this, [this, seconds, message] { end(JobState::Success, seconds, message); },
            Qt::QueuedConnection);
    });
}

void ReusableConversion::end(JobState state, double seconds, const QString &message)
{
    m_phase = Phase::Done;
    ConversionObserver &observer = m_observer;
    emit ended();
    observer.onConversionEnded(state, seconds, message);
}

} // namespace tnhost
