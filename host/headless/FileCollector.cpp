#include "host/headless/FileCollector.h"

#include "host/import/FolderWalk.h"
#include "platform/tnFileIOService.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

namespace tnhost {

namespace {

QString sentence(const FolderWalk::Omissions &omissions)
{
    const std::pair<int, const char *> counts[] = {
        {omissions.unnamedFiles, "files with names that are no UTF-8"},
        {omissions.unnamedFolders, "folders with names that are no UTF-8"},
        {omissions.closedFolders, "folders that cannot be read"},
    };
    QStringList parts;
    for (const auto &[count, what] : counts) {
        if (count > 0)
            parts << QStringLiteral("%1 (%2)").arg(QLatin1String(what), QString::number(count));
    }
    return parts.isEmpty() ? QString()
                           : QStringLiteral("Left out: %1.").arg(parts.join(QLatin1String(", ")));
}

QString problemOf(const QFileInfo &file, tnFileIOService &service)
{
    if (!file.exists())
        return QStringLiteral("there is no such file");
    if (file.isDir() && !file.isReadable())
        return QStringLiteral("this folder cannot be read");
    if (file.isDir())
        return QStringLiteral("there is no file to import in this folder");
    if (!file.isFile())
        return QStringLiteral("not a file");
    if (!service.isFileSupported(file.filePath()))
        return QStringLiteral("not a supported file type");
    return {};
}

} // namespace

FileCollector::Result FileCollector::collect(const QStringList &arguments, tnFileIOService &service)
{
    Result result;
    FolderWalk walk([&service](const QString &path) { return service.isFileSupported(path); });
    QSet<QString> known;
    const auto add = [&](const QString &path) {
        const int before = known.size();
        known.insert(path);
        if (known.size() != before)
            result.files.push_back({path, problemOf(QFileInfo(path), service)});
    };
    for (const QString &argument : arguments) {
        const QString path = QDir::cleanPath(QFileInfo(argument).absoluteFilePath());
        const QStringList inside = QFileInfo(path).isDir() ? walk.filesIn(path) : QStringList();
        if (inside.isEmpty())
            add(path);
        for (const QString &file : inside)
            add(file);
    }
    result.omissions = sentence(walk.omissions());
    return result;
}

} // namespace tnhost
