#include "host/headless/ScriptValues.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <typeinfo>
#include <vector>

namespace tnhost {

namespace {

struct AttributeType {
    const char *command;
    const char *key;
    const char *type;
};

/// What the commands read.
constexpr AttributeType attributeTypes[] = {
    {"importCAD", "parentNodeId", "unsigned int"},
    {"importCAD", "loadState", "int"},
    {"importCAD", "wait", "bool"},
    {"importCAD", "urls", "QList<QUrl>"},
    {"importCAD", "files", "std::vector<QString>"},
    {"reloadCAD", "wait", "bool"},
    {"reloadCAD", "parent", "int"},
    {"reloadCAD", "files", "QStringList"},
    {"reloadCAD", "showDialog", "bool"},
    {"reloadCAD", "startImport", "bool"},
};

bool isUrl(const QString &text)
{
    return text.contains(QLatin1String("://"));
}

QString absolute(const QString &path)
{
    if (path.isEmpty() || isUrl(path))
        return path;
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

// From JSON: true when the value fits the type.

bool read(const QJsonValue &json, bool &value)
{
    value = json.toBool();
    return json.isBool();
}

bool read(const QJsonValue &json, double &value)
{
    value = json.toDouble();
    return json.isDouble();
}

template <typename Integer>
bool read(const QJsonValue &json, Integer &value)
{
    using Limits = std::numeric_limits<Integer>;
    const double number = json.toDouble(0.5);
    if (std::trunc(number) != number || number < static_cast<double>(Limits::min())
        || number > static_cast<double>(Limits::max()))
        return false;
    value = static_cast<Integer>(number);
    return true;
}

bool read(const QJsonValue &json, QString &value)
{
    value = json.toString();
    return json.isString();
}

bool read(const QJsonValue &json, QStringList &value)
{
    for (const auto &element : json.toArray()) {
        if (!element.isString())
            return false;
        value << element.toString();
    }
    return json.isArray();
}

bool read(const QJsonValue &json, std::vector<QString> &value)
{
    QStringList list;
    const bool fits = read(json, list);
    value.assign(list.begin(), list.end());
    return fits;
}

bool read(const QJsonValue &json, QList<QUrl> &value)
{
    QStringList list;
    const bool fits = read(json, list);
    for (const QString &text : list)
        value << (isUrl(text) ? QUrl(text) : QUrl::fromLocalFile(text));
    return fits;
}

// To JSON.

template <typename Value>
QJsonValue write(const Value &value)
{
    return QJsonValue(value);
}

QJsonValue write(const unsigned int &value)
{
    return static_cast<double>(value);
}

QJsonValue write(const QStringList &value)
{
    return QJsonArray::fromStringList(value);
}

QJsonValue write(const std::vector<QString> &value)
{
    return write(QStringList(value.begin(), value.end()));
}

QJsonValue write(const QList<QUrl> &value)
{
    return write(QUrl::toStringList(value));
}

/// A type of attributes.
struct ValueType {
    const char *name;
    const std::type_info &type;
    boost::any (*fromJson)(const QJsonValue &json); ///< empty when it does not fit
    QJsonValue (*toJson)(const boost::any &value);
};

template <typename Value>
ValueType valueType(const char *name)
{
    return {name, typeid(Value),
            [](const QJsonValue &json) {
                Value value{};
                return read(json, value) ? boost::any(value) : boost::any();
            },
            [](const boost::any &value) { return write(*boost::unsafe_any_cast<Value>(&value)); }};
}

const ValueType valueTypes[] = {
    valueType<bool>("bool"),
    valueType<int>("int"),
    valueType<unsigned int>("unsigned int"),
    valueType<double>("double"),
    valueType<QString>("QString"),
    valueType<QStringList>("QStringList"),
    valueType<std::vector<QString>>("std::vector<QString>"),
    valueType<QList<QUrl>>("QList<QUrl>"),
};

/// The types that a value is tried for, first to last, when nobody says which.
constexpr const char *naturalTypes[] = {"bool", "int", "double", "QString", "QStringList"};

const ValueType *typeOf(const QString &name)
{
    const auto found =
        std::find_if(std::begin(valueTypes), std::end(valueTypes),
                     [&name](const ValueType &each) { return name == QLatin1String(each.name); });
    return found == std::end(valueTypes) ? nullptr : found;
}

boost::any convert(const char *type, const QJsonValue &json)
{
    return typeOf(QLatin1String(type))->fromJson(json);
}

QJsonValue withAbsolutePaths(const QString &key, const QJsonValue &json)
{
    if (!json.isArray() || (key != QLatin1String("files") && key != QLatin1String("urls")))
        return json;
    QJsonArray paths;
    for (const auto &element : json.toArray())
        paths << (element.isString() ? QJsonValue(absolute(element.toString()))
                                     : QJsonValue(element));
    return paths;
}

} // namespace

boost::any ScriptValues::fromJson(const QString &command, const QString &key,
                                  const QJsonValue &value, QString *error)
{
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        const ValueType *type = object.size() == 1 ? typeOf(object.begin().key()) : nullptr;
        boost::any result;
        if (type)
            result = type->fromJson(withAbsolutePaths(key, object.begin().value()));
        if (result.empty())
            *error = type
                ? QStringLiteral("the value of \"%1\" is no %2").arg(key, QLatin1String(type->name))
                : QStringLiteral("the object of \"%1\" names no type").arg(key);
        return result;
    }

    const QJsonValue json = withAbsolutePaths(key, value);
    for (const AttributeType &each : attributeTypes) {
        if (command != QLatin1String(each.command) || key != QLatin1String(each.key))
            continue;
        boost::any result = convert(each.type, json);
        if (!result.empty())
            return result;
    }
    for (const char *type : naturalTypes) {
        boost::any result = convert(type, json);
        if (!result.empty())
            return result;
    }
    *error = QStringLiteral("\"%1\" is neither a truth value, a number, a text nor a list of texts")
                 .arg(key);
    return {};
}

bool ScriptValues::toJson(const boost::any &attribute, QJsonValue *value)
{
    // By name: a plug-in may have its own type information.
    for (const ValueType &each : valueTypes) {
        if (std::strcmp(attribute.type().name(), each.type.name()) != 0)
            continue;
        *value = each.toJson(attribute);
        return true;
    }
    *value = QJsonValue();
    return false;
}

} // namespace tnhost
