// What the file list costs with many files. Prints one line per measurement; the times are of the
// best of some rounds. "Facts alone" is what the disk's answers cost without the list, so that they
// can be taken off the lines that add files. An argument is the number of files in the shown
// window, 100,000 without one.

#include "benchmarks/InstantFileService.h"
#include "benchmarks/measuring.h"
#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "tests/support/ScriptedServices.h"

#include <QtCore/QItemSelection>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>

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

/// The list in the shown window, painted after each step. Selected is every second row, which makes
/// the most ranges of a selection.
class ShownList {
public:
    ShownList(const QStringList &paths, bool isSelected, bool isSorted)
        : m_paths(paths)
        , m_isSelected(isSelected)
        , m_isSorted(isSorted)
    {
        m_dialog.prepareImport({}, {}, 0);
        m_dialog.show();
        if (isSorted)
            m_view.sortByColumn(tnCADImportFileModel::FileColumn, Qt::DescendingOrder);
        QCoreApplication::processEvents();
    }
    void measureAll()
    {
        const QString name =
            QStringLiteral("on show%1%2: ")
                .arg(m_isSelected ? ", selected" : "", m_isSorted ? ", sorted" : "");
        const auto step = [&](const char *what, const std::function<void()> &prepare,
                              const std::function<void()> &work) {
            measure((name + what).toStdString().c_str(), m_paths.size(), prepare, [&] {
                work();
                QCoreApplication::processEvents();
            });
        };
        const QStringList known = m_paths.mid(0, 100);
        step(
            "added", [&] { fill(known); }, [&] { m_dialog.appendFiles(m_paths); });
        step(
            "cleared by state", [&] { fill(m_paths); },
            [&] { m_view.fileModel()->removeFilesInState(ImportState::Pending, false); });
        step(
            "all selected ones removed",
            [&] {
                fill(m_paths);
                m_view.clearSelection(); // Qt merges selections in square time
                m_view.selectAll();
            },
            [&] { m_view.onRemove(); });
        step(
            "every second one removed", [&] { fill(m_paths); },
            [&] {
                std::set<int> rows;
                for (int row = 0; row < m_paths.size(); row += 2)
                    rows.insert(rows.end(), row);
                m_view.fileModel()->removeFiles(rows);
            });
        step(
            "new list", [&] { fill(m_paths); }, [&] { m_dialog.prepareImport({}, {}, 0); });
    }

private:
    void fill(const QStringList &paths)
    {
        m_dialog.prepareImport(paths, {}, 0);
        if (m_isSelected) {
            QItemSelection rows;
            const QAbstractItemModel &model = *m_view.model();
            for (int row = 0; row < model.rowCount(); row += 2)
                rows.append({model.index(row, 0), model.index(row, model.columnCount() - 1)});
            m_view.selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
        }
        QCoreApplication::processEvents();
    }

    const QStringList m_paths;
    const bool m_isSelected;
    const bool m_isSorted;
    tnCADImportDialog m_dialog{nullptr};
    tnCADImportTableView &m_view = *m_dialog.tableView;
};

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
    const QTemporaryDir home; // windows keep their settings
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
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
    const int shown = argc > 1 ? std::atoi(argv[1]) : 100000;
    for (const bool isSorted : {false, true}) {
        for (const bool isSelected : {false, true})
            ShownList(makePaths(shown, nullptr), isSelected, isSorted).measureAll();
    }
    measureChanges(10000, 1000);
    measureChanges(100000, 1000);

    tnKernelServiceFactory::the().unregisterService<tnFileIOService>();
    return EXIT_SUCCESS;
}
