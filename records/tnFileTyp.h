#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <vector>

class FolderSearch;

/// Turns what a user or a message names, files and folders, into the flat list of files that the
/// file service can import. One object per process. GUI thread only.
class tnFileTyp : public QObject {
    Q_OBJECT

public:
    /// The one object, made on first use.
    static tnFileTyp &instance();

    /// The files at the urls that the file service supports, each path once: a file stands for
    /// itself, a folder for the readable, visible files in it and below it. Other urls add nothing.
    /// Events are processed once per visited entry, so anything may happen during the call; after
    /// stopSearch() it returns what it has found until then, and nothing when the application
    /// quits.
    QStringList searchFiles(const QList<QUrl> &urls);

    /// The paths that the file service supports, in their order; none without file service. They
    /// need not exist.
    QStringList supportedFiles(const QStringList &files) const;

public Q_SLOTS:
    /// Ends all running searches, which may be nested, each at its next entry. Without one it does
    /// nothing.
    void stopSearch();

Q_SIGNALS:
    /// Once per search, when it meets the first folder.
    void startSearch();
    void enterDirectory(QString entry);
    /// At the end of every search, also of one that met no folder.
    void endSearch();

private:
    friend class FolderSearch; // each one enters itself and takes itself out

    tnFileTyp() = default;

    std::vector<FolderSearch *> m_running; ///< the innermost one is the last
};
