#pragma once

#include <QtWidgets/QScrollArea>

class QVBoxLayout;

namespace tnhost {

class ImportCommands;
class RecentFiles;

/// In the place of an empty scene: how to begin.
class StartPage : public QScrollArea {
    Q_OBJECT

public:
    /// Both must outlive the page.
    StartPage(ImportCommands &commands, const RecentFiles &recent, QWidget *parent = nullptr);

private:
    void addButtons(QVBoxLayout *layout);
    void showRecent();

    ImportCommands &m_commands;
    const RecentFiles &m_recent;
    QVBoxLayout *m_links; ///< to the recent files
};

} // namespace tnhost
