#include "module/tnCAD.h"

#include "module/getService.h"
#include "module/messageCommands.h"
#include "platform/tnController.h"
#include "platform/tnFileIOService.h"
#include "platform/tnLog.h"
#include "platform/tnMessage.h"
#include "platform/tnScenegraphService.h"
#include "records/tnFileTyp.h"

#include <algorithm>

namespace {

constexpr unsigned int moduleFlags = 0x20010;

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

bool tnCAD::openFiles(const QStringList &files, const tndNode &parent, int loadState, bool show)
{
    if (files.isEmpty())
        return false;
    const QStringList filtered = tnFileTyp::instance().supportedFiles(files);
    if (filtered.isEmpty())
        return false;

    const int state = std::max(loadState, static_cast<int>(AddFiles));
    if (state != Reload && filtered.size() == 1
        && tryDirectLoad(filtered.first(), parent, loadState))
        return false;
    return handOverToDialog(filtered, parent, state, show);
}

bool tnCAD::openUrls(const QList<QUrl> &urls, const tndNode &parent, int loadState, bool show)
{
    if (urls.isEmpty())
        return false;
    return openFiles(tnFileTyp::instance().searchFiles(urls), parent, loadState, show);
}

bool tnCAD::tryDirectLoad(const QString &file, const tndNode &parent, int loadState)
{
    auto *files = getService<tnFileIOService>();
    const bool handledByDialog = files->isHandledByImportDialog(file);
    const bool candidate = files->isDirectLoadCandidate(file);
    const bool allowed = tnScenegraphService::the()->allowsDirectLoad();

    if (handledByDialog && !(candidate && allowed && loadState == DirectLoad))
        return false;
    files->loadFiles({file}, parent, QString(), true, true, true);
    return true;
}

void tnCAD::setDialogHandOver(DialogHandOver handOver)
{
    m_dialogHandOver = std::move(handOver);
}

bool tnCAD::handOverToDialog(const QStringList &files, const tndNode &parent, int state, bool show)
{
    if (m_dialogHandOver)
        return m_dialogHandOver(files, parent, state, show);
    tnLog::warning("tnCAD: %d file(s) need the import dialog, which this build does not have",
                   static_cast<int>(files.size()));
    return false;
}
