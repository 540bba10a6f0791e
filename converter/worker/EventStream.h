#pragma once

#include "core/Report.h"
#include "worker/ProgressThrottle.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <set>

namespace tnconvert {

/// Writes events as lines of JSON.
class EventStream {
public:
    explicit EventStream(int output)
        : m_output(output)
    {
    }

    /// Writes one line at once. Throws std::system_error when nobody reads it.
    void write(const nlohmann::json &event) const;

private:
    int m_output;
};

/// The events of one file.
class FileEvents : public Report {
public:
    FileEvents(const EventStream &stream, std::int64_t id);

    void started();
    void finished(const Outcome &outcome);

    void progress(double percent, const std::string &message) override;
    void warning(const std::string &message) override;
    void reference(const std::string &file) override;
    void partStarted(const std::string &file) override;
    void partFinished(const std::string &file, const Outcome &outcome) override;

private:
    nlohmann::json newEvent(const char *name) const;

    const EventStream &m_stream;
    const std::int64_t m_id;
    ProgressThrottle m_throttle;
    std::set<std::string> m_references; ///< a file may name another one many times
};

} // namespace tnconvert
