#include "module/tnCAD.h"

#include "dialog/tnCADImportDialog.h"
#include "filelist/tnFileImportDialog.h"
#include "module/DialogHolder.h"
#include "module/getService.h"
#include "module/messageCommands.h"
#include "platform/tnController.h"
#include "platform/tnFileIOService.h"
#include "platform/tnMessage.h"
#include "platform/tnScenegraphService.h"

#include <QtCore/QPointer>

#include <algorithm>

namespace {

constexpr unsigned int moduleFlags = 0x20010;

/// The load state that takes a single file past the dialog.
constexpr int directLoad = -1;

} // namespace

tnCAD *tnCAD::s_instance = nullptr;

tnCAD::tnCAD()
    : tnModuleBase("CAD", "IGNORE", moduleFlags, nullptr)
{
    s_instance = this;
    tnController::addCB("importCAD", &importCAD);
    tnController::addCB("reloadCAD", &reloadCAD);
}

tnCAD::~tnCAD()
{
    tnController::subCB("importCAD");
    tnController::subCB("reloadCAD");
    DialogHolder::end();
}

void *tnCAD::moduleQuery()
{
    return nullptr;
}

void tnCAD::moduleNotify() { }

int tnCAD::message(tnMessage &message)
{
    if (message.id() == tnMessage::NewScene)
        emit onNewScene();
    return 0;
}

tnCADImportDialog *tnCAD::dialog() const
{
    return DialogHolder::dialog();
}

bool tnCAD::openFiles(const QStringList &files, const tndNode &parent, int loadState, bool show)
{
    if (files.isEmpty())
        return false;
    tnCADImportDialog *const dialog = DialogHolder::ensure();
    if (!dialog)
        return false;
    const QStringList filtered = dialog->filterFiles(files);
    if (filtered.isEmpty())
        return false;

    const int state = std::max<int>(loadState, tnCADImportDialog::AddFiles);
    if (state != tnCADImportDialog::Reload && filtered.size() == 1
        && tryDirectLoad(filtered.first(), parent, loadState))
        return false;
    dialog->prepareImport(filtered, parent, state);
    if (show)
        dialog->show();
    return true;
}

bool tnCAD::openUrls(const QList<QUrl> &urls, const tndNode &parent, int loadState, bool show)
{
    if (urls.isEmpty())
        return false;
    tnCADImportDialog *const dialog = DialogHolder::ensure();
    if (!dialog)
        return false;
    const QPointer<tnCAD> self(this);
    const QStringList files = dialog->searchUrls(urls);
    return self && openFiles(files, parent, loadState, show);
}

bool tnCAD::openWithChooser()
{
    if (!DialogHolder::canMake())
        return false;
    const QPointer<tnCAD> self(this);
    tnFileImportDialog chooser;
    if (chooser.exec() != QDialog::Accepted)
        return false;
    const QStringList files = chooser.selectedImportFiles();
    return self && openFiles(files, tndNode(), tnCADImportDialog::AddFiles, true);
}

bool tnCAD::tryDirectLoad(const QString &file, const tndNode &parent, int loadState)
{
    auto *files = getService<tnFileIOService>();
    const bool handledByDialog = files->isHandledByImportDialog(file);
    const bool candidate = files->isDirectLoadCandidate(file);
    const bool allowed = tnScenegraphService::the()->allowsDirectLoad();

    if (handledByDialog && !(candidate && allowed && loadState == directLoad))
        return false;
    files->loadFiles({file}, parent, QString(), true, true, true);
    return true;
}
