#pragma once

#include <QtWidgets/QMenu>

namespace tnhost {

class ImportCommands;
class RecentFiles;

/// Imports one of the recent files.
class RecentMenu : public QMenu {
    Q_OBJECT

public:
    /// Both must outlive the menu.
    RecentMenu(RecentFiles &files, ImportCommands &commands, QWidget *parent = nullptr);

private:
    void refresh();

    RecentFiles &m_files;
    ImportCommands &m_commands;
};

} // namespace tnhost
