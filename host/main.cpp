#include "host/app/CommandLine.h"
#include "host/app/FileCollector.h"
#include "host/app/HeadlessRunner.h"
#include "host/app/MainWindow.h"
#include "host/app/PluginLoader.h"
#include "host/app/SignalWatcher.h"
#include "host/scene/Scene.h"
#include "host/services/FileService.h"
#include "host/services/HostServices.h"
#include "host/services/TmpDirectory.h"
#include "platform/tnController.h"
#include "platform/tnLog.h"

#include <QtCore/QTextCodec>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <clocale>
#include <cstdio>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

void print(std::FILE *stream, const QString &text)
{
    std::fprintf(stream, "%s\n", text.toUtf8().constData());
    // Whoever reads along, through a pipe as well, wants each line at once.
    std::fflush(stream);
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

int runHeadless(HostServices &services, const QStringList &arguments)
{
    HeadlessRunner runner(services.fileService(), services.scene(),
                          FileCollector::collect(arguments, services.fileService()),
                          [](const QString &line) { print(stdout, line); });
    SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::received, &runner, &HeadlessRunner::abort);
    // Not the loop's own result: whoever else may end the loop does not know how the run went.
    int status = failed;
    QObject::connect(&runner, &HeadlessRunner::finished, qApp, [&status](int exitStatus) {
        status = exitStatus;
        QCoreApplication::quit();
    });
    // A plug-in's dialog that closes behind its files must not end the run.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QTimer::singleShot(0, &runner, &HeadlessRunner::start);
    QCoreApplication::exec();
    return status;
}

int runWindow(HostServices &services, const QStringList &pluginErrors, const QStringList &files)
{
    MainWindow window(services);
    SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::received, qApp,
                     [](int signal) { QCoreApplication::exit(128 + signal); });
    for (const QString &error : pluginErrors)
        tnLog::error("%s", qUtf8Printable(error));
    window.show();
    QTimer::singleShot(0, &window, [&window, &files] { window.importFiles(files); });
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    // Paths are UTF-8, whatever the locale; Qt would lose other characters under LANG=C.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    const CommandLine commandLine = [&] {
        CommandLine asGiven(arguments);
        if (asGiven.outcome() != CommandLine::Outcome::Run || asGiven.isHeadless() || hasDisplay())
            return asGiven;
        print(stderr, QStringLiteral("There is no display, so this runs as with --headless."));
        arguments.insert(1, QStringLiteral("--headless"));
        return CommandLine(arguments);
    }();
    if (commandLine.outcome() == CommandLine::Outcome::Done) {
        print(stdout, commandLine.message());
        return 0;
    }
    if (commandLine.outcome() == CommandLine::Outcome::Wrong) {
        print(stderr, commandLine.message());
        return wrongUsage;
    }
    const bool headless = commandLine.isHeadless();
    if (headless)
        qputenv("QT_QPA_PLATFORM", "offscreen");

    // Application and services stand in static storage and are made before the plug-ins are
    // loaded, so that they go after the plug-ins' own static objects, which still use them.
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps); // small icons would be ragged
    static int applicationArgc = 1;
    static QApplication application(applicationArgc, argv);
    std::setlocale(LC_NUMERIC, "C"); // the application has set the user's
    QCoreApplication::setApplicationName(QStringLiteral("tnhost"));
    QCoreApplication::setOrganizationName(QStringLiteral("tnhost"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TN_VERSION));
    tnController::setNoGUI(headless);

    QString error;
    const QString program = QCoreApplication::applicationDirPath();
    HostServices::Options options;
    options.tmpDirectory = TmpDirectory::prepare(commandLine.tmpDirectory(), &error);
    if (options.tmpDirectory.isEmpty()) {
        print(stderr, error);
        return commandLine.tmpDirectory().isEmpty() ? failed : wrongUsage;
    }
    options.converterProgram = commandLine.converter().isEmpty()
        ? program + QStringLiteral("/tnconvert")
        : commandLine.converter();
    options.maxProcesses = commandLine.maxProcesses();
    static HostServices services(options);

    PluginLoader loader(commandLine.pluginDirectory(), program);
    const bool loaded = loader.load();
    if (!headless)
        return runWindow(services, loader.errors(), commandLine.files());
    if (!loaded) {
        for (const QString &problem : loader.errors())
            print(stderr, problem);
        return failed;
    }
    return runHeadless(services, commandLine.files());
}
