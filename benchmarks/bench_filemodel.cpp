// What the file list costs with many files. Prints one line per measurement; the times are of the
// best of some rounds. "Facts alone" is what the disk's answers cost without the list, so that they
// can be taken off the lines that add files.

#include "benchmarks/InstantFileService.h"
#include "benchmarks/measuring.h"
#include "filelist/tnCADImportFileModel.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTableView>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>

namespace {

constexpr int rounds = 3;

double wallSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Prepares and runs the work some times, and prints the best times of the work alone.
void measure(const char *what, int count, const std::function<void()> &prepare,
             const std::function<void()> &work)
{
    double processor = std::numeric_limits<double>::max();
    double wall = processor;
    for (int i = 0; i < rounds; ++i) {
        prepare();
        const double processorStart = processorSeconds();
        const double wallStart = wallSeconds();
        work();
        processor = std::min(processor, processorSeconds() - processorStart);
        wall = std::min(wall, wallSeconds() - wallStart);
    }
    std::printf("%-58s %8d %10.4f %10.4f %10.2f\n", what, count, processor, wall,
                processor / count * 1e6);
    std::fflush(stdout);
}

/// Really there and empty, or with no folder to be in.
QStringList makePaths(int count, const QTemporaryDir *folder)
{
    QStringList paths;
    paths.reserve(count);
    for (int i = 0; i < count; ++i) {
        const QString name = QStringLiteral("part-%1.step").arg(i, 6, 10, QLatin1Char('0'));
        paths << (folder ? folder->filePath(name) : "/no/such/folder/" + name);
        QFile file(paths.last());
        if (folder && !file.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(paths.last()));
            std::exit(EXIT_FAILURE);
        }
    }
    return paths;
}

void measureAdding(const char *kind, const QStringList &paths)
{
    const auto label = [kind](const char *what) {
        return (QLatin1String(kind) + QLatin1String(what)).toStdString();
    };
    const int count = paths.size();
    volatile qint64 sink = 0;
    measure(
        label(": facts alone").c_str(), count, [] {}, [&] { sink = readFacts(paths); });

    std::unique_ptr<tnCADImportFileModel> model;
    const auto renew = [&] { model = std::make_unique<tnCADImportFileModel>(); };
    measure(label(": added to a bare list").c_str(), count, renew, [&] { model->addFiles(paths); });
    measure(
        label(": added once more, all known").c_str(), count, [] {},
        [&] { model->addFiles(paths); });
}

/// The sort proxy builds its mapping anew for each row that comes, so its share grows with the
/// square of the count, whatever the list does.
void measureAddingOnShow(const QStringList &paths)
{
    std::unique_ptr<tnCADImportFileModel> model;
    QSortFilterProxyModel proxy;
    proxy.setSortRole(tnCADImportFileModel::SortRole);
    QTableView view;
    view.setSortingEnabled(true);
    view.resize(800, 600);
    view.show();
    const auto attach = [&](int sortColumn) {
        view.setModel(nullptr);
        model = std::make_unique<tnCADImportFileModel>();
        proxy.setSourceModel(model.get());
        proxy.sort(sortColumn);
        view.setModel(&proxy);
        QCoreApplication::processEvents();
    };
    const auto add = [&] {
        model->addFiles(paths);
        QCoreApplication::processEvents();
    };
    const int count = paths.size();
    measure(
        "missing files: with a view, behind a proxy", count, [&] { attach(-1); }, add);
    measure(
        "missing files: the same, sorted by name", count, [&] { attach(0); }, add);
    proxy.setSourceModel(nullptr);
    view.setModel(nullptr);
}

void measureChanges(int rows, int changes)
{
    const QStringList paths = makePaths(rows, nullptr);
    tnCADImportFileModel model;
    model.addFiles(paths);
    // Spread over the whole list, so that the walks are as long as they are on the average.
    QStringList changed;
    for (int i = 0; i < changes; ++i)
        changed << paths[static_cast<int>(qint64(i) * rows / changes)];

    const auto label = [rows](const char *what) {
        return (QLatin1String(what) + QStringLiteral(" in a list of %1").arg(rows)).toStdString();
    };
    measure(
        label("progress changes").c_str(), changes, [] {},
        [&] {
            for (const QString &path : changed)
                model.setFileProgress(path, 50, QStringLiteral("half"));
        });
    measure(
        label("state changes").c_str(), changes, [] {},
        [&] {
            for (const QString &path : changed)
                model.setFileState(path, ImportState::Importing);
        });
    volatile qint64 sink = 0;
    measure(
        "  of these: facts alone", changes, [] {}, [&] { sink = readFacts(changed); });
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    InstantFileService service;
    tnKernelServiceFactory::the().registerService<tnFileIOService>(&service);

    std::printf("%-58s %8s %10s %10s %10s\n", "", "count", "CPU s", "wall s", "CPU us/1");
    for (const int count : {10000, 100000}) {
        measureAdding("missing files", makePaths(count, nullptr));
        const QTemporaryDir folder;
        measureAdding("files on disk", makePaths(count, &folder));
    }
    for (const int count : {10000, 20000})
        measureAddingOnShow(makePaths(count, nullptr));
    measureChanges(10000, 1000);
    measureChanges(100000, 1000);

    tnKernelServiceFactory::the().unregisterService<tnFileIOService>();
    return EXIT_SUCCESS;
}
