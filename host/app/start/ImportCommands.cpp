#include "host/app/start/ImportCommands.h"

#include "host/services/FileService.h"
#include "platform/tnController.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"

#include <QtCore/QSettings>
#include <QtWidgets/QFileDialog>

namespace tnhost {

namespace {

const QString folderKey = QStringLiteral("mainWindow/lastFolder");

void send(const char *command, tnMessage &message)
{
    if (!tnController::callCB(command, message))
        tnLog::error("No plug-in offers the command %s.", command);
}

} // namespace

ImportCommands::ImportCommands(FileService &service, QObject *parent)
    : QObject(parent)
    , m_service(service)
{
    connect(&m_search, &FileSearch::entered, this, &ImportCommands::searchEntered);
    connect(&m_search, &FileSearch::finished, this,
            [this](const QStringList &files, const QString &omissions) {
                emit searchEnded(omissions);
                if (!omissions.isEmpty())
                    tnLog::info("%s.", qUtf8Printable(omissions));
                if (!files.isEmpty())
                    importFiles(files);
            });
}

void ImportCommands::importUrls(const QList<QUrl> &urls)
{
    if (!urls.isEmpty())
        m_search.start(urls);
}

void ImportCommands::chooseFiles()
{
    // Without files the plug-in asks for them.
    tnMessage message;
    send("importCAD", message);
}

void ImportCommands::chooseFolder(QWidget *window)
{
    const QString folder = QFileDialog::getExistingDirectory(
        window, tr("Import Folder"), QSettings().value(folderKey).toString());
    if (folder.isEmpty())
        return;
    QSettings().setValue(folderKey, folder);
    importUrls({QUrl::fromLocalFile(folder)});
}

void ImportCommands::importAgain(const QStringList &files,
                                 const QMultiHash<QString, tndNode> &places)
{
    if (places.isEmpty()) {
        importFiles(files);
        return;
    }
    tnMessage message;
    message.set("files", files, true);
    message.set("parent", static_cast<int>(m_service.preparePlaces(places).id()), true);
    send("reloadCAD", message);
}

void ImportCommands::importFiles(const QStringList &files)
{
    tnMessage message;
    message.set("files", std::vector<QString>(files.begin(), files.end()), true);
    send("importCAD", message);
}

} // namespace tnhost
