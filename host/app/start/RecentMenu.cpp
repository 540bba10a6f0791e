#include "host/app/start/RecentMenu.h"

#include "host/app/start/ImportCommands.h"
#include "host/app/start/RecentFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace tnhost {

RecentMenu::RecentMenu(RecentFiles &files, ImportCommands &commands, QWidget *parent)
    : QMenu(tr("Recent Fi&les"), parent)
    , m_files(files)
    , m_commands(commands)
{
    setToolTipsVisible(true);
    connect(&files, &RecentFiles::changed, this, &RecentMenu::refresh);
    connect(this, &QMenu::aboutToShow, this, &RecentMenu::refresh); // files come and go
    refresh();
}

void RecentMenu::refresh()
{
    clear();
    int number = 0;
    for (const QString &path : m_files.paths()) {
        QString name = QFileInfo(path).fileName();
        name.replace(QLatin1Char('&'), QLatin1String("&&"));
        ++number;
        const QString digit = number < 10 ? QStringLiteral("&%1  ").arg(number) : QString();
        QAction *action = addAction(digit + name, &m_commands, [this, path] {
            m_commands.importUrls({QUrl::fromLocalFile(path)});
        });
        action->setToolTip(QDir::toNativeSeparators(path));
        action->setEnabled(QFileInfo::exists(path));
    }
    menuAction()->setEnabled(number > 0);
    addSeparator();
    addAction(tr("&Clear List"), &m_files, &RecentFiles::clear);
}

} // namespace tnhost
