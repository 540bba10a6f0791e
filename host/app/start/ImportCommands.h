#pragma once

#include "platform/tndNode.h"

#include <QtCore/QList>
#include <QtCore/QMultiHash>
#include <QtCore/QObject>
#include <QtCore/QUrl>

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

    /// Files and folders; nothing happens with an empty list.
    void importUrls(const QList<QUrl> &urls);
    /// Has the user choose files.
    void chooseFiles();
    /// Has the user choose a folder, in a dialog above the window.
    void chooseFolder(QWidget *window);
    /// Imports files once more: in the place of these nodes, by path, as far as they have one.
    void importAgain(const QStringList &files, const QMultiHash<QString, tndNode> &places);

signals:
    void searchStarted();
    void searchEnded();

private:
    FileService &m_service;
};

} // namespace tnhost
