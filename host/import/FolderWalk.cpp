#include "host/import/FolderWalk.h"

#include "host/import/FileTypeProbe.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <filesystem>

namespace tnhost {

namespace fs = std::filesystem;

FolderWalk::FolderWalk(Test isWanted, Visitor visitor)
    : m_isWanted(std::move(isWanted))
    , m_visitor(std::move(visitor))
{
}

QStringList FolderWalk::filesIn(const QString &folder)
{
    m_files.clear();
    enter(folder, true);
    m_files.sort();
    return m_files;
}

void FolderWalk::enter(const QString &folder, bool withSubfolders)
{
    m_hasEnded = m_hasEnded || (m_visitor && !m_visitor(folder));
    std::error_code error;
    fs::directory_iterator entries(QFile::encodeName(folder).toStdString(), error);
    for (; !m_hasEnded && !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const std::string bytes = entries->path().filename().native();
        if (bytes.front() == '.')
            continue;
        const QString name = QString::fromStdString(bytes);
        const bool isNamed = name.toStdString() == bytes;
        const QString path = QDir(folder).filePath(name);
        std::error_code gone; // by now, or leads nowhere: neither file nor folder
        if (entries->is_regular_file(gone))
            addFile(path, isNamed);
        else if (!entries->is_directory(gone) || !withSubfolders)
            continue;
        else if (isNamed)
            // The dialog as well searches a linked folder, but none below it, which may be a ring.
            enter(path, !entries->is_symlink(gone));
        else
            ++m_omissions.unnamedFolders;
    }
    m_omissions.closedFolders += error ? 1 : 0;
}

void FolderWalk::addFile(const QString &path, bool isNamed)
{
    if (!m_isWanted(path))
        ++m_omissions.files[FileTypeProbe::suffix(path).toLower()];
    else if (isNamed)
        m_files << path;
    else
        ++m_omissions.unnamedFiles;
}

} // namespace tnhost
