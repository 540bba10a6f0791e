#include "worker/ProcessSetup.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tnconvert {

namespace {

constexpr int crashSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

/// The handler may not allocate, so the sentence waits in here.
char crashSentence[1024];
struct sigaction previousActions[std::size(crashSignals)];

extern "C" void reportCrash(int signal)
{
    const ssize_t ignored = write(STDERR_FILENO, crashSentence, std::strlen(crashSentence));
    (void)ignored;
    // After the return the fault happens again and goes to whoever was in charge before.
    for (std::size_t i = 0; i < std::size(crashSignals); ++i) {
        if (crashSignals[i] == signal)
            sigaction(signal, &previousActions[i], nullptr);
    }
}

} // namespace

void announceCrash(const std::string &sentence)
{
    std::snprintf(crashSentence, sizeof crashSentence, "tnconvert: %s\n", sentence.c_str());
    static const bool isInstalled = [] {
// The sanitizers have a signal stack of their own.
#ifndef __SANITIZE_ADDRESS__
        // The usual stack may be what has run out.
        static char stack[1 << 15];
        stack_t alternate{};
        alternate.ss_sp = stack;
        alternate.ss_size = sizeof stack;
        sigaltstack(&alternate, nullptr);
#endif
        struct sigaction action { };
        action.sa_handler = &reportCrash;
        action.sa_flags = SA_ONSTACK;
        for (std::size_t i = 0; i < std::size(crashSignals); ++i)
            sigaction(crashSignals[i], &action, &previousActions[i]);
        return true;
    }();
    (void)isInstalled;
}

int takeStandardOutput()
{
    std::fflush(stdout);
    const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (own >= 0 && dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        std::abort();
    return own;
}

void limitResources()
{
    constexpr struct {
        decltype(RLIMIT_AS) resource;
        rlim_t bound;
    } limits[] = {
        // A dump would hold the customer's data. Not 0, with which the kernel still starts the
        // program that takes dumps, where there is one.
        {RLIMIT_CORE, 1},
        {RLIMIT_NOFILE, 1024},
        {RLIMIT_CPU, rlim_t(4) * 3600}, // seconds of one file; each has a process of its own
        {RLIMIT_FSIZE, rlim_t(1) << 32}, // a binary glTF counts its bytes with 32 bits
// The sanitizers reserve terabytes of addresses for their own records.
#ifndef __SANITIZE_ADDRESS__
        {RLIMIT_AS, rlim_t(8) << 30},
#endif
    };
    for (const auto &[resource, bound] : limits) {
        rlimit limit{};
        if (getrlimit(resource, &limit) != 0)
            continue;
        limit.rlim_cur = std::min(limit.rlim_cur, bound); // infinity is the most
        // Nor can what a file brings in raise them again. Room to be told of the end by a signal.
        limit.rlim_max = std::min(limit.rlim_max, bound + 1);
        setrlimit(resource, &limit);
    }
    // A file that grows past the limit fails its writing, which has a sentence of its own.
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tnconvert
