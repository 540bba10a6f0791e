#pragma once

#include <chrono>
#include <string>

namespace tnconvert {

/// Lets through a readable number of progress reports, whose percents never fall.
class ProgressThrottle {
public:
    /// Raises @p percent to the last one let through and tells whether this report is worth
    /// passing on: it is whenever the message changes, at the end, and else 20 times a second.
    bool passes(double &percent, const std::string &message);

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_last;
    double m_percent = -1;
    std::string m_message;
};

} // namespace tnconvert
