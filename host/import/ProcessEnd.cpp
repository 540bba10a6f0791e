#include "host/import/ProcessEnd.h"

#include <algorithm>
#include <csignal>
#include <iterator>

namespace tnhost {

namespace {

constexpr const char *crashed = "The converter crashed%1.";

/// %1 is the text about the file. Signals that are not listed come from outside.
constexpr struct {
    int signal;
    const char *sentence;
} ends[] = {
    {SIGSEGV, crashed},
    {SIGBUS, crashed},
    {SIGFPE, crashed},
    {SIGILL, crashed},
    {SIGABRT, crashed},
    {SIGKILL,
     "The converter was killed%1, by someone else or by the system, which does so when it runs out "
     "of memory."},
    {SIGXFSZ, "The converter was ended%1: it wrote a larger file than the system allows it."},
    {SIGXCPU, "The converter was ended%1: it took more processor time than the system allows it."},
};

} // namespace

QString ProcessEnd::sentence(int code, QProcess::ExitStatus status, const QString &whileReading)
{
    const QString number = QString::number(code);
    if (status == QProcess::NormalExit)
        return QStringLiteral("The converter ended%1 (exit status %2).").arg(whileReading, number);
    const auto *const end = std::find_if(std::begin(ends), std::end(ends),
                                         [code](const auto &each) { return each.signal == code; });
    if (end != std::end(ends))
        return QString::fromLatin1(end->sentence).arg(whileReading);
    return QStringLiteral("The converter was ended%1 by signal %2.").arg(whileReading, number);
}

} // namespace tnhost
