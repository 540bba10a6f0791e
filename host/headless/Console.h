#pragma once

#include <QtCore/QString>

#include <cstdio>

namespace tnhost {

/// The process's standard streams.
class Console {
public:
    Console() = delete;

    /// Writes a line, in UTF-8 and at once: whoever reads along, through a pipe as well, wants each
    /// line as it comes. A file's name, which a stranger may have chosen, is not to rule the
    /// terminal: control characters are written as \u001b, which JSON understands as well.
    static void print(std::FILE *stream, const QString &line);
    /// Whether a line was lost, for want of space on a disk say, that was not for the standard
    /// error stream.
    static bool hasLostOutput();
    /// A stream to the standard output, for the caller alone: what anybody else writes there goes
    /// to the standard error stream from now on. Once.
    static std::FILE *takeStandardOutput();
    /// Opens those of the three streams that the process was started without, on nothing: else the
    /// next file that is opened would take their place. Before anything else.
    static void openMissingStreams();
    /// Leaves out what Qt says about every window on a screen that does not exist.
    static void muteScreenWarnings();
};

} // namespace tnhost
