#pragma once

#include "host/import/ConverterWorker.h"

#include <QtCore/QString>

#include <optional>

namespace tnhost {

/// What the user lets the converters do and take.
class LimitPreferences {
public:
    LimitPreferences() = delete;

    /// "120", in seconds: the milliseconds. Nothing for what is no number from 0 to a million.
    static std::optional<int> silence(const QString &text);
    /// "500M", "6G", "6.5g" or plain bytes: the bytes. Nothing for what is no such size.
    static std::optional<qint64> memory(const QString &text);
    /// "true" or "false". Nothing for all else.
    static std::optional<bool> permission(const QString &text);
    /// The host's settings "limits/silence", "limits/memory", "limits/followOutside" and
    /// "limits/fullSource", written as above. What is not set, or not understood (the log says so),
    /// is as the host has it: 120 seconds, three quarters of the machine's memory, and false.
    static WorkerLimits read();
    /// Bytes of earlier results to keep: the setting "cache/size", written as a memory size; 2 GiB
    /// without it. 0: none are kept or used.
    static qint64 cacheSize();
};

} // namespace tnhost
