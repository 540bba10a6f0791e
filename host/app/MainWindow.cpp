#include "host/app/MainWindow.h"

#include "host/app/AssetManager.h"
#include "host/app/LogPane.h"
#include "host/app/SceneView.h"
#include "host/app/SectionBar.h"
#include "host/app/ViewActions.h"
#include "host/app/ViewPane.h"
#include "host/app/help/HelpMenu.h"
#include "host/app/results/ResultsPane.h"
#include "host/app/start/DropArea.h"
#include "host/app/start/ImportCommands.h"
#include "host/app/start/RecentFiles.h"
#include "host/app/start/RecentMenu.h"
#include "host/app/start/StartPage.h"
#include "host/app/start/StartStack.h"
#include "host/app/status/StatusBar.h"
#include "host/import/ImportLog.h"
#include "host/scene/Scene.h"
#include "host/services/ControllerService.h"
#include "host/services/FileService.h"
#include "host/services/HostIcons.h"
#include "host/services/HostServices.h"
#include "host/view/SceneDisplay.h"
#include "platform/tnController.h"
#include "platform/tnLog.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QTimer>
#include <QtGui/QScreen>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QToolBar>

namespace tnhost {

namespace {

constexpr QSize usualSize(1280, 800);
constexpr int usualLogHeight = 190;
constexpr int usualTreeWidth = 340;

const QString geometryKey = QStringLiteral("mainWindow/geometry");
const QString stateKey = QStringLiteral("mainWindow/state");
const QString headerKey = QStringLiteral("mainWindow/sceneHeader");
const QString resultsKey = QStringLiteral("mainWindow/resultsHeader");

/// What does not stop a file: what is missing from it, and what was repaired.
void logRemarks(const JobResultPtr &job, std::size_t position)
{
    const FileResult &file = job->files[position];
    QStringList remarks = file.warnings;
    if (file.state == FileResult::State::Incomplete)
        remarks.prepend(file.message);
    for (const QString &remark : remarks)
        tnLog::warning("%s: %s", qUtf8Printable(file.path), qUtf8Printable(remark));
}

} // namespace

MainWindow::MainWindow(HostServices &services)
    : m_services(services)
    , m_commands(new ImportCommands(services.fileService(), this))
    , m_recent(new RecentFiles(services.fileService().log(), this))
{
    setWindowTitle(QStringLiteral("tnhost"));
    setWindowIcon(HostIcons::icon(QStringLiteral("Application")));

    // First of all, so that everything that follows is logged where the user can see it.
    m_logDock = addDock(QStringLiteral("log"), tr("Log"), new LogPane, Qt::BottomDockWidgetArea);
    m_view = new ViewPane(services.scene());
    connect(&services.fileService().log(), &ImportLog::jobEnded, m_view, [this] {
        if (m_view->display())
            m_view->display()->keepCamera();
    });
    auto *start = new StartPage(*m_commands, *m_recent);
    setCentralWidget(new StartStack(services.scene(), start, m_view));
    new DropArea(this, *m_commands);
    m_tree = new SceneView(services.scene());
    m_treeDock = addDock(QStringLiteral("scene"), tr("Scene"), m_tree, Qt::LeftDockWidgetArea);
    m_results = new ResultsPane(services.fileService().log(), services.scene());
    m_resultsDock = addDock(QStringLiteral("results"), tr("Import Results"), m_results,
                            Qt::BottomDockWidgetArea);
    tabifyDockWidget(m_logDock, m_resultsDock);
    m_assetDock = addDock(QStringLiteral("assets"), tr("Asset Manager"),
                          new AssetManager(services.scene()), Qt::RightDockWidgetArea);
    m_assetDock->hide();
    createMenus();
    createStatusBar();
    restoreSettings();
    if (services.controllerService().isAssetManagerWanted())
        onAssetManagerRequested(true);
    connect(&services.controllerService(), &ControllerService::assetManagerRequested, this,
            &MainWindow::onAssetManagerRequested);
    // Next to a plug-in's own account, as there is none of a file that is loaded without a dialog.
    const auto logFailure = [](quint64, const QString &path, const QString &message) {
        tnLog::error("%s: %s", qUtf8Printable(path), qUtf8Printable(message));
    };
    connect(&services.fileService(), &FileService::fileConversionFailed, this, logFailure);
    connect(&services.fileService(), &FileService::fileLoadingFailed, this, logFailure);
    connect(&services.fileService().log(), &ImportLog::fileEnded, this, &logRemarks);
    connect(m_results, &ResultsPane::nodeRequested, m_tree, &SceneView::showNode);
    connect(m_results, &ResultsPane::importRequested, m_commands, &ImportCommands::importAgain);
    m_tree->setFocus();

    tnController::setMainWindow(this);
}

MainWindow::~MainWindow()
{
    // The application may end without closing its windows.
    if (isVisible())
        saveSettings();
    // Children go after this: whoever looks for a parent meanwhile must not find a half-dead one.
    tnController::setMainWindow(nullptr);
}

void MainWindow::importFiles(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    m_commands->importUrls(urls);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_mayEndImports && !m_services.fileService().runningJobs().empty()) {
        event->ignore();
        askToQuit();
        return;
    }
    saveSettings();
    QMainWindow::closeEvent(event);
}

void MainWindow::askToQuit()
{
    if (m_question) {
        m_question->raise();
        return;
    }
    int files = 0;
    for (const JobResultPtr &job : m_services.fileService().runningJobs())
        files += job->openFiles;
    // Without an event loop of its own: the import goes on meanwhile, and a signal ends the
    // program.
    m_question = new QMessageBox(
        QMessageBox::Warning, tr("Quit"),
        tr("An import is running; files that are not done: %1.\nQuitting ends it.").arg(files),
        QMessageBox::NoButton, this);
    m_question->setAttribute(Qt::WA_DeleteOnClose);
    m_question->addButton(tr("&Quit"), QMessageBox::AcceptRole);
    m_question->setDefaultButton(m_question->addButton(QMessageBox::Cancel));
    connect(m_question, &QDialog::accepted, this, [this] {
        m_mayEndImports = true;
        close();
    });
    m_question->open();
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

QAction *MainWindow::addTool(const QString &name, const QString &icon, const QString &text,
                             const QKeySequence &shortcut, const std::function<void()> &slot)
{
    auto *action = new QAction(HostIcons::icon(icon), text, this);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, slot);
    return action;
}

void MainWindow::createMenus()
{
    QAction *import =
        addTool(QStringLiteral("import"), QStringLiteral("FileOpen"), tr("&Import CAD…"),
                QKeySequence::Open, [this] { m_commands->chooseFiles(); });
    QAction *folder =
        addTool(QStringLiteral("importFolder"), QStringLiteral("FolderOpen"), tr("Import &Folder…"),
                Qt::CTRL + Qt::SHIFT + Qt::Key_O, [this] { m_commands->chooseFolder(this); });
    m_reload = addTool(QStringLiteral("reload"), QStringLiteral("FileReload"),
                       tr("&Reload Selected"), QKeySequence::Refresh, [this] { onReload(); });
    for (const auto signal : {&Scene::selectionChanged, &Scene::changed})
        connect(&m_services.scene(), signal, this, &MainWindow::updateReload);
    updateReload();
    auto *quit = new QAction(tr("&Quit"), this);
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);
    QAction *assets = m_assetDock->toggleViewAction();
    assets->setIcon(HostIcons::icon(QStringLiteral("ModuleAssets")));

    QToolBar *bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("tools"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addActions({import, folder, m_reload, assets});

    auto *section = new SectionBar(m_view->display());
    addToolBar(section);

    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addActions({import, folder});
    file->addMenu(new RecentMenu(*m_recent, *m_commands, this));
    file->addAction(m_reload);
    file->addSeparator();
    if (m_services.fileService().resultStore())
        addClearing(*file);
    file->addAction(quit);
    m_tree->insertAction(m_tree->actions().constFirst(), m_reload);
    menuBar()->addMenu(tr("&Edit"))->addActions(m_tree->actions());
    QMenu *view = menuBar()->addMenu(tr("&View"));
    (new ViewActions(m_services.scene(), m_view->display(), this))->addTo(*view);
    view->addActions({m_treeDock->toggleViewAction(), m_resultsDock->toggleViewAction(),
                      m_logDock->toggleViewAction(), assets, bar->toggleViewAction(),
                      section->toggleViewAction()});
    menuBar()->addMenu(new HelpMenu(m_services.converterProgram(), this));
}

void MainWindow::addClearing(QMenu &menu)
{
    auto *clear = new QAction(tr("&Clear Earlier Results"), this);
    clear->setObjectName(QStringLiteral("clearResults"));
    clear->setToolTip(tr("Files that have not changed will be converted anew"));
    connect(clear, &QAction::triggered, this, [this] {
        tnLog::info("%s", qUtf8Printable(m_services.fileService().resultStore()->clear()));
    });
    menu.addAction(clear);
}

void MainWindow::createStatusBar()
{
    auto *bar = new StatusBar(m_services.fileService(), *m_commands, m_services.scene());
    setStatusBar(bar);
    connect(bar, &StatusBar::resultsRequested, this, [this] {
        m_resultsDock->show();
        m_resultsDock->raise();
    });
}

void MainWindow::restoreSettings()
{
    const QSettings settings;
    const QSize usual =
        usualSize.boundedTo(QApplication::primaryScreen()->availableSize() * 9 / 10);
    resize(usual);
    resizeDocks({m_logDock}, {usualLogHeight}, Qt::Vertical);
    resizeDocks({m_treeDock}, {usualTreeWidth}, Qt::Horizontal);
    restoreGeometry(settings.value(geometryKey).toByteArray());
    // The damaged kind may pass for a window of next to nothing, and the screen may have been a
    // larger one.
    const QRect available = screen()->availableGeometry();
    const bool isTooSmall = size() != size().expandedTo(minimumSizeHint());
    const bool isTooLarge = size() != size().boundedTo(available.size());
    if (isTooSmall || isTooLarge)
        resize(usual);
    if (isTooLarge)
        move(available.topLeft());
    restoreState(settings.value(stateKey).toByteArray());
    m_tree->setColumnWidths(settings.value(headerKey).toList());
    m_results->restoreHeader(settings.value(resultsKey).toByteArray());
}

void MainWindow::saveSettings() const
{
    QSettings settings;
    settings.setValue(geometryKey, saveGeometry());
    settings.setValue(stateKey, saveState());
    settings.setValue(headerKey, m_tree->columnWidths());
    settings.setValue(resultsKey, m_results->headerState());
}

void MainWindow::onReload()
{
    QStringList files;
    QMultiHash<QString, tndNode> places;
    for (const tndNode &node : m_tree->selectedFileNodes()) {
        files << m_services.scene().sourceFile(node);
        places.insert(files.constLast(), node);
    }
    files.removeDuplicates();
    m_commands->importAgain(files, places);
}

void MainWindow::updateReload()
{
    m_reload->setEnabled(!m_tree->selectedFileNodes().empty());
}

void MainWindow::onAssetManagerRequested(bool show)
{
    m_assetDock->setVisible(show);
    if (show)
        m_assetDock->raise();
}

} // namespace tnhost
