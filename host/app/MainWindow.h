#pragma once

#include <QtWidgets/QMainWindow>

class HostServices;
class QDockWidget;

/// The host's window: scene tree, log, asset manager. The services must outlive it.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(HostServices &services);
    ~MainWindow() override;

    /// Hands files and folders to the plug-in; nothing happens with an empty list.
    void importFiles(const QStringList &paths);

private:
    QDockWidget *addDock(const QString &name, const QString &title, QWidget *content,
                         Qt::DockWidgetArea area);
    void onImport();
    void onAssetManagerRequested(bool show);

    HostServices &m_services;
    QDockWidget *m_assetDock = nullptr;
};
