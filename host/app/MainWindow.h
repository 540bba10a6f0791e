#pragma once

#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QUrl>
#include <QtWidgets/QMainWindow>

class QMessageBox;
class tnMessage;

namespace tnhost {

class HostServices;
class SceneView;
class ViewPane;

/// The host's window: the view of the scene, its tree, log, asset manager. The services must
/// outlive it. While an import runs it asks before it closes.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(HostServices &services);
    ~MainWindow() override;

    /// Hands files and folders to the plug-in; nothing happens with an empty list.
    void importFiles(const QStringList &paths);

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QDockWidget *addDock(const QString &name, const QString &title, QWidget *content,
                         Qt::DockWidgetArea area);
    QAction *addTool(const QString &name, const QString &icon, const QString &text,
                     const QKeySequence &shortcut, void (MainWindow::*slot)());
    void createMenus();
    void addClearing(QMenu &menu);
    void createStatusBar();
    void restoreSettings();
    void saveSettings() const;

    /// Asks whether the running imports may end, and closes the window if so.
    void askToQuit();
    void importUrls(const QList<QUrl> &urls);
    void onImport();
    void onImportFolder();
    void onReload();
    void updateReload();
    void onAssetManagerRequested(bool show);

    HostServices &m_services;
    ViewPane *m_view = nullptr;
    SceneView *m_tree = nullptr;
    QDockWidget *m_treeDock = nullptr;
    QDockWidget *m_logDock = nullptr;
    QDockWidget *m_assetDock = nullptr;
    QAction *m_reload = nullptr;
    QPointer<QMessageBox> m_question; ///< whether to quit
    bool m_mayEndImports = false; ///< the user has been asked
};

} // namespace tnhost
