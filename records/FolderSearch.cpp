#include "records/FolderSearch.h"

#include "records/tnFileTyp.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QEventLoop>

namespace {

/// Milliseconds between two looks whether the application quits: a look costs as much as some
/// entries.
constexpr int quitCheckInterval = 50;

/// Whether the application's event loops have been asked to end. A walk holds that up, and nothing
/// says so meanwhile: aboutToQuit comes when they have ended. But a loop that is entered now
/// returns at once, with -1.
bool isQuitting()
{
    QEventLoop loop;
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    return loop.exec() == -1;
}

} // namespace

FolderSearch::FolderSearch()
{
    tnFileTyp::instance().m_running.push_back(this);
}

FolderSearch::~FolderSearch()
{
    tnFileTyp::instance().m_running.pop_back(); // on the stack the last one goes first
}

QStringList FolderSearch::run(const QList<QUrl> &urls)
{
    tnFileTyp &reporter = tnFileTyp::instance();
    bool hasFolder = false;
    for (const QUrl &url : urls) {
        const QString path = url.toLocalFile();
        const QFileInfo info(path);
        if (info.isFile()) {
            m_found << reporter.supportedFiles({path});
        } else if (info.isDir()) {
            if (!hasFolder) {
                m_isQuitOld = isQuitting();
                m_sinceQuitCheck.start();
                emit reporter.startSearch();
            }
            hasFolder = true;
            walk(info.absoluteFilePath());
            if (m_isStopped)
                break;
        }
    }
    if (hasFolder)
        noticeQuit();
    emit reporter.endSearch();
    if (m_isDiscarded)
        return {};
    m_found.removeDuplicates();
    return m_found;
}

void FolderSearch::walk(const QString &folder)
{
    QDirIterator entries(folder, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString entry = entries.next();
        if (entry.endsWith(QLatin1String("..")))
            continue;
        emit tnFileTyp::instance().enterDirectory(entry);
        if (entries.fileInfo().isDir())
            visit(entry);

        QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (m_sinceQuitCheck.hasExpired(quitCheckInterval))
            noticeQuit();
        if (m_isStopped)
            return;
    }
}

/// Lists the files in a folder. The walk comes by twice, under the folder's name and under its own
/// "."; the first folder of all and those whose names end in two dots only have the latter.
void FolderSearch::visit(const QString &entry)
{
    const bool isSecondVisit =
        entry.endsWith(QLatin1String("/.")) && m_listedFolders.remove(entry.chopped(2));
    if (isSecondVisit)
        return;
    m_listedFolders.insert(entry);
    QStringList files;
    const auto infos = QDir(entry).entryInfoList(QDir::Files | QDir::Readable, QDir::Name);
    for (const QFileInfo &info : infos)
        files << info.absoluteFilePath();
    m_found << tnFileTyp::instance().supportedFiles(files);
}

void FolderSearch::noticeQuit()
{
    if (!m_isQuitOld && isQuitting())
        discard();
    m_sinceQuitCheck.start();
}
