#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <atomic>
#include <functional>
#include <optional>

namespace tnhost {

/// Converted files of earlier runs, in a folder that several hosts may use at a time: each entry is
/// one file, which appears and goes as a whole, so that nothing is ever locked. All calls may come
/// from any thread. Whatever the folder does not let happen costs time and nothing else.
///
/// An entry is the converted file, followed by notes, the length of these (8 bytes, little-endian)
/// and a hash of the entry's key and all before it.
class ResultStore {
public:
    /// The folder is made on need. What has not been used for longest goes when the entries come to
    /// exceed @p capacity bytes.
    ResultStore(const QString &folder, qint64 capacity);

    /// Copies an entry's file to @p output, where no file may stand, if @p accepts takes its notes,
    /// and gives the notes. Nothing when there is no such entry, or none that is whole: that goes.
    std::optional<QByteArray> take(const QByteArray &key, const QString &output,
                                   const std::function<bool(const QByteArray &)> &accepts) const;
    /// Keeps a copy of @p file, in place of what the key had before.
    void keep(const QByteArray &key, const QString &file, const QByteArray &notes);
    /// Removes all entries, and tells the user in a sentence.
    QString clear();

    /// A few lines under a name, which stay when entries go.
    QStringList lines(const QByteArray &name) const;
    void setLines(const QByteArray &name, const QStringList &lines) const;

    /// Where the user's results lie.
    static QString usualFolder();

private:
    bool write(const QByteArray &key, const QString &file, const QByteArray &notes);
    void prune();
    QString path(const QByteArray &key, const QString &suffix) const;

    const QString m_folder;
    const qint64 m_capacity;
    std::atomic<qint64> m_bytes{
        -1}; ///< of all entries, as far as this process knows; -1: it does not
};

} // namespace tnhost
