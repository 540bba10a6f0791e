#include "host/headless/FileCollector.h"

#include "platform/tnFileIOService.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <filesystem>

namespace tnhost {

namespace {

namespace fs = std::filesystem;

/// Looks through folders by the names' bytes: Qt passes over names that are no UTF-8, and over
/// folders that cannot be read, and does not say so.
class Walk {
public:
    explicit Walk(tnFileIOService &service)
        : m_service(service)
    {
    }

    /// The files in a folder, sorted.
    QStringList filesIn(const QString &folder)
    {
        m_files.clear();
        enter(folder, true);
        m_files.sort();
        return m_files;
    }

    QString omissions() const
    {
        const std::pair<int, const char *> counts[] = {
            {m_unnamedFiles, "files with names that are no UTF-8"},
            {m_unnamedFolders, "folders with names that are no UTF-8"},
            {m_closedFolders, "folders that cannot be read"},
        };
        QStringList parts;
        for (const auto &[count, what] : counts) {
            if (count > 0)
                parts << QStringLiteral("%1 (%2)").arg(QLatin1String(what), QString::number(count));
        }
        return parts.isEmpty()
            ? QString()
            : QStringLiteral("Left out: %1.").arg(parts.join(QLatin1String(", ")));
    }

private:
    void enter(const QString &folder, bool withSubfolders)
    {
        std::error_code error;
        fs::directory_iterator entries(QFile::encodeName(folder).toStdString(), error);
        while (!error && entries != fs::directory_iterator()) {
            visit(folder, *entries, withSubfolders);
            entries.increment(error);
        }
        m_closedFolders += error ? 1 : 0;
    }

    void visit(const QString &folder, const fs::directory_entry &entry, bool withSubfolders)
    {
        const std::string bytes = entry.path().filename().native();
        if (bytes.front() == '.')
            return;
        const QString name = QString::fromStdString(bytes);
        const bool isNamed = name.toStdString() == bytes;
        const QString path = QDir(folder).filePath(name);
        std::error_code error; // of what is gone by now, or leads nowhere: neither file nor folder
        if (entry.is_directory(error)) {
            if (!withSubfolders)
                return;
            if (isNamed)
                // The dialog as well searches a linked folder, but none below it, which may be a
                // ring.
                enter(path, !entry.is_symlink(error));
            else
                ++m_unnamedFolders;
        } else if (entry.is_regular_file(error) && m_service.isFileSupported(path)) {
            if (isNamed)
                m_files << path;
            else
                ++m_unnamedFiles;
        }
    }

    tnFileIOService &m_service;
    QStringList m_files;
    int m_unnamedFiles = 0;
    int m_unnamedFolders = 0;
    int m_closedFolders = 0;
};

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
    Walk walk(service);
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
    result.omissions = walk.omissions();
    return result;
}

} // namespace tnhost
