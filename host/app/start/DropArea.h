#pragma once

#include <QtCore/QObject>

class QMainWindow;

namespace tnhost {

class ImportCommands;

/// Lets files and folders be dropped anywhere on a window, and shows a frame over its middle while
/// they are dragged there.
class DropArea : public QObject {
    Q_OBJECT

public:
    /// The window, whose child this becomes, must have its central widget. The commands must
    /// outlive it.
    DropArea(QMainWindow *window, ImportCommands &commands);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showFrame();

    QMainWindow *m_window;
    ImportCommands &m_commands;
    QWidget *m_frame; ///< child of the window
};

} // namespace tnhost
