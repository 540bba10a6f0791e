#include "host/app/CommandLine.h"

#include "host/services/LimitPreferences.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <algorithm>
#include <iterator>

namespace tnhost {

namespace {

struct Option {
    const char *name;
    const char *value; ///< what stands for it in the help; null: the option has none
    const char *help;
    bool isForBatches; ///< of files that are imported without a window
};

constexpr Option options[] = {
    {"headless", nullptr, "Run without a window; print each step, the scene and a table of files.",
     false},
    {"mode", "MODE",
     "What a headless run does with the files: import; keep, which also keeps the converted files; "
     "or convert, which leaves the scene alone.",
     true},
    {"output", "DIR", "Put the converted files of a headless run into this directory.", true},
    {"logbook", nullptr, "Tell where the logbook of a headless run stands.", true},
    {"picture", "FILE.png", "Draw the scene of a headless run into this file.", true},
    {"size", "WxH", "How large that picture is, in pixels; 1280x800 without it.", true},
    {"script", "FILE",
     "Send the messages of this file to the plug-in, one JSON object per line; print the answers.",
     false},
    {"max-processes", "N",
     "Convert at most that many files at a time; 0: as many as there are cores.", false},
    {"silence", "SECONDS", "End a conversion that reports nothing new for so long; 0: none.",
     false},
    {"max-memory", "SIZE",
     "How much memory all conversions together may take, such as 500M or 6G; 0: any.", false},
    {"cache-size", "SIZE",
     "Keep so much of earlier results, to be used again for files that have not changed; 0: none.",
     false},
    {"no-cache", nullptr, "Convert each file, and keep no result.", false},
    {"clear-cache", nullptr, "Remove all earlier results first; without files, do nothing else.",
     false},
    {"follow-outside", nullptr,
     "Follow references of a file, to its parts say, that lead out of its folder.", false},
    {"full-source", nullptr,
     "Note the whole path of a file in its converted file, rather than its name.", false},
    {"tmp", "DIR", "Put temporary files into this directory.", false},
    {"plugin-dir", "DIR", "Load the plug-ins of this directory.", false},
    {"converter", "PROGRAM", "Convert files with this program.", false},
};

/// In the order of BatchOptions::Mode.
constexpr const char *modeNames[] = {"import", "keep", "convert"};

std::optional<int> processCount(const QString &text)
{
    bool isNumber = false;
    const int count = text.toInt(&isNumber);
    return isNumber && count >= 0 ? std::make_optional(count) : std::nullopt;
}

constexpr int largestPicture = 8192;

/// Both numbers of pixels, such as 800x600.
std::optional<QSize> pictureSize(const QString &text)
{
    const QStringList numbers = text.split(QLatin1Char('x'));
    const QSize size(numbers.value(0).toInt(), numbers.value(1).toInt());
    const bool isValid = numbers.size() == 2 && !size.isEmpty()
        && size.boundedTo({largestPicture, largestPicture}) == size;
    return isValid ? std::make_optional(size) : std::nullopt;
}

/// The parser asks the application for the program's name, and there is none yet.
QString helpText(const QCommandLineParser &parser, const QStringList &arguments)
{
    QByteArray name = arguments.value(0).toUtf8();
    char *argv[] = {name.data(), nullptr};
    int argc = 1;
    const QCoreApplication application(argc, argv);
    return parser.helpText();
}

} // namespace

CommandLine::CommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(arguments)) {
        fail(parser.errorText());
        return;
    }
    if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all"))) {
        m_outcome = Outcome::Done;
        m_message = helpText(parser, arguments);
        return;
    }
    if (parser.isSet(version)) {
        m_outcome = Outcome::Done;
        m_message = QStringLiteral("tnhost " TN_VERSION);
        return;
    }

    m_headless = parser.isSet(QStringLiteral("headless"));
    m_pluginDirectory = parser.value(QStringLiteral("plugin-dir"));
    m_converter = parser.value(QStringLiteral("converter"));
    m_tmpDirectory = parser.value(QStringLiteral("tmp"));
    m_followsOutside = parser.isSet(QStringLiteral("follow-outside"));
    m_namesFullSource = parser.isSet(QStringLiteral("full-source"));
    m_clearsCache = parser.isSet(QStringLiteral("clear-cache"));
    m_script = parser.value(QStringLiteral("script"));
    m_files = parser.positionalArguments();
    readValue(parser, "max-processes", &processCount, "a number, 0 or more", m_maxProcesses);
    readValue(parser, "silence", &LimitPreferences::silence, "a number of seconds, 0 or more",
              m_silence);
    readValue(parser, "max-memory", &LimitPreferences::memory, "a size such as 500M or 6G",
              m_maxMemory);
    readValue(parser, "cache-size", &LimitPreferences::memory, "a size such as 500M or 6G",
              m_cacheSize);
    if (parser.isSet(QStringLiteral("no-cache")))
        m_cacheSize = 0;
    readBatch(parser);
    checkCombination(parser);
}

void CommandLine::addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Imports CAD and scene files into a scene, with the help of its plug-in."));
    for (const Option &option : options) {
        QCommandLineOption known(QLatin1String(option.name), QString::fromLatin1(option.help));
        if (option.value)
            known.setValueName(QLatin1String(option.value));
        parser.addOption(known);
    }
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Files and folders to import."),
                                 QStringLiteral("[FILE|FOLDER...]"));
}

template <typename Value, typename Target>
void CommandLine::readValue(const QCommandLineParser &parser, const char *name,
                            std::optional<Value> (*parse)(const QString &), const char *need,
                            Target &target)
{
    if (!parser.isSet(QLatin1String(name)))
        return;
    if (const std::optional<Value> value = parse(parser.value(QLatin1String(name))))
        target = *value;
    else
        fail(QStringLiteral("Option --%1 needs %2.").arg(QLatin1String(name), QLatin1String(need)));
}

void CommandLine::readBatch(const QCommandLineParser &parser)
{
    m_batch.maxProcesses = m_maxProcesses;
    m_batch.tellsLogbook = parser.isSet(QStringLiteral("logbook"));
    if (parser.isSet(QStringLiteral("output")))
        m_batch.outputDirectory = QDir(parser.value(QStringLiteral("output"))).absolutePath();
    if (parser.isSet(QStringLiteral("picture")))
        m_batch.picture = QDir(parser.value(QStringLiteral("picture"))).absolutePath();
    readValue(parser, "size", &pictureSize, "a size such as 800x600, of at most 8192 pixels",
              m_batch.pictureSize);
    if (!parser.isSet(QStringLiteral("mode")))
        return;
    const QString name = parser.value(QStringLiteral("mode"));
    const auto mode =
        std::find_if(std::begin(modeNames), std::end(modeNames),
                     [&name](const char *each) { return name == QLatin1String(each); });
    if (mode == std::end(modeNames))
        fail(QStringLiteral("Option --mode needs one of import, keep and convert."));
    else
        m_batch.mode = static_cast<BatchOptions::Mode>(mode - std::begin(modeNames));
}

void CommandLine::checkCombination(const QCommandLineParser &parser)
{
    const bool isScript = parser.isSet(QStringLiteral("script"));
    for (const Option &option : options) {
        const QString name = QLatin1String(option.name);
        if (!parser.isSet(name))
            continue;
        if (option.value && parser.value(name).isEmpty())
            fail(QStringLiteral("Option --%1 needs a value.").arg(name));
        else if (option.isForBatches && (isScript || !m_headless))
            fail(QStringLiteral("Option --%1 is for files that are imported with --headless.")
                     .arg(name));
    }
    if (!m_batch.picture.isEmpty() && m_batch.mode == BatchOptions::Mode::Convert)
        fail(QStringLiteral("With --mode convert there is no scene for a --picture."));
    if (parser.isSet(QStringLiteral("size")) && m_batch.picture.isEmpty())
        fail(QStringLiteral("Option --size is that of a --picture."));
    if (isScript && !m_files.isEmpty())
        fail(QStringLiteral("With --script the files are those of the script."));
    if (m_headless && !isScript && m_files.isEmpty() && !m_clearsCache)
        fail(QStringLiteral("With --headless there must be a file or a folder to import."));
}

void CommandLine::fail(const QString &message)
{
    m_outcome = Outcome::Wrong;
    m_message = message;
}

} // namespace tnhost
