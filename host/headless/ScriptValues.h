#pragma once

#include <boost/any.hpp>

#include <QtCore/QJsonValue>
#include <QtCore/QString>

namespace tnhost {

/// JSON on one side, the attributes of messages with their exact C++ types on the other.
class ScriptValues {
public:
    ScriptValues() = delete;

    /// The value as an attribute of that name for that command: of the type that the command reads,
    /// where the value fits it; of the type that an object with one key names; else of the type
    /// that comes nearest to the value. Empty, with a sentence in error, for all others.
    ///
    /// Paths in "files" and "urls" are made absolute.
    static boost::any fromJson(const QString &command, const QString &key, const QJsonValue &value,
                               QString *error);
    /// The attribute's value. False, and null in value, for a type that has none.
    static bool toJson(const boost::any &attribute, QJsonValue *value);
};

} // namespace tnhost
