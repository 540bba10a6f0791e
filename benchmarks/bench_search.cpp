// What a folder search costs with many files, beside the plain walk over the same folders and the
// two things that a search adds to it by its purpose: the readable files of each folder by name,
// and events once per entry. Prints one line per measurement, the best of some rounds, with the
// ratio to the plain walk.

#include "benchmarks/InstantFileService.h"
#include "benchmarks/measuring.h"
#include "dialog/tnCADImportDialog.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QDirIterator>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>

namespace {

constexpr int rounds = 5;

/// Folders in folders, ten on each level, with files in all of them.
struct Tree {
    QTemporaryDir dir;
    QStringList folders{dir.path()};
    int files = 0;

    Tree(int count, int filesPerFolder);
};

Tree::Tree(int count, int filesPerFolder)
{
    for (int i = 0; files + folders.size() < count; ++i) {
        for (int j = 0; j < filesPerFolder; ++j, ++files) {
            QFile file(folders[i] + QStringLiteral("/part-%1.step").arg(j));
            if (!file.open(QIODevice::WriteOnly)) {
                std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
                std::exit(EXIT_FAILURE);
            }
        }
        folders << folders[i / 10] + QStringLiteral("/folder %1").arg(i);
        QDir().mkdir(folders.last());
    }
}

/// Processor seconds of the fastest round.
double best(const std::function<void()> &work)
{
    double seconds = std::numeric_limits<double>::max();
    for (int i = 0; i < rounds; ++i) {
        const double start = processorSeconds();
        work();
        seconds = std::min(seconds, processorSeconds() - start);
    }
    return seconds;
}

int walk(const QString &root)
{
    int entries = 0;
    QDirIterator walk(root, QDirIterator::Subdirectories);
    for (; walk.hasNext(); ++entries)
        walk.next();
    return entries;
}

void measureTree(int filesPerFolder)
{
    const Tree tree(40000, filesPerFolder);
    const QString root = tree.dir.path();
    const int entries = walk(root);
    std::printf("%d files in %d folders, %d entries\n%-28s %10s %10s %10s\n", tree.files,
                tree.folders.size(), entries, "", "CPU s", "us/1", "walks");
    double plain = 0;
    const auto measure = [&](const char *what, const std::function<void()> &work) {
        const double seconds = best(work);
        plain = plain > 0 ? plain : seconds;
        std::printf("%-28s %10.4f %10.2f %10.2f\n", what, seconds, seconds / entries * 1e6,
                    seconds / plain);
        std::fflush(stdout);
    };
    measure("plain walk", [&] { walk(root); });
    measure("readable files alone", [&] {
        for (const QString &folder : tree.folders)
            QDir(folder).entryInfoList(QDir::Files | QDir::Readable, QDir::Name);
    });
    measure("events alone", [&] {
        for (int i = 0; i < entries; ++i)
            QCoreApplication::processEvents();
    });

    tnCADImportDialog dialog(nullptr);
    const auto search = [&] {
        if (dialog.searchUrls({QUrl::fromLocalFile(root)}).size() != tree.files)
            std::fprintf(stderr, "the search has missed some files\n");
    };
    measure("search, dialog hidden", search);
    dialog.prepareImport({}, {}, tnCADImportDialog::AddFiles);
    dialog.show();
    QCoreApplication::processEvents();
    measure("search, dialog shown", search);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ScriptedScenegraph scene;
    ScriptedController controller;
    InstantFileService service;
    auto &factory = tnKernelServiceFactory::the();
    factory.registerService<tnFileIOService>(&service);
    factory.registerService<tnScenegraphService>(&scene);
    factory.registerService<tnControllerService>(&controller);

    for (const int filesPerFolder : {1, 8, 40})
        measureTree(filesPerFolder);
    factory.unregisterService<tnFileIOService>();
    factory.unregisterService<tnScenegraphService>();
    factory.unregisterService<tnControllerService>();
    return EXIT_SUCCESS;
}
