#include "host/app/MainWindow.h"

#include "host/app/AssetManager.h"
#include "host/app/LogPane.h"
#include "host/app/SceneView.h"
#include "host/services/ControllerService.h"
#include "host/services/HostIcons.h"
#include "host/services/HostServices.h"
#include "platform/tnController.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"

#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtWidgets/QAction>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QToolBar>

MainWindow::MainWindow(HostServices &services)
    : m_services(services)
{
    setWindowTitle(QStringLiteral("tnhost"));
    setWindowIcon(HostIcons::icon(QStringLiteral("Application")));
    resize(1000, 700);

    // First of all, so that everything that follows is logged where the user can see it.
    addDock(QStringLiteral("log"), tr("Log"), new LogPane, Qt::BottomDockWidgetArea);
    setCentralWidget(new SceneView(services.scene()));
    m_assetDock = addDock(QStringLiteral("assets"), tr("Asset Manager"),
                          new AssetManager(services.scene()), Qt::RightDockWidgetArea);
    m_assetDock->setVisible(services.controllerService().isAssetManagerWanted());
    connect(&services.controllerService(), &ControllerService::assetManagerRequested, this,
            &MainWindow::onAssetManagerRequested);

    auto *import = new QAction(HostIcons::icon(QStringLiteral("FileOpen")), tr("&Import…"), this);
    import->setShortcut(QKeySequence::Open);
    connect(import, &QAction::triggered, this, &MainWindow::onImport);
    auto *quit = new QAction(tr("&Quit"), this);
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);
    QAction *assets = m_assetDock->toggleViewAction();
    assets->setIcon(HostIcons::icon(QStringLiteral("ModuleAssets")));

    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(import);
    file->addSeparator();
    file->addAction(quit);
    menuBar()->addMenu(tr("&View"))->addAction(assets);
    QToolBar *bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("tools"));
    bar->addAction(import);
    bar->addAction(assets);

    tnController::setMainWindow(this);
}

MainWindow::~MainWindow()
{
    // Children go after this: whoever looks for a parent meanwhile must not find a half-dead one.
    tnController::setMainWindow(nullptr);
}

void MainWindow::importFiles(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    tnMessage message;
    message.set("urls", urls, true);
    if (!tnController::callCB("importCAD", message))
        tnLog::error("No plug-in offers the command importCAD.");
}

QDockWidget *MainWindow::addDock(const QString &name, const QString &title, QWidget *content,
                                 Qt::DockWidgetArea area)
{
    auto *dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setWidget(content);
    addDockWidget(area, dock);
    return dock;
}

void MainWindow::onImport()
{
    // Without files the plug-in asks for them.
    tnMessage message;
    if (!tnController::callCB("importCAD", message))
        tnLog::error("No plug-in offers the command importCAD.");
}

void MainWindow::onAssetManagerRequested(bool show)
{
    m_assetDock->setVisible(show);
    if (show)
        m_assetDock->raise();
}
