#include "worker/EventStream.h"

#include "worker/ProcessSetup.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cmath>
#include <system_error>

#include <unistd.h>

namespace tnconvert {

namespace {

double milliseconds(double seconds)
{
    return std::round(seconds * 1000) / 1000;
}

} // namespace

void EventStream::write(const nlohmann::json &event) const
{
    // File names need not be valid text; an event always is.
    const std::string line =
        event.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    std::size_t done = 0;
    while (done < line.size()) {
        const ssize_t count = ::write(m_output, line.data() + done, line.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw std::system_error(errno, std::generic_category());
        done += std::size_t(count);
    }
}

FileEvents::FileEvents(const EventStream &stream, std::int64_t id)
    : m_stream(stream)
    , m_id(id)
{
}

nlohmann::json FileEvents::event(const char *name) const
{
    return {{"event", name}, {"id", m_id}};
}

void FileEvents::started()
{
    m_stream.write(event("started"));
}

void FileEvents::finished(const Outcome &outcome)
{
    nlohmann::json line = event("finished");
    line["state"] = stateName(outcome.state);
    line["seconds"] = milliseconds(outcome.seconds);
    line["message"] = outcome.message;
    line["memory"] = residentMemory();
    m_stream.write(line);
}

void FileEvents::progress(double percent, const std::string &message)
{
    if (!m_throttle.passes(percent, message))
        return;
    nlohmann::json line = event("progress");
    line["percent"] = std::round(percent * 10) / 10;
    line["message"] = message;
    m_stream.write(line);
}

void FileEvents::warning(const std::string &message)
{
    nlohmann::json line = event("warning");
    line["message"] = message;
    m_stream.write(line);
}

void FileEvents::partStarted(const std::string &file)
{
    nlohmann::json line = event("part");
    line["file"] = file;
    m_stream.write(line);
}

void FileEvents::partFinished(const std::string &file, const Outcome &outcome)
{
    nlohmann::json line = event("partFinished");
    line["file"] = file;
    line["state"] = stateName(outcome.state);
    line["seconds"] = milliseconds(outcome.seconds);
    line["message"] = outcome.message;
    m_stream.write(line);
}

} // namespace tnconvert
