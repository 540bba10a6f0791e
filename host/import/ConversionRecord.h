#pragma once

#include "platform/tnCADFileTypes.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <vector>

namespace tnhost {

class ConversionObserver;

/// What a conversion has told of itself, other than how far it was, and which files it looked at.
struct ConversionRecord {
    struct Event {
        enum class Kind { Warning, Part, PartFinished };

        Kind kind = Kind::Warning;
        QString file;
        QString message;
        tnCADFileTypes::JobState state = tnCADFileTypes::JobState::Success;

        /// Tells it as if it happened now, in no time.
        void tell(ConversionObserver &observer) const;
    };
    /// A file that the result depends on.
    struct Reference {
        QString path;
        QByteArray hash; ///< of its content; empty: there was no such file
    };

    QByteArray toJson() const;
    /// Nothing for what toJson() has not written.
    static std::optional<ConversionRecord> fromJson(const QByteArray &json);

    std::vector<Event> events;
    std::vector<Reference> references;
};

} // namespace tnhost
