#include "records/tnFileTyp.h"

#include "module/getService.h"
#include "platform/tnFileIOService.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>

#include <algorithm>
#include <iterator>
#include <utility>

tnFileTyp &tnFileTyp::instance()
{
    static tnFileTyp theInstance;
    return theInstance;
}

QStringList tnFileTyp::supportedFiles(const QStringList &files) const
{
    QStringList supported;
    if (files.isEmpty())
        return supported;
    auto *service = getService<tnFileIOService>();
    std::copy_if(files.begin(), files.end(), std::back_inserter(supported),
                 [service](const QString &path) { return service->isFileSupported(path); });
    return supported;
}

QStringList tnFileTyp::searchFiles(const QList<QUrl> &urls)
{
    const bool isOuterStopped = std::exchange(m_stopSearch, false);
    QStringList found;
    bool folderSeen = false;
    for (const QUrl &url : urls) {
        const QString path = url.toLocalFile();
        const QFileInfo info(path);
        if (info.isFile()) {
            found << supportedFiles({path});
        } else if (info.isDir()) {
            if (!folderSeen)
                emit startSearch();
            folderSeen = true;
            if (!walkFolder(info.absoluteFilePath(), found))
                break;
        }
    }
    emit endSearch();
    // A search in the midst of which this one has come is stopped with it.
    m_stopSearch = m_stopSearch || isOuterStopped;
    found.removeDuplicates();
    return found;
}

/// Gives false when the search was stopped.
bool tnFileTyp::walkFolder(const QString &folder, QStringList &found)
{
    // The walk visits a folder under its name and as its own ".", and files too; each visit is a
    // chance for the interface to live, and the caller removes what was found twice.
    QDirIterator walk(folder, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString entry = walk.next();
        if (entry.endsWith(QLatin1String("..")))
            continue;
        emit enterDirectory(entry);

        QStringList files;
        const auto infos = QDir(entry).entryInfoList(QDir::Files | QDir::Readable, QDir::Name);
        for (const QFileInfo &info : infos)
            files << info.absoluteFilePath();
        found << supportedFiles(files);

        QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (m_stopSearch)
            return false;
    }
    return true;
}

void tnFileTyp::stopSearch()
{
    m_stopSearch = true;
}
