// What a batch costs the event loop: 10,000 files, each with all signals of a conversion and a load
// and 20 progress signals, in the shown dialog, unsorted and sorted by state. A pause is the time
// from one turn of the event loop to the next, with the signals of that turn, the painting and the
// timers; the file service emits one signal a turn. Times are wall-clock, so a busy machine adds to
// them: "processor" is what of the longest pause was spent by this process.

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
#include <ctime>
#include <functional>
#include <vector>

namespace {

constexpr int fileCount = 10000;
constexpr int progressSignals = 20;
constexpr int inFlight = 4; ///< files that are converted at a time
constexpr double limitMs = 50;

double processorMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

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
        m_processor = processorMs();
    }
    /// Ends a pause and begins the next one.
    void turn()
    {
        const double wall = static_cast<double>(m_wall.nsecsElapsed()) * 1e-6;
        const double processor = processorMs() - m_processor;
        ++m_count;
        m_total += wall;
        m_long += wall > limitMs ? 1 : 0;
        m_longOwn += processor > limitMs ? 1 : 0;
        m_longest = std::max(m_longest, wall);
        m_longestOwn = std::max(m_longestOwn, processor);
        start();
    }
    void print(const char *phase) const
    {
        std::printf("  %-28s %8d %11.1f %9.2f %9.2f %8d %8d\n", phase, m_count, m_total, m_longest,
                    m_longestOwn, m_long, m_longOwn);
        std::fflush(stdout);
    }

private:
    QElapsedTimer m_wall;
    double m_processor = 0;
    double m_total = 0;
    double m_longest = 0;
    double m_longestOwn = 0;
    int m_count = 0;
    int m_long = 0;
    int m_longOwn = 0;
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

void runBatch(const char *title, int sortColumn)
{
    std::printf("%s\n  %-28s %8s %11s %9s %9s %8s %8s\n", title, "", "turns", "total ms", "max ms",
                "processor", ">50 ms", "proc.");
    ScriptedServices services;
    tnCADImportDialog dialog(nullptr);
    const QTemporaryDir folder;
    QStringList files;
    for (int i = 0; i < fileCount; ++i) {
        files << folder.filePath(QStringLiteral("part-%1.step").arg(i, 5, 10, QLatin1Char('0')));
        QFile(files.back()).open(QIODevice::WriteOnly);
    }
    dialog.show();
    QCoreApplication::processEvents();

    const auto once = [](const char *phase, const std::function<void()> &work) {
        Pauses pauses;
        pauses.start();
        work();
        QCoreApplication::processEvents();
        pauses.turn();
        pauses.print(phase);
    };
    once("filling the list", [&] { dialog.prepareImport(files, {}, 0); });
    if (sortColumn >= 0)
        once("sorting", [&] { dialog.tableView->sortByColumn(sortColumn, Qt::AscendingOrder); });
    once("starting", [&] {
        dialog.onImport();
        emit services.files.startingImport(1, fileCount);
    });

    Player player(services.files, services.files.loads.back().files);
    const double before = residentMiB();
    Pauses running;
    QEventLoop loop;
    QTimer timer; // an interval of 0 fires once a turn
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        running.turn();
        if (!player.emitNext())
            loop.quit();
    });
    timer.start(0);
    running.start();
    loop.exec();
    timer.stop();
    running.print("running, per turn");
    const double after = residentMiB();
    once("end, with the logbook", [&] { emit services.files.importFinished(1, 1); });
    const qint64 logbook = QFileInfo(logbookPath(QStringLiteral(".txt"))).size();
    std::printf("  memory: %.1f MiB at the start, %.1f at the end; logbook: %.1f MiB of text\n",
                before, after, static_cast<double>(logbook) / (1 << 20));
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
