#pragma once

#include <QtCore/QSize>
#include <QtCore/QString>

namespace tnhost {

/// How a batch without a window is to run.
struct BatchOptions {
    /// In the order in which the import dialog offers them.
    enum class Mode { Import, Keep, Convert };

    Mode mode = Mode::Import;
    QString outputDirectory; ///< absolute; empty: the one that the dialog proposes
    int maxProcesses = -1; ///< -1: as the dialog has it
    bool tellsLogbook = false;
    QString picture; ///< absolute path of the file to draw the scene into; empty: none
    QSize pictureSize{1280, 800}; ///< in pixels
};

} // namespace tnhost
