#pragma once

#include "host/import/BackgroundThread.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <atomic>

namespace tnhost {

/// Finds the files that this host can convert among files and folders, while the window lives on.
/// Searches that are asked for during another one follow it.
class FileSearch : public QObject {
    Q_OBJECT

public:
    explicit FileSearch(QObject *parent = nullptr);
    /// Ends the searches; they find nothing any more.
    ~FileSearch() override;

    /// Urls that are no local ones are passed over.
    void start(const QList<QUrl> &urls);
    /// Ends the search that runs and those that wait: what they have found until then counts.
    void stop();

signals:
    /// Some times a second.
    void entered(const QString &folder);
    /// The files, each once, in the order of the urls and sorted within a folder, and in one
    /// sentence for the user what was left out; empty: nothing. From the event loop.
    void finished(const QStringList &files, const QString &omissions);

private:
    void search(const QList<QUrl> &urls, int round);

    std::atomic<int> m_stoppedRound{0}; ///< all searches up to this one are to end
    int m_round = 0;
    BackgroundThread m_thread;
};

} // namespace tnhost
