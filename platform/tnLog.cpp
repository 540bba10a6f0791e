#include "platform/tnLog.h"

#include <QtCore/QStringList>

#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace {

struct LogState {
    std::mutex mutex;
    tnLog::Sink sink;
};

LogState &state()
{
    static auto *const all = new LogState;
    return *all;
}

void emitText(tnLog::Level level, const QString &text)
{
    tnLog::Sink sink;
    {
        const std::lock_guard<std::mutex> lock(state().mutex);
        sink = state().sink;
    }
    if (sink) {
        sink(level, text);
        return;
    }
    static constexpr const char *prefixes[] = {"", "Warning: ", "Error: "};
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        std::fprintf(stderr, "%s%s\n", prefixes[static_cast<int>(level)],
                     tnLog::printable(line).toUtf8().constData());
    }
}

} // namespace

#define TN_LOG(level)                                                                              \
    va_list arguments;                                                                             \
    va_start(arguments, format);                                                                   \
    const QString text = QString::vasprintf(format, arguments);                                    \
    va_end(arguments);                                                                             \
    emitText(level, text)

void tnLog::info(const char *format, ...)
{
    TN_LOG(Level::Info);
}

void tnLog::warning(const char *format, ...)
{
    TN_LOG(Level::Warning);
}

void tnLog::error(const char *format, ...)
{
    TN_LOG(Level::Error);
}

QString tnLog::printable(const QString &line)
{
    QString result;
    for (const QChar character : line) {
        if (character.category() == QChar::Other_Control)
            result += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

void tnLog::setSink(Sink sink)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().sink = std::move(sink);
}
