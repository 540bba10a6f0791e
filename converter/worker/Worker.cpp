#include "worker/Worker.h"

#include "conversion/Converter.h"
#include "core/ConversionError.h"
#include "core/Text.h"
#include "protocol/Formats.h"
#include "protocol/WorkerProtocol.h"
#include "readers/kernel/Kernel.h"
#include "sandbox/Sandbox.h"
#include "worker/ChildProcess.h"
#include "worker/ProcessSetup.h"
#include "worker/ProgramFiles.h"

#include <nlohmann/json.hpp>

#include <istream>
#include <system_error>

namespace tnconvert {

namespace command = tnprotocol::command;
namespace event = tnprotocol::event;
namespace key = tnprotocol::key;

namespace {

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
std::string problemOf(const nlohmann::json &request)
{
    if (!request.is_object())
        return "The request is no JSON object.";
    if (text(request, key::command) != command::convert)
        return "The request's command is neither \"convert\" nor \"quit\".";
    const nlohmann::json *id = member(request, key::id);
    if (!id || !id->is_number_integer())
        return "The request has no id.";
    for (const char *path : {key::input, key::output}) {
        if (text(request, path).empty())
            return std::string("The request has no ") + path + ".";
    }
    const nlohmann::json *type = member(request, key::type);
    if (type && !type->is_string())
        return "The request's type is no text.";
    const nlohmann::json *threads = member(request, key::threads);
    if (threads && (!threads->is_number_unsigned() || threads->get<std::uint64_t>() > 1024))
        return "The request's number of threads is none.";
    return {};
}

/// In a process of its own: what a file does to its process, no later one is to feel.
void convertRequest(const nlohmann::json &request, FileEvents &events)
{
    events.started();
    Job job;
    job.input = text(request, key::input);
    job.output = text(request, key::output);
    job.type = text(request, key::type);
    job.sourceId = text(request, key::sourceId);
    if (const nlohmann::json *threads = member(request, key::threads))
        job.threads = threads->get<int>();
    std::vector<std::string> warnings;
    if (const nlohmann::json *settings = member(request, key::settings))
        job.settings = Settings::fromJson(*settings, warnings);
    for (const std::string &warning : warnings)
        events.warning(warning);
    announceCrash(fileName(job.input) + " is damaged: the CAD kernel crashed on it.");
    job.confinesProcess = true;
    events.finished(convert(job, events));
}

} // namespace

Worker::Worker(int output)
    : m_stream(output)
{
}

int Worker::run(std::istream &requests)
{
    try {
        nlohmann::json ready = {{key::event, event::ready}, {key::version, tnprotocol::version}};
        ready[key::formats] = nlohmann::json::array();
        for (const tnprotocol::Format &format : tnprotocol::formats)
            ready[key::formats].push_back(format.name);
        ready[key::program] = ProgramFiles::paths();
        if (const std::string gap = Sandbox::begin(); !gap.empty())
            ready[key::message] = gap;
        m_stream.write(ready);
        // Once, rather than in the process of each file.
        prepareKernel();

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
    if (text(request, key::command) == command::quit)
        return false;
    const nlohmann::json *id = member(request, key::id);
    FileEvents events(m_stream, id && id->is_number_integer() ? id->get<std::int64_t>() : 0);
    const std::string problem = problemOf(request);
    if (!problem.empty()) {
        events.finished({State::Failure, problem, 0});
        return true;
    }

    try {
        ChildProcess::run([&] { convertRequest(request, events); });
    } catch (const ConversionError &error) {
        events.finished({State::Failure, error.what(), 0});
    }
    return true;
}

} // namespace tnconvert
