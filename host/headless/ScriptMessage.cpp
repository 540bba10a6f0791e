#include "host/headless/ScriptMessage.h"

#include "host/headless/ScriptValues.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace tnhost {

namespace {

QByteArray text(const QJsonValue &value)
{
    // A document is an array or an object, never a single value.
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return list.mid(1, list.size() - 2);
}

QByteArray typedText(const boost::any &attribute)
{
    QJsonValue value;
    ScriptValues::toJson(attribute, &value);
    return attribute.type().name() + (' ' + text(value));
}

} // namespace

bool ScriptMessage::parse(const QByteArray &line, QString *error)
{
    QJsonParseError problem{};
    const QJsonDocument document = QJsonDocument::fromJson(line, &problem);
    if (!document.isObject()) {
        *error = problem.error == QJsonParseError::NoError ? QStringLiteral("not an object")
                                                           : problem.errorString();
        return false;
    }
    const QJsonObject object = document.object();
    m_command = object.value(QLatin1String("message")).toString();
    if (m_command.isEmpty()) {
        *error = QStringLiteral("there is no \"message\" that names a command");
        return false;
    }
    const QJsonValue attributes = object.value(QLatin1String("attributes"));
    if (!attributes.isObject() && !attributes.isUndefined()) {
        *error = QStringLiteral("\"attributes\" is no object");
        return false;
    }
    // A misspelt key would otherwise be a message without its attributes.
    if (object.size() != (attributes.isUndefined() ? 1 : 2)) {
        *error = QStringLiteral("there is more than \"message\" and \"attributes\"");
        return false;
    }
    const QJsonObject values = attributes.toObject();
    for (auto it = values.begin(); it != values.end(); ++it) {
        boost::any value = ScriptValues::fromJson(m_command, it.key(), it.value(), error);
        if (value.empty())
            return false;
        m_sent.push_back(typedText(value));
        m_message.set(it.key().toStdString(), std::move(value), true);
    }
    return true;
}

QByteArray ScriptMessage::answer(QStringList *unknown) const
{
    // An object of QJsonObject would sort its keys.
    QByteArray pairs;
    std::size_t position = 0;
    for (const auto &[name, attribute] : m_message.attributes()) {
        const bool wasSent = position < m_sent.size();
        if (wasSent && m_sent[position++] == typedText(attribute))
            continue;
        const QString key = QString::fromStdString(name);
        QJsonValue value;
        if (!ScriptValues::toJson(attribute, &value))
            *unknown << key;
        if (!pairs.isEmpty())
            pairs += ',';
        pairs += text(key) + ':' + text(value);
    }
    return "{\"message\":" + text(m_command) + ",\"answer\":{" + pairs + "}}";
}

QByteArray ScriptMessage::refusal(const QString &reason) const
{
    return "{\"message\":" + text(m_command) + ",\"error\":" + text(reason) + '}';
}

QByteArray ScriptMessage::complaint(int line, const QString &reason)
{
    return "{\"line\":" + QByteArray::number(line) + ",\"error\":" + text(reason) + '}';
}

} // namespace tnhost
