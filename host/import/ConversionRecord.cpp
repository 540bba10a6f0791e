#include "host/import/ConversionRecord.h"

#include "host/import/Conversion.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace tnhost {

namespace {

const QString eventsKey = QStringLiteral("events");
const QString referencesKey = QStringLiteral("references");

} // namespace

void ConversionRecord::Event::tell(ConversionObserver &observer) const
{
    switch (kind) {
    case Kind::Warning:
        observer.onWarning(message);
        return;
    case Kind::Part:
        observer.onPart(file);
        return;
    case Kind::PartFinished:
        observer.onPartFinished(file, state, 0.0, message);
        return;
    }
}

QByteArray ConversionRecord::toJson() const
{
    QJsonArray eventList;
    for (const Event &event : events)
        eventList << QJsonArray{static_cast<int>(event.kind), event.file, event.message,
                                static_cast<int>(event.state)};
    QJsonArray referenceList;
    for (const Reference &reference : references)
        referenceList << QJsonArray{reference.path, QString::fromLatin1(reference.hash.toHex())};
    const QJsonObject object{{eventsKey, eventList}, {referencesKey, referenceList}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<ConversionRecord> ConversionRecord::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    if (!object.contains(eventsKey) || !object.contains(referencesKey))
        return std::nullopt;
    ConversionRecord record;
    const QJsonArray events = object.value(eventsKey).toArray();
    for (const QJsonValue &event : events)
        record.events.push_back({static_cast<Event::Kind>(event[0].toInt()), event[1].toString(),
                                 event[2].toString(),
                                 static_cast<tnCADFileTypes::JobState>(event[3].toInt())});
    const QJsonArray references = object.value(referencesKey).toArray();
    for (const QJsonValue &reference : references)
        record.references.push_back(
            {reference[0].toString(), QByteArray::fromHex(reference[1].toString().toLatin1())});
    return record;
}

} // namespace tnhost
