#include "host/headless/Console.h"

#include "platform/tnLog.h"

#include <QtCore/QStringList>

#include <fcntl.h>
#include <unistd.h>

namespace tnhost {

namespace {

bool lostOutput = false;

} // namespace

void Console::print(std::FILE *stream, const QString &line)
{
    const bool isPrinted =
        std::fprintf(stream, "%s\n", tnLog::printable(line).toUtf8().constData()) >= 0
        && std::fflush(stream) == 0;
    lostOutput = lostOutput || (!isPrinted && stream != stderr);
}

bool Console::hasLostOutput()
{
    return lostOutput;
}

void Console::openMissingStreams()
{
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO)
        ::close(descriptor);
}

std::FILE *Console::takeStandardOutput()
{
    const int descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    std::FILE *stream = descriptor < 0 ? nullptr : ::fdopen(descriptor, "w");
    if (stream)
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
    return stream ? stream : stdout;
}

void Console::muteScreenWarnings()
{
    static QtMessageHandler before = nullptr;
    before = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
            if (!text.startsWith(QLatin1String("This plugin does not support")))
                before(type, context, text);
        });
}

} // namespace tnhost
