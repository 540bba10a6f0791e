// How long the host's window stands still with many files: each line is one thing that happens, in
// milliseconds until the window has painted it, the best of some rounds. An argument is the number
// of files, 10,000 without one.

#include "host/app/SceneView.h"
#include "host/app/results/ResultsPane.h"
#include "host/import/ImportLog.h"
#include "host/scene/Scene.h"

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTreeView>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>

using namespace tnhost;

namespace {

constexpr int rounds = 3;

void paint(QWidget &window)
{
    // Views lay out what is new with the next event.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    window.repaint();
}

class Report {
public:
    void measure(const QString &what, QWidget &window, const std::function<void()> &work)
    {
        QElapsedTimer clock;
        clock.start();
        work();
        paint(window);
        const double milliseconds = static_cast<double>(clock.nsecsElapsed()) * 1e-6;
        const auto known = std::find_if(m_lines.begin(), m_lines.end(),
                                        [&](const auto &line) { return line.first == what; });
        if (known == m_lines.end())
            m_lines.emplace_back(what, milliseconds);
        else
            known->second = std::min(known->second, milliseconds);
    }
    void print() const
    {
        for (const auto &[what, milliseconds] : m_lines)
            std::printf("%-50s %8.1f ms\n", qPrintable(what), milliseconds);
    }

private:
    std::vector<std::pair<QString, double>> m_lines;
};

std::shared_ptr<JobResult> makeJob(std::size_t count)
{
    auto job = std::make_shared<JobResult>();
    job->id = 1;
    job->files.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        FileResult &file = job->files[i];
        file.path = QStringLiteral("/cad/files/part-%1.step").arg((i * 7919) % count);
        file.seconds = static_cast<double>((i * 104729) % count);
        file.triangles = (i * 1299709) % count;
        file.message = i % 3 ? QString() : QStringLiteral("the file %1 is empty").arg(i);
    }
    return job;
}

void measureResults(Report &report, std::size_t count)
{
    ImportLog log;
    const Scene scene;
    ResultsPane pane(log, scene);
    pane.resize(1000, 300);
    pane.show();
    paint(pane);
    auto *view = pane.findChild<QTreeView *>();
    const std::shared_ptr<JobResult> job = makeJob(count);
    report.measure(QStringLiteral("results: a job starts"), pane,
                   [&] { emit log.jobStarted(job); });
    for (int column = 0; column < view->model()->columnCount(); ++column) {
        if (view->isColumnHidden(column))
            continue;
        const QString title = view->model()->headerData(column, Qt::Horizontal).toString();
        report.measure(QStringLiteral("results: sort by ") + title, pane,
                       [&] { view->sortByColumn(column, Qt::AscendingOrder); });
    }
    report.measure(QStringLiteral("results: all files end, sorted"), pane, [&] {
        for (std::size_t i = 0; i < count; ++i) {
            job->files[i].state = FileResult::State::Succeeded;
            emit log.fileEnded(job, i);
        }
        emit log.jobEnded(job);
    });
    report.measure(QStringLiteral("results: select all"), pane, [&] { view->selectAll(); });
}

std::shared_ptr<SceneFragment> makeFragment(std::size_t nodes)
{
    auto fragment = std::make_shared<SceneFragment>();
    fragment->nodes.resize(nodes);
    for (std::size_t i = 0; i < nodes; ++i) {
        fragment->nodes[i].name = QStringLiteral("part %1").arg(i);
        fragment->roots.push_back(static_cast<int>(i));
    }
    return fragment;
}

void measureTree(Report &report, std::size_t count)
{
    Scene scene;
    SceneView view(scene);
    view.resize(340, 600);
    view.show();
    paint(view);
    const auto add = [&scene](std::size_t nodes, std::size_t files) {
        const auto fragment = makeFragment(nodes);
        for (std::size_t i = 0; i < files; ++i)
            scene.addFragment(fragment, {}, QStringLiteral("/cad/%1.step").arg(i), {});
    };
    const auto remove = [&](const QString &what, std::size_t step) {
        const auto &files = scene.find(scene.root())->children();
        std::vector<tndNode> nodes;
        for (std::size_t i = 0; i < files.size() && nodes.size() < count / 2; i += step)
            nodes.emplace_back(files[i]->id());
        report.measure(what + QStringLiteral(": select"), view, [&] { scene.setSelection(nodes); });
        report.measure(what + QStringLiteral(": remove"), view,
                       [&] { view.actions().constFirst()->trigger(); });
    };
    report.measure(QStringLiteral("tree: one file with all nodes"), view, [&] { add(count, 1); });
    report.measure(QStringLiteral("tree: expand all"), view, [&] { view.expandAll(); });
    remove(QStringLiteral("tree: the file"), 1);
    add(1, count);
    paint(view);
    report.measure(QStringLiteral("tree: one file more"), view, [&] { add(1, 1); });
    remove(QStringLiteral("tree: half of the files, each second"), 2);
    add(1, count);
    paint(view);
    remove(QStringLiteral("tree: half as many files in a row"), 1);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const std::size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000;
    Report report;
    for (int i = 0; i < rounds; ++i) {
        measureResults(report, count);
        measureTree(report, count);
    }
    report.print();
    return 0;
}
