#include "host/headless/FileCollector.h"

#include "platform/tnFileIOService.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

namespace tnhost {

namespace {

QStringList filesIn(const QString &folder, tnFileIOService &service)
{
    QStringList files;
    const auto add = [&](const QString &file) {
        if (service.isFileSupported(file))
            files << file;
    };
    QDirIterator entries(folder, QDir::AllEntries | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString entry = entries.next();
        const QFileInfo info = entries.fileInfo();
        if (!info.isDir()) {
            add(entry);
        } else if (info.isSymLink()) {
            // The dialog as well searches a linked folder, but none below it, which may be a ring.
            for (const QFileInfo &file : QDir(entry).entryInfoList(QDir::Files))
                add(file.filePath());
        }
    }
    files.sort();
    return files;
}

QString problemOf(const QFileInfo &file, tnFileIOService &service)
{
    if (!file.exists())
        return QStringLiteral("there is no such file");
    if (file.isDir())
        return QStringLiteral("there is no file to import in this folder");
    if (!file.isFile())
        return QStringLiteral("not a file");
    if (!service.isFileSupported(file.filePath()))
        return QStringLiteral("not a supported file type");
    return {};
}

} // namespace

std::vector<FileCollector::File> FileCollector::collect(const QStringList &arguments,
                                                        tnFileIOService &service)
{
    std::vector<File> result;
    QSet<QString> known;
    const auto add = [&](const QString &path) {
        const int before = known.size();
        known.insert(path);
        if (known.size() != before)
            result.push_back({path, problemOf(QFileInfo(path), service)});
    };
    for (const QString &argument : arguments) {
        const QString path = QDir::cleanPath(QFileInfo(argument).absoluteFilePath());
        const QStringList inside = QFileInfo(path).isDir() ? filesIn(path, service) : QStringList();
        if (inside.isEmpty())
            add(path);
        for (const QString &file : inside)
            add(file);
    }
    return result;
}

} // namespace tnhost
