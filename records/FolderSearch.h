#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

/// One search for importable files, on the stack of the call that waits for it. It processes
/// events, so further searches may run inside it: each has an end of its own, and tnFileTyp, whose
/// signals report all of them, knows which are running. GUI thread only.
class FolderSearch {
public:
    FolderSearch();
    ~FolderSearch();
    Q_DISABLE_COPY_MOVE(FolderSearch)

    /// The supported files at the urls, each path once, as tnFileTyp::searchFiles describes them.
    /// Empty after discard() and when the application quits meanwhile. To be called once.
    QStringList run(const QList<QUrl> &urls);

    /// Ends the search at its next entry; what it has found counts.
    void stop() { m_isStopped = true; }
    /// Ends the search at its next entry; nobody wants what it finds any more.
    void discard() { m_isStopped = m_isDiscarded = true; }

private:
    void walk(const QString &folder);
    void visit(const QString &entry);
    void noticeQuit();

    QStringList m_found;
    QSet<QString> m_listedFolders; ///< whose entry "." is still to come
    QElapsedTimer m_sinceQuitCheck;
    /// The request to quit is older than the search: it stays for good where no event loop of the
    /// application's has ended by it, and so means nothing here.
    bool m_isQuitOld = false;
    bool m_isStopped = false;
    bool m_isDiscarded = false;
};
