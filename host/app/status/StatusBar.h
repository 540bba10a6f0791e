#pragma once

#include <QtWidgets/QStatusBar>

namespace tnhost {

class FileService;
class ImportCommands;
class Scene;

/// What goes on and what there is: imports, the search for files, the size of the scene.
class StatusBar : public QStatusBar {
    Q_OBJECT

public:
    /// All of them must outlive the bar.
    StatusBar(FileService &service, ImportCommands &commands, const Scene &scene,
              QWidget *parent = nullptr);

signals:
    /// The user wants to know more of the imports.
    void resultsRequested();
};

} // namespace tnhost
