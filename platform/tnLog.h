#pragma once

#include "platform/tnPlatformExport.h"

#include <QtCore/QString>

#include <functional>

/// The host's log. printf-style; texts are UTF-8, without a line break at the end. From any thread.
class TNPLATFORM_EXPORT tnLog {
public:
    enum class Level { Info, Warning, Error };
    using Sink = std::function<void(Level level, const QString &text)>;

    tnLog() = delete;

    static void info(const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(1, 2);
    static void warning(const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(1, 2);
    static void error(const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(1, 2);

    /// Where the log goes; without one to the standard error stream, line by line and printable.
    /// The sink is called in the thread that logs.
    static void setSink(Sink sink);

    /// A line without control characters, which may rule the terminal that it is printed to: they
    /// become \u001b and the like, which JSON understands as well.
    static QString printable(const QString &line);
};
