#include "worker/Worker.h"

#include "core/Converter.h"
#include "core/Text.h"
#include "readers/ReaderRegistry.h"
#include "worker/EventStream.h"
#include "worker/ProcessSetup.h"

#include <nlohmann/json.hpp>

#include <istream>
#include <system_error>

namespace tnconvert {

namespace {

constexpr int protocolVersion = 1;

const nlohmann::json *member(const nlohmann::json &object, const char *key)
{
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found == object.end() ? nullptr : &*found;
}

std::string text(const nlohmann::json &object, const char *key)
{
    const nlohmann::json *value = member(object, key);
    return value && value->is_string() ? value->get<std::string>() : std::string();
}

/// What is wrong with a request; empty when nothing is.
std::string objection(const nlohmann::json &request)
{
    if (!request.is_object())
        return "The request is no JSON object.";
    if (text(request, "command") != "convert")
        return "The request's command is neither \"convert\" nor \"quit\".";
    const nlohmann::json *id = member(request, "id");
    if (!id || !id->is_number_integer())
        return "The request has no id.";
    for (const char *key : {"input", "output"}) {
        if (text(request, key).empty())
            return std::string("The request has no ") + key + ".";
    }
    const nlohmann::json *type = member(request, "type");
    if (type && !type->is_string())
        return "The request's type is no text.";
    return {};
}

} // namespace

Worker::Worker(int output)
    : m_output(output)
{
}

int Worker::run(std::istream &requests)
{
    try {
        nlohmann::json ready = {{"event", "ready"}, {"version", protocolVersion}};
        ready["formats"] = nlohmann::json::array();
        for (const Format &format : formats())
            ready["formats"].push_back(format.name);
        EventStream(m_output).write(ready);

        std::string line;
        while (std::getline(requests, line)) {
            if (!serve(line))
                break;
        }
        return 0;
    } catch (const std::system_error &) {
        return 1;
    }
}

bool Worker::serve(const std::string &line)
{
    const nlohmann::json request = nlohmann::json::parse(line, nullptr, /*allow_exceptions*/ false);
    if (text(request, "command") == "quit")
        return false;
    const nlohmann::json *id = member(request, "id");
    const EventStream stream(m_output);
    FileEvents events(stream, id && id->is_number_integer() ? id->get<std::int64_t>() : 0);
    const std::string problem = objection(request);
    if (!problem.empty()) {
        events.finished({State::Failure, problem, 0});
        return true;
    }

    events.started();
    Job job;
    job.input = text(request, "input");
    job.output = text(request, "output");
    job.type = text(request, "type");
    std::vector<std::string> warnings;
    if (const nlohmann::json *settings = member(request, "settings"))
        job.settings = Settings::fromJson(*settings, warnings);
    for (const std::string &warning : warnings)
        events.warning(warning);
    announceCrash(fileName(job.input) + " is damaged: the CAD kernel crashed on it.");
    const Outcome outcome = convert(job, events);
    releaseFreeMemory();
    events.finished(outcome);
    return true;
}

} // namespace tnconvert
