#include "host/app/CommandLine.h"

#include <QtCore/QCommandLineParser>

CommandLine::CommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Imports CAD and scene files into a scene, with the help of its plug-in."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption headless(
        QStringLiteral("headless"),
        QStringLiteral("Import without a window, print each step and the scene."));
    const QCommandLineOption pluginDirectory(QStringLiteral("plugin-dir"),
                                             QStringLiteral("Load the plug-ins of this directory."),
                                             QStringLiteral("DIR"));
    const QCommandLineOption converter(QStringLiteral("converter"),
                                       QStringLiteral("Convert files with this program."),
                                       QStringLiteral("PROGRAM"));
    const QCommandLineOption maxProcesses(
        QStringLiteral("max-processes"),
        QStringLiteral("Convert at most that many files at a time; 0: as many as there are cores."),
        QStringLiteral("N"));
    const QCommandLineOption tmpDirectory(
        QStringLiteral("tmp"), QStringLiteral("Put temporary files into this directory."),
        QStringLiteral("DIR"));
    parser.addOptions({headless, pluginDirectory, converter, maxProcesses, tmpDirectory});
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Files and folders to import."),
                                 QStringLiteral("[FILE|FOLDER...]"));

    if (!parser.parse(arguments)) {
        fail(parser.errorText());
        return;
    }
    if (parser.isSet(help)) {
        m_outcome = Outcome::Done;
        m_message = parser.helpText();
        return;
    }
    if (parser.isSet(version)) {
        m_outcome = Outcome::Done;
        m_message = QStringLiteral("tnhost " TN_VERSION);
        return;
    }

    m_headless = parser.isSet(headless);
    m_pluginDirectory = parser.value(pluginDirectory);
    m_converter = parser.value(converter);
    m_tmpDirectory = parser.value(tmpDirectory);
    m_files = parser.positionalArguments();
    for (const QCommandLineOption &option : {pluginDirectory, converter, tmpDirectory}) {
        if (parser.isSet(option) && parser.value(option).isEmpty())
            fail(QStringLiteral("Option --%1 needs a value.").arg(option.names().constFirst()));
    }
    if (parser.isSet(maxProcesses)) {
        bool isNumber = false;
        m_maxProcesses = parser.value(maxProcesses).toInt(&isNumber);
        if (!isNumber || m_maxProcesses < 0)
            fail(QStringLiteral("Option --max-processes needs a number, 0 or more."));
    }
    if (m_headless && m_files.isEmpty())
        fail(QStringLiteral("With --headless there must be a file or a folder to import."));
}

void CommandLine::fail(const QString &message)
{
    m_outcome = Outcome::Wrong;
    m_message = message;
}
