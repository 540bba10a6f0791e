#include "module/messageCommands.h"

#include "dialog/tnCADImportDialog.h"
#include "module/getFromMessage.h"
#include "module/tnCAD.h"
#include "platform/tnController.h"

#include <QtCore/QEventLoop>
#include <QtCore/QPointer>

#include <vector>

namespace {

/// Blocks until the dialog has finished, with events being processed, and answers with its result.
/// Gives false, without an answer, when the dialog went instead.
bool waitForDialog(const QPointer<tnCADImportDialog> &dialog, tnMessage &message)
{
    if (!dialog)
        return false;
    QEventLoop loop;
    QObject::connect(dialog, &QDialog::finished, &loop, &QEventLoop::quit);
    QObject::connect(dialog, &QObject::destroyed, &loop, &QEventLoop::quit);
    loop.exec();
    if (!dialog)
        return false;
    message.set("result", dialog->result(), true);
    return true;
}

} // namespace

void importCAD(tnMessage &message)
{
    tnCAD *module = tnCAD::instance();
    if (!module)
        return;

    unsigned int parentNodeId = 0;
    int loadState = tnCADImportDialog::AddFiles;
    bool wait = false;
    getFromMessage(message, "parentNodeId", parentNodeId);
    getFromMessage(message, "loadState", loadState);
    getFromMessage(message, "wait", wait);

    QList<QUrl> urls;
    std::vector<QString> files;
    bool opened = false;
    if (getFromMessage(message, "urls", urls)) {
        opened = module->openUrls(urls, tndNode(parentNodeId), loadState, true);
    } else if (getFromMessage(message, "files", files)) {
        const QStringList list(files.begin(), files.end());
        opened = module->openFiles(list, tndNode(parentNodeId), loadState, true);
    } else {
        opened = module->openWithChooser();
    }
    if (opened && wait)
        waitForDialog(module->dialog(), message);
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

    if (!module->openFiles(files, parent, tnCADImportDialog::Reload, showDialog))
        return;
    const QPointer<tnCADImportDialog> dialog = module->dialog();
    bool startImport = !showDialog; // nobody else could
    if (showDialog)
        getFromMessage(message, "startImport", startImport);
    if (startImport)
        dialog->onImport();
    if (wait && waitForDialog(dialog, message)) {
        message.set("materialAssignmentMode", dialog->_materialAssignment->currentIndex(), true);
        message.set("importAnimations", dialog->_importAnimations->isChecked(), true);
    }
}
