#pragma once

#include <QtCore/QString>

#include <cstdio>

/// The process's standard streams.
class Console {
public:
    Console() = delete;

    /// Writes a line, in UTF-8 and at once: whoever reads along, through a pipe as well, wants each
    /// line as it comes.
    static void print(std::FILE *stream, const QString &line);
    /// A stream to the standard output, for the caller alone: what anybody else writes there goes
    /// to the standard error stream from now on. Once.
    static std::FILE *takeStandardOutput();
    /// Leaves out what Qt says about every window on a screen that does not exist.
    static void muteScreenWarnings();
};
