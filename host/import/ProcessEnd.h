#pragma once

#include <QtCore/QProcess>
#include <QtCore/QString>

namespace tnhost {

/// Words for how a converter process came to its end.
class ProcessEnd {
public:
    ProcessEnd() = delete;

    /// A sentence for the user, as true as the system's account allows: only the signals of a
    /// process's own faults are a crash. @p code is the exit status, after CrashExit the signal;
    /// @p whileReading stands behind the first words (" while reading a.step").
    static QString sentence(int code, QProcess::ExitStatus status, const QString &whileReading);
};

} // namespace tnhost
