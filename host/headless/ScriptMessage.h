#pragma once

#include "platform/tnMessage.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace tnhost {

/// One line of a script as a message to the plug-ins, and their answer to it as a line. Both are
/// JSON.
class ScriptMessage {
public:
    /// Gives false, with a sentence in error, for a line that is no message.
    bool parse(const QByteArray &line, QString *error);

    const QString &command() const { return m_command; }
    tnMessage &message() { return m_message; }

    /// What the command has added to the message or changed in it, in that order. The keys of the
    /// attributes that have no JSON go into unknown.
    QByteArray answer(QStringList *unknown) const;
    /// The answer to a command that could not be run.
    QByteArray refusal(const QString &reason) const;
    /// The answer to a line that is no message.
    static QByteArray complaint(int line, const QString &reason);

private:
    QString m_command;
    tnMessage m_message;
    std::vector<QByteArray> m_sent; ///< the attributes before the call, as text with their type
};

} // namespace tnhost
