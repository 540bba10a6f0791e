#include "host/app/CommandLine.h"
#include "host/app/MainWindow.h"
#include "host/app/PluginLoader.h"
#include "host/app/SignalWatcher.h"
#include "host/headless/BatchRunner.h"
#include "host/headless/Console.h"
#include "host/headless/FileCollector.h"
#include "host/headless/ScriptRunner.h"
#include "host/import/ResultStore.h"
#include "host/import/TmpDirectory.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"
#include "host/services/LimitPreferences.h"
#include "host/view/PictureFile.h"
#include "platform/tnController.h"
#include "platform/tnFile.h"
#include "platform/tnLog.h"

#include <QtCore/QFile>
#include <QtCore/QTextCodec>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <memory>

using namespace tnhost;

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

/// Runs a runner of either kind to its end, without a window.
template <typename Runner>
int runToEnd(Runner &runner)
{
    SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::received, &runner, &Runner::abort);
    // Not the loop's own result: whoever else may end the loop does not know how the run went.
    int status = failed;
    QObject::connect(&runner, &Runner::finished, qApp, [&status](int exitStatus) {
        status = exitStatus;
        QCoreApplication::quit();
    });
    // A plug-in's dialog that closes behind its files must not end the run.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QTimer::singleShot(0, &runner, &Runner::start);
    QCoreApplication::exec();
    return status;
}

int runBatch(HostServices &services, const CommandLine &commandLine)
{
    const BatchOptions &options = commandLine.batch();
    const std::string output = options.outputDirectory.toStdString();
    if (!output.empty()
        && !(tnFile::createPath(output) && tnFile::checkWrite(output, false, false))) {
        Console::print(stderr,
                       QStringLiteral("The output directory cannot be written: %1")
                           .arg(options.outputDirectory));
        return wrongUsage;
    }
    services.fileService().setLargestFirst(true);
    const FileCollector::Result files =
        FileCollector::collect(commandLine.files(), services.fileService());
    services.fileService().prepare(static_cast<int>(
        std::count_if(files.files.begin(), files.files.end(), [&services](const auto &file) {
            return file.problem.isEmpty()
                && services.fileService().isDirectLoadCandidate(file.path);
        })));
    BatchRunner runner(
        services.fileService(), services.scene(), options, files,
        [](const QString &line) { Console::print(stdout, line); },
        [](const QString &line) { Console::print(stderr, line); });
    const int status = runToEnd(runner);
    QString error;
    if (options.picture.isEmpty() || status > failed
        || PictureFile::write(services.scene(), options.pictureSize, options.picture, &error))
        return status;
    Console::print(stderr, error);
    return failed;
}

std::unique_ptr<ScriptRunner> makeScriptRunner(HostServices &services, QByteArray script,
                                               bool hasUser)
{
    if (script.startsWith("\xEF\xBB\xBF")) // as some editors begin a text in UTF-8
        script.remove(0, 3);
    std::FILE *answers = Console::takeStandardOutput();
    return std::make_unique<ScriptRunner>(
        services.fileService(), script.split('\n'), hasUser,
        [answers](const QByteArray &line) { Console::print(answers, QString::fromUtf8(line)); },
        [](const QString &line) { Console::print(stderr, line); });
}

/// The runner, if there is one, starts with the window and leaves it open.
int runWindow(HostServices &services, const QStringList &pluginErrors, const QStringList &files,
              ScriptRunner *script)
{
    MainWindow window(services);
    SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::received, qApp, [script](int signal) {
        if (script)
            script->abort(signal);
        QCoreApplication::exit(128 + signal);
    });
    for (const QString &error : pluginErrors)
        tnLog::error("%s", qUtf8Printable(error));
    window.show();
    QTimer::singleShot(0, &window, [&window, &files, script] {
        window.importFiles(files);
        if (script)
            script->start();
    });
    const int status = QCoreApplication::exec();
    return script && status == 0 ? script->exitStatus() : status;
}

} // namespace

int main(int argc, char **argv)
{
    Console::openMissingStreams();
    // Paths are UTF-8, whatever the locale; Qt would lose other characters under LANG=C.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    const CommandLine commandLine = [&] {
        CommandLine asGiven(arguments);
        if (asGiven.outcome() == CommandLine::Outcome::Done || asGiven.isHeadless() || hasDisplay())
            return asGiven;
        Console::print(stderr,
                       QStringLiteral("There is no display, so this runs as with --headless."));
        arguments.insert(1, QStringLiteral("--headless"));
        return CommandLine(arguments);
    }();
    if (commandLine.outcome() == CommandLine::Outcome::Done) {
        for (const QString &line : commandLine.message().split(QLatin1Char('\n')))
            Console::print(stdout, line);
        return 0;
    }
    if (commandLine.outcome() == CommandLine::Outcome::Wrong) {
        Console::print(stderr, commandLine.message());
        return wrongUsage;
    }
    if (commandLine.clearsCache()) {
        Console::print(stdout, ResultStore(ResultStore::usualFolder(), 0).clear());
        if (commandLine.files().isEmpty() && commandLine.script().isEmpty())
            return 0;
    }
    QFile script(commandLine.script());
    if (!commandLine.script().isEmpty() && !script.open(QIODevice::ReadOnly)) {
        Console::print(stderr,
                       QStringLiteral("The script %1 cannot be read: %2.")
                           .arg(script.fileName(), script.errorString()));
        return wrongUsage;
    }
    const bool headless = commandLine.isHeadless();
    if (headless) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        Console::muteScreenWarnings();
    }

    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps); // small icons would be ragged
    static int applicationArgc = 1;
    // Not in static storage: what Qt makes on need, for a first file chooser say, would go before
    // the application, which still uses it at its end.
    QApplication application(applicationArgc, argv);
    std::setlocale(LC_NUMERIC, "C"); // the application has set the user's
    // Windows that nobody sees must not change how the user's own come up.
    QCoreApplication::setApplicationName(headless ? QStringLiteral("tnhost-headless")
                                                  : QStringLiteral("tnhost"));
    QCoreApplication::setOrganizationName(QStringLiteral("tnhost"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TN_VERSION));
    tnController::setNoGUI(headless);

    QString error;
    const QString program = QCoreApplication::applicationDirPath();
    HostServices::Options options;
    options.tmpDirectory = TmpDirectory::prepare(commandLine.tmpDirectory(), &error);
    if (options.tmpDirectory.isEmpty()) {
        Console::print(stderr, error);
        return commandLine.tmpDirectory().isEmpty() ? failed : wrongUsage;
    }
    options.converterProgram = commandLine.converter().isEmpty()
        ? program + QStringLiteral("/tnconvert")
        : commandLine.converter();
    options.maxProcesses = commandLine.maxProcesses();
    options.limits = LimitPreferences::read();
    options.limits.silence = commandLine.silence().value_or(options.limits.silence);
    options.limits.budget = commandLine.maxMemory().value_or(options.limits.budget);
    options.limits.followOutside |= commandLine.followsOutside();
    options.limits.fullSource |= commandLine.namesFullSource();
    options.cacheSize = commandLine.cacheSize().value_or(LimitPreferences::cacheSize());
    // In static storage, and made before the plug-ins are loaded, so that they go after the
    // plug-ins' own static objects, which still use them.
    static HostServices services(options);

    PluginLoader loader(commandLine.pluginDirectory(), program);
    const bool loaded = loader.load();
    if (headless && !loaded) {
        for (const QString &problem : loader.errors())
            Console::print(stderr, problem);
        return failed;
    }
    std::unique_ptr<ScriptRunner> runner;
    if (script.isOpen())
        runner = makeScriptRunner(services, script.readAll(), !headless);
    const int status = !headless
        ? runWindow(services, loader.errors(), commandLine.files(), runner.get())
        : runner ? runToEnd(*runner)
                 : runBatch(services, commandLine);
    if (status != 0 || !Console::hasLostOutput())
        return status;
    Console::print(stderr, QStringLiteral("Not all of the output could be written."));
    return failed;
}
