#include "host/services/LimitPreferences.h"

#include "host/services/MachineMemory.h"
#include "platform/tnLog.h"

#include <QtCore/QSettings>

#include <cmath>

namespace tnhost {

namespace {

template <typename Value>
void readSetting(const char *key, std::optional<Value> (*parse)(const QString &), Value &value)
{
    const QString text = QSettings().value(QLatin1String(key)).toString();
    if (text.isEmpty())
        return;
    if (const std::optional<Value> parsed = parse(text))
        value = *parsed;
    else
        tnLog::warning("The setting %s is not understood: %s", key, qUtf8Printable(text));
}

} // namespace

std::optional<int> LimitPreferences::silence(const QString &text)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0.0 && seconds <= 1e6))
        return std::nullopt;
    return static_cast<int>(std::ceil(seconds * 1000.0));
}

std::optional<qint64> LimitPreferences::memory(const QString &text)
{
    const int unit = text.isEmpty() ? -1 : QStringLiteral("KMGT").indexOf(text.back().toUpper());
    bool isNumber = false;
    const double number = (unit < 0 ? text : text.chopped(1)).toDouble(&isNumber);
    const double bytes = std::ldexp(number, 10 * (unit + 1));
    if (!isNumber || !(bytes >= 0.0 && bytes <= 1e18))
        return std::nullopt;
    return static_cast<qint64>(bytes);
}

std::optional<bool> LimitPreferences::permission(const QString &text)
{
    if (text != QLatin1String("true") && text != QLatin1String("false"))
        return std::nullopt;
    return text == QLatin1String("true");
}

qint64 LimitPreferences::cacheSize()
{
    qint64 size = qint64(2) << 30;
    readSetting("cache/size", &LimitPreferences::memory, size);
    return size;
}

WorkerLimits LimitPreferences::read()
{
    WorkerLimits limits;
    limits.budget = MachineMemory::total() / 4 * 3;
    readSetting("limits/silence", &LimitPreferences::silence, limits.silence);
    readSetting("limits/memory", &LimitPreferences::memory, limits.budget);
    readSetting("limits/followOutside", &LimitPreferences::permission, limits.followOutside);
    readSetting("limits/fullSource", &LimitPreferences::permission, limits.fullSource);
    return limits;
}

} // namespace tnhost
