#include "host/app/status/StatusBar.h"

#include "host/app/start/ImportCommands.h"
#include "host/app/status/ImportStatus.h"
#include "host/app/status/SearchStatus.h"
#include "host/scene/Scene.h"

#include <QtCore/QLocale>
#include <QtCore/QTimer>
#include <QtWidgets/QLabel>

namespace tnhost {

namespace {

constexpr int countInterval = 100; // ms
constexpr int passingTime = 10000; // ms

/// Counting walks the scene, and during an import it changes often.
void showTotals(QLabel *totals, const Scene &scene)
{
    auto *delay = new QTimer(totals);
    delay->setSingleShot(true);
    QObject::connect(&scene, &Scene::changed, delay, [delay] {
        if (!delay->isActive())
            delay->start(countInterval);
    });
    QObject::connect(delay, &QTimer::timeout, totals, [totals, &scene] {
        const auto text = [](std::size_t count) {
            return QLocale().toString(static_cast<qulonglong>(count));
        };
        totals->setText(StatusBar::tr("Nodes: %1   Triangles: %2")
                            .arg(text(scene.nodeCount()), text(scene.triangleCount(scene.root()))));
    });
    delay->start(0);
}

} // namespace

StatusBar::StatusBar(FileService &service, ImportCommands &commands, const Scene &scene,
                     QWidget *parent)
    : QStatusBar(parent)
{
    auto *imports = new ImportStatus(service);
    auto *totals = new QLabel;
    addWidget(imports, 1);
    addPermanentWidget(new SearchStatus(commands));
    addPermanentWidget(totals);
    showTotals(totals, scene);
    connect(imports, &ImportStatus::resultsRequested, this, &StatusBar::resultsRequested);
    connect(&commands, &ImportCommands::searchEnded, this, [this, imports](const QString &left) {
        if (imports->isRunning() && !left.isEmpty())
            showMessage(left, passingTime);
        else
            imports->showSentence(left, FileResult::State::Incomplete);
    });
}

} // namespace tnhost
