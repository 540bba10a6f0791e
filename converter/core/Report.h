#pragma once

#include "protocol/WorkerProtocol.h"

#include <string>

namespace tnconvert {

enum class State { Success, Failure, Incomplete };

/// The state's name in the worker protocol.
inline const char *stateName(State state)
{
    switch (state) {
    case State::Success:
        return tnprotocol::state::success;
    case State::Failure:
        return tnprotocol::state::failure;
    case State::Incomplete:
        return tnprotocol::state::incomplete;
    }
    return tnprotocol::state::failure;
}

struct Outcome {
    State state = State::Success;
    std::string message; ///< a sentence for the user, empty on success
    double seconds = 0;
};

/// Hears what happens while a file is converted.
class Report {
public:
    virtual ~Report() = default;
    Report() = default;
    Report(const Report &) = delete;
    Report &operator=(const Report &) = delete;

    /// @p percent from 0 to 100; may be called as often as the caller likes.
    virtual void progress(double percent, const std::string &message) = 0;
    virtual void warning(const std::string &message) = 0;
    /// The file is about to be looked at (absolute path), other than the input; what comes of the
    /// conversion depends on whether it exists, and on what it contains.
    virtual void reference(const std::string & /*file*/) { }
    /// A part file (absolute path) is about to be read.
    virtual void partStarted(const std::string &file) = 0;
    virtual void partFinished(const std::string &file, const Outcome &outcome) = 0;
};

} // namespace tnconvert
