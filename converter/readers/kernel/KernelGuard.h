#pragma once

#include <functional>

namespace tnconvert {

/// Runs pieces of the kernel's work so that what goes wrong in one of them ends that piece alone:
/// its exceptions, and the signals that it raises when it follows a null on damaged entities.
///
/// What a signal interrupts leaves no destructors behind it. A process in which one was caught
/// still delivers its file, but should convert no other. A guard within another one costs next to
/// nothing.
class KernelGuard {
public:
    /// Gives false when @p work did not come to its end. Other exceptions than the kernel's own go
    /// through, among them ConversionError and those for lack of memory.
    static bool run(const std::function<void()> &work);
};

} // namespace tnconvert
