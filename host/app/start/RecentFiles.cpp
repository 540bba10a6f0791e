#include "host/app/start/RecentFiles.h"

#include "host/import/ImportLog.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSettings>

namespace tnhost {

namespace {

constexpr int mostFiles = 10;

const QString key = QStringLiteral("recentFiles");

} // namespace

RecentFiles::RecentFiles(const ImportLog &log, QObject *parent)
    : QObject(parent)
{
    connect(&log, &ImportLog::jobStarted, this, [this](const JobResultPtr &job) {
        QStringList files;
        for (const FileResult &file : job->files) {
            if (files.size() < mostFiles)
                files << QFileInfo(file.path).absoluteFilePath();
        }
        add(files);
    });
}

QStringList RecentFiles::paths() const
{
    return QSettings().value(key).toStringList().mid(0, mostFiles);
}

void RecentFiles::clear()
{
    QSettings().remove(key);
    emit changed();
}

void RecentFiles::add(const QStringList &files)
{
    QStringList all = files + paths();
    all.removeDuplicates();
    QSettings().setValue(key, QStringList(all.mid(0, mostFiles)));
    emit changed();
}

} // namespace tnhost
