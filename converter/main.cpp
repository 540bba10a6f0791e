#include "conversion/Converter.h"
#include "core/ForkedProcess.h"
#include "core/Libraries.h"
#include "core/Text.h"
#include "protocol/Formats.h"
#include "protocol/WorkerProtocol.h"
#include "sandbox/Sandbox.h"
#include "worker/ProcessSetup.h"
#include "worker/ProgressThrottle.h"
#include "worker/SilenceLimit.h"
#include "worker/Worker.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include <unistd.h>

namespace {

using namespace tnconvert;

constexpr double largestSilence = 1e6; ///< seconds, as for the host

enum ExitCode { ExitSuccess = 0, ExitFailure = 1, ExitUsage = 2, ExitIncomplete = 3 };

constexpr const char *usage =
    "Usage: tnconvert IN OUT.glb [OPTIONS]\n"
    "       tnconvert --worker\n"
    "\n"
    "Converts a CAD file to glTF 2.0 binary.\n"
    "\n"
    "  --settings FILE.json  options of the translation by field name\n"
    "  --silence SECONDS     end when nothing new is reported for so long, 120 without it; 0: "
    "never\n"
    "  --follow-outside      follow references out of the folder of IN\n"
    "  --full-source         note the path of IN in OUT.glb rather than its name alone\n"
    "  --healing full|needed heal all of the shapes of a Step file, or only what cannot be used\n"
    "                        otherwise, which is the default\n"
    "  --threads N           work on N cores at most; 0, the default: on all\n"
    "  --worker              serve requests on the standard input, one JSON object on each line\n"
    "  --list-formats        list the file types and their suffixes\n"
    "  --version             print the version\n"
    "  --libraries           list the libraries and their versions\n"
    "  --help                print this text\n"
    "\n"
    "Exit codes: 0 success, 1 failure, 2 wrong usage, 3 parts of an assembly are missing.\n";

/// A conversion as the command line asks for it.
struct Call {
    Job job;
    std::string settingsFile;
    nlohmann::json switched = nlohmann::json::object(); ///< wins over what the file says
    unsigned silence = 120; ///< seconds
};

/// Writes for a person on the standard error how the conversion goes.
class ConsoleReport : public Report {
public:
    explicit ConsoleReport(const SilenceLimit &silence)
        : m_silence(silence)
    {
    }
    void progress(double percent, const std::string &message) override
    {
        if (!m_throttle.passes(percent, message))
            return;
        m_silence.restart();
        const std::string line = message + ": " + std::to_string(std::lround(percent)) + " %\n";
        if (line != m_line)
            std::cerr << line;
        m_line = line;
    }
    void warning(const std::string &message) override
    {
        m_silence.restart();
        std::cerr << "Warning: " << message << '\n';
    }
    void partStarted(const std::string &file) override
    {
        m_silence.restart();
        std::cerr << "Reading part " << validUtf8(file) << '\n';
    }
    void partFinished(const std::string &file, const Outcome &outcome) override
    {
        m_silence.restart();
        if (outcome.state != State::Success)
            std::cerr << "Warning: part " << validUtf8(file) << ": " << outcome.message << '\n';
    }

private:
    const SilenceLimit &m_silence;
    ProgressThrottle m_throttle;
    std::string m_line; ///< the last one
};

void listFormats()
{
    for (const tnprotocol::Format &format : tnprotocol::formats) {
        std::cout << format.name << ':';
        for (const char *suffix : format.suffixes) {
            if (suffix)
                std::cout << " ." << suffix;
        }
        std::cout << '\n';
    }
}

/// A number of a few digits; nothing when @p text is something else.
std::optional<int> count(const std::string &text)
{
    if (text.empty() || text.size() > 4 || text.find_first_not_of("0123456789") != text.npos)
        return std::nullopt;
    return std::stoi(text);
}

int wrongUsage(const std::string &what)
{
    std::cerr << "tnconvert: " << validUtf8(what) << "\n\n" << usage;
    return ExitUsage;
}

/// The content of the settings file; nothing when it cannot be read.
std::optional<nlohmann::json> readSettings(const std::string &path)
{
    const std::ifstream file(path);
    // A directory opens like a file and fails only when it is read, past the parser's own errors.
    std::ostringstream content;
    content << file.rdbuf();
    nlohmann::json object =
        nlohmann::json::parse(content.str(), nullptr, /*allow_exceptions*/ false);
    if (!object.is_object())
        return std::nullopt;
    return object;
}

/// Options that set a switch of the settings.
constexpr struct {
    const char *option;
    const char *field;
} switches[] = {{"--follow-outside", "FollowOutside"}, {"--full-source", "FullSource"}};

/// The name of the field that @p option switches on; null when it is none of these options.
const char *switchedBy(const std::string &option)
{
    for (const auto &[name, field] : switches) {
        if (option == name)
            return field;
    }
    return nullptr;
}

int convertOne(Call call)
{
    Job &job = call.job;
    nlohmann::json object = nlohmann::json::object();
    if (!call.settingsFile.empty()) {
        const std::optional<nlohmann::json> stated = readSettings(call.settingsFile);
        if (!stated) {
            std::cerr << "tnconvert: " << validUtf8(call.settingsFile)
                      << " is no readable JSON object.\n";
            return ExitFailure;
        }
        object = *stated;
    }
    object.update(call.switched);
    const SilenceLimit silence(job.input, job.output, call.silence);
    ConsoleReport report(silence);
    std::vector<std::string> warnings;
    job.settings = Settings::fromJson(object, warnings);
    if (const std::string gap = Sandbox::begin(); !gap.empty())
        warnings.push_back(gap);
    job.confinesProcess = true;
    for (const std::string &warning : warnings)
        report.warning(warning);
    announceCrash(fileName(job.input) + " is damaged: the CAD kernel crashed on it.");
    const Outcome outcome = convert(job, report);
    if (!outcome.message.empty())
        std::cerr << "tnconvert: " << outcome.message << '\n';
    switch (outcome.state) {
    case State::Success:
        return ExitSuccess;
    case State::Incomplete:
        return ExitIncomplete;
    case State::Failure:
        break;
    }
    return ExitFailure;
}

int runWorker()
{
    const int output = takeStandardOutput();
    if (output < 0)
        return ExitFailure;
    dieWithParent(getppid());
    limitResources();
    // A vanished host is noticed by the failing write.
    std::signal(SIGPIPE, SIG_IGN);
    return Worker(output).run(std::cin);
}

int run(const std::vector<std::string> &arguments)
{
    std::vector<std::string> files;
    Call call;
    call.job.threads = 0;
    bool acceptsOptions = true;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        if (!acceptsOptions || argument.empty() || argument[0] != '-') {
            files.push_back(argument);
        } else if (argument == "--") {
            acceptsOptions = false;
        } else if (argument == "--help") {
            std::cout << usage;
            return ExitSuccess;
        } else if (argument == "--version") {
            std::cout << "tnconvert " TN_VERSION "\n";
            return ExitSuccess;
        } else if (argument == "--libraries") {
            for (const std::string &library : libraryVersions())
                std::cout << library << '\n';
            return ExitSuccess;
        } else if (argument == "--list-formats") {
            listFormats();
            return ExitSuccess;
        } else if (argument == tnprotocol::workerOption && arguments.size() == 1) {
            return runWorker();
        } else if (argument == "--settings" && i + 1 < arguments.size()) {
            call.settingsFile = arguments[++i];
        } else if (argument == "--silence" && i + 1 < arguments.size()) {
            const double seconds = parseNumber(arguments[++i]).value_or(-1);
            if (seconds < 0 || seconds > largestSilence || std::floor(seconds) != seconds)
                return wrongUsage("--silence wants a whole number of seconds.");
            call.silence = unsigned(seconds);
        } else if (argument == "--healing" && i + 1 < arguments.size()) {
            const std::string &healing = arguments[++i];
            if (healing != "full" && healing != "needed")
                return wrongUsage("the healing " + healing + " is not known.");
            call.switched["Healing"] = healing;
        } else if (argument == "--threads" && i + 1 < arguments.size()) {
            const std::optional<int> threads = count(arguments[++i]);
            if (!threads)
                return wrongUsage("the number of threads " + arguments[i] + " is not understood.");
            call.job.threads = *threads;
        } else if (const char *field = switchedBy(argument)) {
            call.switched[field] = true;
        } else {
            return wrongUsage("the argument " + argument + " is not understood here.");
        }
    }
    if (files.size() != 2)
        return wrongUsage("one input and one output are needed.");
    takeStandardOutput();
    limitResources();
    call.job.input = files[0];
    call.job.output = files[1];
    const int result = convertOne(std::move(call));
    std::fflush(nullptr);
    // To free all memory piece by piece takes time, and a confined process can do little else.
    std::_Exit(result);
}

} // namespace

int main(int argc, char **argv)
{
    // An abort would blame the last file for what went wrong outside its conversion.
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception &error) {
        std::cerr << "tnconvert: " << error.what() << '\n';
        return ExitFailure;
    }
}
