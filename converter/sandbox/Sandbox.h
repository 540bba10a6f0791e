#pragma once

#include <string>

namespace tnconvert {

/// Takes the rights from this process that a conversion does not need, so that a file that gets the
/// better of a reader, or leads it astray, gains nothing by it.
class Sandbox {
public:
    Sandbox() = delete;

    /// Gives up what no conversion needs: network, other programs, the system's administration.
    /// Returns a sentence for the user when the system cannot enforce all of this or what confine()
    /// does; empty when it can. Before other threads are started.
    static std::string begin();

    /// Gives up all files but those of one conversion: reads those in the directory of @p input
    /// (all that the user may if @p followsOutside) and of the system's libraries, and writes to
    /// the directory of @p output. In a process that converts nothing else afterwards. Throws
    /// ConversionError when a system that can do it refuses.
    static void confine(const std::string &input, const std::string &output, bool followsOutside);
};

} // namespace tnconvert
