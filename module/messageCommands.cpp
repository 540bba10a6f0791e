#include "module/messageCommands.h"

#include "module/getFromMessage.h"
#include "module/tnCAD.h"
#include "platform/tnController.h"

#include <vector>

void importCAD(tnMessage &message)
{
    tnCAD *module = tnCAD::instance();
    if (!module)
        return;

    unsigned int parentNodeId = 0;
    int loadState = tnCAD::AddFiles;
    bool wait = false;
    getFromMessage(message, "parentNodeId", parentNodeId);
    getFromMessage(message, "loadState", loadState);
    getFromMessage(message, "wait", wait);

    QList<QUrl> urls;
    std::vector<QString> files;
    if (getFromMessage(message, "urls", urls)) {
        module->openUrls(urls, tndNode(parentNodeId), loadState, true);
    } else if (getFromMessage(message, "files", files)) {
        const QStringList list(files.begin(), files.end());
        module->openFiles(list, tndNode(parentNodeId), loadState, true);
    }
}

void reloadCAD(tnMessage &message)
{
    tnCAD *module = tnCAD::instance();
    if (!module)
        return;

    bool wait = false;
    getFromMessage(message, "wait", wait);
    tndNode parent;
    int parentId = 0;
    if (getFromMessage(message, "parent", parentId))
        parent = tndNode(static_cast<unsigned int>(parentId));

    QStringList files;
    if (!getFromMessage(message, "files", files))
        return;
    bool showDialog = true;
    getFromMessage(message, "showDialog", showDialog);
    if (tnController::isNoGUI() || tnController::isHideGUI())
        showDialog = false;

    module->openFiles(files, parent, tnCAD::Reload, showDialog);
}
