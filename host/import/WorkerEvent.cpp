#include "host/import/WorkerEvent.h"

#include "host/import/Conversion.h"
#include "protocol/WorkerProtocol.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>

namespace tnhost {

using tnCADFileTypes::JobState;
namespace event = tnprotocol::event;
namespace key = tnprotocol::key;

WorkerEvent::WorkerEvent(const QByteArray &line)
    : m_object(QJsonDocument::fromJson(line).object())
{
}

QString WorkerEvent::text(const char *key) const
{
    return m_object.value(QLatin1String(key)).toString();
}

QStringList WorkerEvent::texts(const char *key) const
{
    QStringList texts;
    const QJsonArray array = m_object.value(QLatin1String(key)).toArray();
    for (const QJsonValue &text : array)
        texts << text.toString();
    return texts;
}

double WorkerEvent::number(const char *key, double otherwise) const
{
    return m_object.value(QLatin1String(key)).toDouble(otherwise);
}

double WorkerEvent::seconds() const
{
    return std::max(0.0, number(key::seconds));
}

std::optional<JobState> WorkerEvent::state() const
{
    namespace state = tnprotocol::state;
    static constexpr std::pair<const char *, JobState> states[] = {
        {state::success, JobState::Success},
        {state::failure, JobState::Failure},
        {state::incomplete, JobState::Incomplete},
    };
    for (const auto &[word, jobState] : states) {
        if (text(key::state) == QLatin1String(word))
            return jobState;
    }
    return std::nullopt;
}

bool WorkerEvent::tell(ConversionObserver &observer) const
{
    const QString message = text(key::message);
    if (is(event::progress)) {
        const int percent = qBound(0, qRound(number(key::percent)), 100);
        observer.onProgress(static_cast<unsigned int>(percent), message);
    } else if (is(event::warning)) {
        observer.onWarning(message);
    } else if (is(event::reference)) {
        observer.onReference(text(key::file));
    } else if (is(event::part)) {
        observer.onPart(text(key::file));
    } else if (is(event::partFinished)) {
        const std::optional<JobState> partState = state();
        if (!partState)
            return false;
        observer.onPartFinished(text(key::file), *partState, seconds(), message);
    } else {
        return is(event::started);
    }
    return true;
}

} // namespace tnhost
