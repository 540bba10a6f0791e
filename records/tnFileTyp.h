#pragma once

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

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
    /// stopSearch() it returns what it has found until then.
    QStringList searchFiles(const QList<QUrl> &urls);

    /// The paths that the file service supports, in their order. They need not exist.
    QStringList supportedFiles(const QStringList &files) const;

public Q_SLOTS:
    /// Ends the running search at its next entry, and those that it interrupts. Without one it does
    /// nothing.
    void stopSearch();

Q_SIGNALS:
    /// Once per search, when it meets the first folder.
    void startSearch();
    void enterDirectory(QString entry);
    /// At the end of every search, also of one that met no folder.
    void endSearch();

private:
    tnFileTyp() = default;

    bool walkFolder(const QString &folder, QStringList &found);

    bool m_stopSearch = false;
};
