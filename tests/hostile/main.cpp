#include "HostileRun.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>

namespace {

/// What became of the files of one format.
struct Line {
    int files = 0;
    QMap<QString, int> states;
    int died = 0;
    int hung = 0;
    int faulty = 0;
    int smaller = 0;
    double seconds = 0;
    qint64 memory = 0;

    void add(const HostileAnswer &answer, bool isSmaller)
    {
        ++files;
        ++states[answer.state];
        died += answer.hasDied;
        hung += answer.hasHung;
        faulty += !answer.faults.isEmpty();
        smaller += isSmaller;
        seconds = std::max(seconds, answer.seconds);
        memory = std::max(memory, answer.memory);
    }
};

void print(const QMap<QString, Line> &lines)
{
    std::printf("%-7s %6s %8s %11s %8s %5s %5s %7s %8s %8s %6s\n", "format", "files", "success",
                "incomplete", "failure", "died", "hung", "faulty", "smaller", "seconds", "MiB");
    for (auto it = lines.begin(); it != lines.end(); ++it) {
        const Line &line = it.value();
        std::printf("%-7s %6d %8d %11d %8d %5d %5d %7d %8d %8.2f %6lld\n", qPrintable(it.key()),
                    line.files, line.states["success"], line.states["incomplete"],
                    line.states["failure"], line.died, line.hung, line.faulty, line.smaller,
                    line.seconds, line.memory >> 20);
    }
}

/// Writes the files into a directory of their own below @p directory.
void keep(const HostileFile &file, const QString &directory, int number)
{
    const QDir own(QDir(directory).filePath(QString::number(number)));
    own.mkpath(".");
    for (auto it = file.files.begin(); it != file.files.end(); ++it) {
        QFile copy(own.filePath(it.key()));
        if (!copy.open(QIODevice::WriteOnly) || copy.write(it.value()) != it.value().size())
            qFatal("cannot write %s", qPrintable(copy.fileName()));
    }
}

int option(const QCommandLineParser &parser, const char *name)
{
    bool isNumber = false;
    const uint value = parser.value(name).toUInt(&isNumber);
    if (!isNumber)
        qFatal("--%s wants a number, not '%s'", name, qPrintable(parser.value(name)));
    return int(value);
}

} // namespace

/// Converts damaged files and tells what became of them. Ends with 1 when a promise was broken.
int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Converts damaged files and tells what became of them.");
    parser.addHelpOption();
    parser.addOptions({{"seed", "Of which files; the same seed gives the same ones.", "N", "1"},
                       {"first", "The number of the first file.", "N", "0"},
                       {"count", "How many files.", "N", "400"},
                       {"limit", "Seconds that a file may take.", "N", "60"},
                       {"keep", "Where to keep files that are listed.", "DIR"},
                       {"all", "List all files, not only those with a fault or with less area."}});
    parser.process(app);

    const HostileFiles files(quint32(option(parser, "seed")));
    HostileRun run(option(parser, "limit"));
    const int first = option(parser, "first");
    QMap<QString, double> soundArea;
    QMap<QString, Line> lines;
    for (int i = first; i < first + option(parser, "count"); ++i) {
        const HostileFile &sound = files.sound(i);
        if (!soundArea.contains(sound.input))
            soundArea[sound.input] = run.convert(sound).area;
        const HostileFile file = files.file(i);
        const HostileAnswer answer = run.convert(file);
        // Not a fault in itself: a sound file may well have less.
        const bool isSmaller =
            answer.state == "success" && answer.area < 0.999 * soundArea[sound.input];
        lines[file.format].add(answer, isSmaller);
        lines["all"].add(answer, isSmaller);
        if (!isSmaller && answer.faults.isEmpty() && !parser.isSet("all"))
            continue;
        if (parser.isSet("keep"))
            keep(file, parser.value("keep"), i);
        QTextStream(stdout) << i << ' ' << file.damage << "\n    " << answer.state
                            << (isSmaller ? ", less area " : " ") << answer.seconds << " s "
                            << answer.faults.join(", ") << "\n    " << answer.message << '\n';
    }
    print(lines);
    return lines["all"].faulty > 0 ? 1 : 0;
}
