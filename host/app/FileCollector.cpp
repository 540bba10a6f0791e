#include "host/app/FileCollector.h"

#include "platform/tnFileIOService.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>

QStringList FileCollector::collect(const QStringList &arguments, tnFileIOService &service)
{
    QStringList result;
    for (const QString &argument : arguments) {
        const QFileInfo info(argument);
        const QString path = QDir::cleanPath(info.absoluteFilePath());
        if (!info.isDir()) {
            result << path;
            continue;
        }
        QStringList files;
        QDirIterator entries(path, QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString file = entries.next();
            if (service.isFileSupported(file))
                files << file;
        }
        files.sort();
        result << files;
    }
    result.removeDuplicates();
    return result;
}
