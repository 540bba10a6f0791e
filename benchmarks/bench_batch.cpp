// What a batch costs the event loop: 10,000 files, each with all signals of a conversion and a load
// and 20 progress signals, in the shown dialog, unsorted and sorted by state. A pause is the time
// from one turn of the event loop to the next, with the signals of that turn, the painting and the
// timers; the file service emits one signal a turn, and its answers cost nothing. Times are
// wall-clock, so a busy machine adds to them: "processor" is the longest pause by the time that
// this process had a processor. What the file system takes is measured alone, first: the facts of
// all files for the filling, two texts of the logbook's length for the end. "Ours" is what is left.

#include "benchmarks/InstantFileService.h"
#include "benchmarks/measuring.h"
#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

constexpr int fileCount = 10000;
constexpr int progressSignals = 20;
constexpr int inFlight = 4; ///< files that are converted at a time
constexpr double limitMs = 50;
constexpr int settlingMs = 100; ///< until a change is painted, with some time to spare

double residentMiB()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4096 / (1 << 20);
}

/// The pauses of one phase.
class Pauses {
public:
    void start()
    {
        m_wall.start();
        m_processor = processorSeconds();
    }
    /// Ends a pause and begins the next one.
    void turn()
    {
        const double wall = static_cast<double>(m_wall.nsecsElapsed()) * 1e-6;
        const double processor = (processorSeconds() - m_processor) * 1e3;
        ++m_count;
        m_total += wall;
        m_long += wall > limitMs ? 1 : 0;
        m_longest = std::max(m_longest, wall);
        m_longestProcessor = std::max(m_longestProcessor, processor);
        start();
    }
    void print(const char *phase, const Pauses *fileSystem = nullptr) const
    {
        const double ours = m_longestProcessor - (fileSystem ? fileSystem->m_longestProcessor : 0);
        std::printf("  %-24s %8d %11.1f %8d %9.2f %10.2f %9.2f\n", phase, m_count, m_total, m_long,
                    m_longest, m_longestProcessor, ours);
        std::fflush(stdout);
    }

private:
    QElapsedTimer m_wall;
    double m_processor = 0;
    double m_total = 0;
    double m_longest = 0;
    double m_longestProcessor = 0;
    int m_count = 0;
    int m_long = 0;
};

/// Plays a batch, signal by signal.
class Player {
public:
    Player(ScriptedFileService &service, const QStringList &files)
        : m_service(service)
        , m_files(files)
    {
    }

    /// Gives false when nothing is left.
    bool emitNext()
    {
        const int steps = progressSignals + 6;
        const int group = m_turn / (steps * inFlight);
        const int rest = m_turn % (steps * inFlight);
        const int file = group * inFlight + rest % inFlight;
        ++m_turn;
        if (group * inFlight >= m_files.size())
            return false;
        if (file < m_files.size())
            emitStep(m_files[file], file, rest / inFlight);
        return true;
    }

private:
    void emitStep(const QString &path, int file, int step)
    {
        const int end = step - progressSignals;
        if (step == 0)
            emit m_service.fileConversionStarted(1, path);
        else if (end <= 0)
            emit m_service.fileConversionProgressChanged(1, path, unsigned(step * 5),
                                                         step < 10 ? "Reading" : "Tessellating");
        else if (end == 1)
            emit m_service.fileConversionFinished(1, path, tnCADFileTypes::Success, 0.1);
        else if (end == 2)
            emit m_service.fileLoadingStarted(1, path);
        else if (end == 3)
            emit m_service.fileAddedToScene(1, path, tndNode(unsigned(file + 2)));
        else if (end == 4)
            emit m_service.fileLoadingFinished(1, path, tnCADFileTypes::Success);
        else
            emit m_service.importProgressChanged(1, unsigned(file * 100 / m_files.size()));
    }

    ScriptedFileService &m_service;
    const QStringList m_files;
    int m_turn = 0;
};

/// What it costs to write the logbook's files without making their text.
void copySizes(const QStringList &extensions, const QString &folder)
{
    const QByteArray block(1 << 14, ' '); // as much as a QTextStream gathers
    for (const QString &extension : extensions) {
        QFile file(folder + QLatin1String("/logbook") + extension);
        file.open(QIODevice::WriteOnly);
        for (qint64 left = QFileInfo(logbookPath(extension)).size(); left > 0; left -= block.size())
            file.write(block.constData(), std::min<qint64>(left, block.size()));
    }
}

void runBatch(const char *title, int sortColumn)
{
    std::printf("%s\n  %-24s %8s %11s %8s %9s %10s %9s\n", title, "", "turns", "total ms", ">50 ms",
                "max ms", "processor", "ours");
    ScriptedServices services;
    InstantFileService fileService;
    tnKernelServiceFactory::the().registerService<tnFileIOService>(&fileService);
    tnCADImportDialog dialog(nullptr);
    const QTemporaryDir folder;
    QStringList files;
    for (int i = 0; i < fileCount; ++i) {
        files << folder.filePath(QStringLiteral("part-%1.step").arg(i, 5, 10, QLatin1Char('0')));
        QFile(files.back()).open(QIODevice::WriteOnly);
    }
    dialog.show();
    QCoreApplication::processEvents();

    QEventLoop loop;
    QTimer timer; // an interval of 0 fires once a turn
    const auto run = [&](const std::function<bool()> &work) {
        Pauses pauses;
        const auto connection = QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
            pauses.turn();
            if (!work())
                loop.quit();
        });
        timer.start(0);
        pauses.start();
        loop.exec();
        timer.stop();
        QObject::disconnect(connection);
        return pauses;
    };
    // The work of one turn, and the turns that follow from it.
    const auto once = [&](const std::function<void()> &work) {
        QElapsedTimer sinceWork;
        return run([&] {
            if (sinceWork.isValid())
                return !sinceWork.hasExpired(settlingMs);
            work();
            sinceWork.start();
            return true;
        });
    };
    const Pauses facts = once([&] { readFacts(files); });
    facts.print("facts alone");
    once([&] { dialog.prepareImport(files, {}, 0); }).print("filling the list", &facts);
    if (sortColumn >= 0)
        once([&] {
            dialog.tableView->sortByColumn(sortColumn, Qt::AscendingOrder);
        }).print("sorting");
    once([&] {
        dialog.onImport();
        emit fileService.startingImport(1, fileCount);
    }).print("starting");

    Player player(fileService, fileService.loads.back().files);
    const double before = residentMiB();
    run([&] { return player.emitNext(); }).print("running, per turn");
    const double after = residentMiB();
    const Pauses end = once([&] { emit fileService.importFinished(1, 1); });
    const Pauses texts = once([&] { copySizes({".txt", ".xml"}, folder.path()); });
    texts.print("texts alone");
    end.print("end, with the logbook", &texts);
    std::printf("  memory: %.1f MiB at the start, %.1f at the end\n", before, after);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    tnPreferences::getData().set("FileIO tmp path", home.path(), true);

    runBatch("unsorted", -1);
    runBatch("sorted by state", tnCADImportFileModel::StateColumn);
    return EXIT_SUCCESS;
}
