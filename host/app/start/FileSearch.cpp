#include "host/app/start/FileSearch.h"

#include "host/app/start/LeftOut.h"
#include "host/import/FileTypeProbe.h"
#include "host/import/FolderWalk.h"
#include "host/import/InputCheck.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>

namespace tnhost {

namespace {

constexpr int tellInterval = 100; // ms

bool isConvertible(const QString &path)
{
    return InputCheck::isConvertible(FileTypeProbe::byName(path));
}

} // namespace

FileSearch::FileSearch(QObject *parent)
    : QObject(parent)
{
}

FileSearch::~FileSearch()
{
    stop();
}

void FileSearch::start(const QList<QUrl> &urls)
{
    m_thread.run([this, urls, round = ++m_round] { search(urls, round); });
}

void FileSearch::stop()
{
    m_stoppedRound = m_round;
}

void FileSearch::search(const QList<QUrl> &urls, int round)
{
    QElapsedTimer sinceTold;
    FolderWalk walk(&isConvertible, [this, round, &sinceTold](const QString &folder) {
        if (!sinceTold.isValid() || sinceTold.hasExpired(tellInterval)) {
            sinceTold.start();
            emit entered(folder);
        }
        return m_stoppedRound < round;
    });
    LeftOut leftOut;
    QStringList files;
    for (const QUrl &url : urls) {
        const QFileInfo info(url.toLocalFile());
        if (!url.isLocalFile())
            continue;
        if (info.isDir())
            files << walk.filesIn(info.absoluteFilePath());
        else if (isConvertible(info.filePath()))
            files << info.absoluteFilePath();
        else
            leftOut.addKind(FileTypeProbe::suffix(info.filePath()).toLower());
    }
    leftOut.add(walk.omissions());
    files.removeDuplicates();
    files = leftOut.keepReadable(files);
    QMetaObject::invokeMethod(
        this, [this, files, text = leftOut.sentence(files.size())] { emit finished(files, text); },
        Qt::QueuedConnection);
}

} // namespace tnhost
