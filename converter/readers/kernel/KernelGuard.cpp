#include "readers/kernel/KernelGuard.h"

// Without this the kernel's macro for catching signals is empty.
#ifndef OCC_CONVERT_SIGNALS
#define OCC_CONVERT_SIGNALS
#endif

#include <OSD.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <Standard_OutOfMemory.hxx>

#include <array>
#include <csignal>
#include <cstddef>

namespace tnconvert {

namespace {

int depth = 0; ///< of guards that are at work

/// The usual stack may be what has run out, over entities that refer to themselves. The kernel's
/// handler leaves by a jump, after which the system takes the other stack for free again.
void handleOnOwnStack(int signal)
{
    struct sigaction action { };
    sigaction(signal, nullptr, &action);
    action.sa_flags |= SA_ONSTACK;
    sigaction(signal, &action, nullptr);
}

/// Lets the kernel handle the signals of its own faults for as long as it lives.
class FaultSignals {
public:
    FaultSignals()
    {
        for (std::size_t i = 0; i < handled.size(); ++i)
            sigaction(handled[i], nullptr, &m_before[i]);
        OSD::SetSignal(OSD_SignalMode_Set, Standard_False);
        for (std::size_t i = 0; i < faults; ++i)
            handleOnOwnStack(handled[i]);
        for (std::size_t i = faults; i < handled.size(); ++i)
            sigaction(handled[i], &m_before[i], nullptr);
    }
    ~FaultSignals()
    {
        for (std::size_t i = 0; i < faults; ++i)
            sigaction(handled[i], &m_before[i], nullptr);
    }
    FaultSignals(const FaultSignals &) = delete;
    FaultSignals &operator=(const FaultSignals &) = delete;

private:
    /// All that the kernel sets. The first ones are faults; the others come from outside, and what
    /// they do is not the kernel's business.
    static constexpr std::array<int, 8> handled = {SIGSEGV, SIGBUS, SIGILL, SIGFPE,
                                                   SIGSYS,  SIGHUP, SIGINT, SIGQUIT};
    static constexpr std::size_t faults = 4;

    std::array<struct sigaction, handled.size()> m_before;
};

/// Counts a guard. A signal skips those of the guards below it, hence no mere increment.
class Depth {
public:
    Depth() { ++depth; }
    ~Depth() { depth = m_before; }
    Depth(const Depth &) = delete;
    Depth &operator=(const Depth &) = delete;

private:
    const int m_before = depth;
};

bool isDone(const std::function<void()> &work)
{
    try {
        OCC_CATCH_SIGNALS
        work();
        return true;
    } catch (const Standard_OutOfMemory &) {
        throw;
    } catch (const Standard_Failure &) {
        return false;
    }
}

} // namespace

bool KernelGuard::run(const std::function<void()> &work)
{
    const Depth counted;
    if (depth > 1)
        return isDone(work);
    const FaultSignals signals;
    return isDone(work);
}

} // namespace tnconvert
