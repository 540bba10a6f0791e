#pragma once

namespace tnconvert {

/// The system calls that a process does without, as a filter in the system.
class SystemCallFilter {
public:
    SystemCallFilter() = delete;

    /// Makes calls fail that reach for the network, other programs and processes, or the system as
    /// a whole, in this process and all that it starts, for good. False when the system cannot.
    static bool install();
};

} // namespace tnconvert
