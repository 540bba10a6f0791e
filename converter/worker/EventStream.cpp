#include "worker/EventStream.h"

#include "protocol/WorkerProtocol.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cmath>
#include <system_error>

#include <unistd.h>

namespace tnconvert {

namespace event = tnprotocol::event;
namespace key = tnprotocol::key;

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

nlohmann::json FileEvents::newEvent(const char *name) const
{
    return {{key::event, name}, {key::id, m_id}};
}

void FileEvents::started()
{
    m_stream.write(newEvent(event::started));
}

void FileEvents::finished(const Outcome &outcome)
{
    nlohmann::json line = newEvent(event::finished);
    line[key::state] = stateName(outcome.state);
    line[key::seconds] = milliseconds(outcome.seconds);
    line[key::message] = outcome.message;
    m_stream.write(line);
}

void FileEvents::progress(double percent, const std::string &message)
{
    if (!m_throttle.passes(percent, message))
        return;
    nlohmann::json line = newEvent(event::progress);
    line[key::percent] = std::round(percent * 10) / 10;
    line[key::message] = message;
    m_stream.write(line);
}

void FileEvents::warning(const std::string &message)
{
    nlohmann::json line = newEvent(event::warning);
    line[key::message] = message;
    m_stream.write(line);
}

void FileEvents::reference(const std::string &file)
{
    if (!m_references.insert(file).second)
        return;
    nlohmann::json line = newEvent(event::reference);
    line[key::file] = file;
    m_stream.write(line);
}

void FileEvents::partStarted(const std::string &file)
{
    nlohmann::json line = newEvent(event::part);
    line[key::file] = file;
    m_stream.write(line);
}

void FileEvents::partFinished(const std::string &file, const Outcome &outcome)
{
    nlohmann::json line = newEvent(event::partFinished);
    line[key::file] = file;
    line[key::state] = stateName(outcome.state);
    line[key::seconds] = milliseconds(outcome.seconds);
    line[key::message] = outcome.message;
    m_stream.write(line);
}

} // namespace tnconvert
