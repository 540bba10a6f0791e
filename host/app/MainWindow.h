#pragma once

#include <QtCore/QPointer>
#include <QtWidgets/QMainWindow>

#include <functional>

class QMessageBox;

namespace tnhost {

class HostServices;
class ImportCommands;
class RecentFiles;
class ResultsPane;
class SceneView;
class ViewPane;

/// The host's window: the view of the scene, its tree, import results, log, asset manager. The
/// services must outlive it. While an import runs it asks before it closes.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(HostServices &services);
    ~MainWindow() override;

    /// Hands files and folders to the plug-in; nothing happens with an empty list.
    void importFiles(const QStringList &paths);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QDockWidget *addDock(const QString &name, const QString &title, QWidget *content,
                         Qt::DockWidgetArea area);
    QAction *addTool(const QString &name, const QString &icon, const QString &text,
                     const QKeySequence &shortcut, const std::function<void()> &slot);
    void createMenus();
    void addClearing(QMenu &menu);
    void createStatusBar();
    void restoreSettings();
    void saveSettings() const;

    /// Asks whether the running imports may end, and closes the window if so.
    void askToQuit();
    void onReload();
    void updateReload();
    void onAssetManagerRequested(bool show);

    HostServices &m_services;
    ImportCommands *m_commands; ///< this and the next owned as QObject children
    RecentFiles *m_recent;
    ViewPane *m_view = nullptr;
    SceneView *m_tree = nullptr;
    QDockWidget *m_treeDock = nullptr;
    ResultsPane *m_results = nullptr;
    QDockWidget *m_resultsDock = nullptr;
    QDockWidget *m_logDock = nullptr;
    QDockWidget *m_assetDock = nullptr;
    QAction *m_reload = nullptr;
    QPointer<QMessageBox> m_question; ///< whether to quit
    bool m_mayEndImports = false; ///< the user has been asked
};

} // namespace tnhost
