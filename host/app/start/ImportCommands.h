#pragma once

#include "host/app/start/FileSearch.h"
#include "platform/tndNode.h"

#include <QtCore/QList>
#include <QtCore/QMultiHash>

class QWidget;

namespace tnhost {

class FileService;

/// Asks the plug-in for imports, by its commands. A command that no plug-in offers goes into the
/// log.
class ImportCommands : public QObject {
    Q_OBJECT

public:
    /// The service must outlive the object.
    explicit ImportCommands(FileService &service, QObject *parent = nullptr);

    /// Looks for files among these files and folders, and imports what it finds; nothing happens
    /// with an empty list.
    void importUrls(const QList<QUrl> &urls);
    /// Ends the searches and imports what they have found.
    void stopSearch() { m_search.stop(); }
    /// Has the user choose files.
    void chooseFiles();
    /// Has the user choose a folder, in a dialog above the window.
    void chooseFolder(QWidget *window);
    /// Imports files once more: in the place of these nodes, by path, as far as they have one.
    void importAgain(const QStringList &files, const QMultiHash<QString, tndNode> &places);

signals:
    /// The search for files has come to a folder.
    void searchEntered(const QString &folder);
    /// A search is over; a sentence says what of the files and folders is left out, if anything.
    void searchEnded(const QString &omissions);

private:
    void importFiles(const QStringList &files);

    FileService &m_service;
    FileSearch m_search;
};

} // namespace tnhost
