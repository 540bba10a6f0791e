#pragma once

#include <string>

namespace tnconvert {

/// Ends this process when a conversion has had no news for too long, as the host does with its
/// workers. There is one in a process.
class SilenceLimit {
public:
    /// Of the conversion of @p input, whose half @p output is removed at such an end. The process
    /// says so on the standard error and ends with 1 after @p seconds without news; 0: never.
    SilenceLimit(const std::string &input, const std::string &output, unsigned seconds);

    /// There are news: the time begins again.
    void restart() const;

private:
    const unsigned m_seconds;
};

} // namespace tnconvert
