#include "worker/SilenceLimit.h"

#include "core/Text.h"
#include "protocol/WorkerProtocol.h"

#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace tnconvert {

namespace {

/// What the handler needs, which may not allocate.
std::string sentence;
std::string partial;

extern "C" void endSilently(int)
{
    const ssize_t ignored = write(STDERR_FILENO, sentence.data(), sentence.size());
    (void)ignored;
    unlink(partial.c_str());
    _exit(EXIT_FAILURE);
}

} // namespace

SilenceLimit::SilenceLimit(const std::string &input, const std::string &output, unsigned seconds)
    : m_seconds(seconds)
{
    sentence = "tnconvert: The conversion of " + fileName(input) + " reported nothing for "
        + std::to_string(seconds) + " seconds and was ended.\n";
    partial = output + tnprotocol::partialSuffix;
    struct sigaction action { };
    action.sa_handler = &endSilently;
    action.sa_flags = SA_ONSTACK; // the kernel may have filled the usual one
    sigaction(SIGALRM, &action, nullptr);
    restart();
}

void SilenceLimit::restart() const
{
    alarm(m_seconds);
}

} // namespace tnconvert
