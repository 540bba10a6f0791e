#pragma once

#include "platform/tnCADFileTypes.h"
#include "protocol/WorkerProtocol.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace tnhost {

class ConversionObserver;

/// One line of what a worker says. What is missing from it, or of another type, is empty.
class WorkerEvent {
public:
    explicit WorkerEvent(const QByteArray &line);

    /// Whether it is the event of that name.
    bool is(const char *name) const { return text(tnprotocol::key::event) == QLatin1String(name); }
    QString text(const char *key) const;
    QStringList texts(const char *key) const;
    double number(const char *key, double otherwise = 0.0) const;
    /// Never negative.
    double seconds() const;
    /// Nothing for a state that is none.
    std::optional<tnCADFileTypes::JobState> state() const;

    /// Hands an event from within a conversion on to who follows that; false when it makes no
    /// sense there.
    bool tell(ConversionObserver &observer) const;

private:
    const QJsonObject m_object;
};

} // namespace tnhost
