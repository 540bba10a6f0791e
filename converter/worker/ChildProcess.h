#pragma once

#include <functional>

namespace tnconvert {

/// A copy of this process that does one thing and ends.
class ChildProcess {
public:
    ChildProcess() = delete;

    /// Does @p work in a copy of this process and waits for its end. The copy has an empty standard
    /// input and dies with this process. If it ends by a signal or a fault this process ends in the
    /// same way, so that whoever waits for this one learns the reason. Throws ConversionError, with
    /// nothing done, when the system has no room for another process.
    static void run(const std::function<void()> &work);
};

} // namespace tnconvert
