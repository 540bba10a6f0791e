#include "module/tnCAD.h"

#include "dialog/tnCADImportDialog.h"
#include "filelist/tnFileImportDialog.h"
#include "module/getService.h"
#include "module/messageCommands.h"
#include "platform/tnController.h"
#include "platform/tnFileIOService.h"
#include "platform/tnMessage.h"
#include "platform/tnScenegraphService.h"

#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>

#include <algorithm>
#include <cstdio>

namespace {

constexpr unsigned int moduleFlags = 0x20010;

/// Without one, the first widget would end the process.
bool canHaveWindows()
{
    if (qobject_cast<QApplication *>(QCoreApplication::instance()))
        return true;
    std::fputs("tnCAD: the import needs a dialog, and there is no QApplication to show it!\n",
               stderr);
    return false;
}

/// The dialog has a size by its own liking, which is too much for small screens in large scales.
void fitToScreen(QWidget &window)
{
    if (const QScreen *const screen = window.screen()) {
        const QSize title(0, window.style()->pixelMetric(QStyle::PM_TitleBarHeight));
        window.resize(window.size().boundedTo(screen->availableSize() - title));
    }
}

/// Ends a dialog that has no parent to end it.
struct LastDialog {
    QPointer<tnCADImportDialog> dialog;

    ~LastDialog() { delete dialog; }
};

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
    qRemovePostRoutine(&tnCAD::deleteDialog);
    delete m_dialog;
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
    return m_dialog;
}

void tnCAD::deleteDialog()
{
    delete s_instance->m_dialog;
}

tnCADImportDialog *tnCAD::ensureDialog()
{
    if (!m_dialog && canHaveWindows()) {
        // A dialog without parent would outlive an application that goes before the module, and no
        // widget survives that. Each application calls its routines once.
        qAddPostRoutine(&tnCAD::deleteDialog);
        m_dialog = new tnCADImportDialog(tnController::getMainWindow());
        fitToScreen(*m_dialog);
        // Objects in static storage go in the reverse order of their making. The module is older
        // than what the dialog's making has brought up in the libraries, the settings for one,
        // without which the dialog can't end; this one is younger. What windows need to go is made
        // only when the first of them goes.
        {
            const QWindow gone;
        }
        static LastDialog last;
        last.dialog = m_dialog;
    }
    return m_dialog;
}

bool tnCAD::openFiles(const QStringList &files, const tndNode &parent, int loadState, bool show)
{
    if (files.isEmpty())
        return false;
    tnCADImportDialog *const dialog = ensureDialog();
    if (!dialog)
        return false;
    const QStringList filtered = dialog->filterFiles(files);
    if (filtered.isEmpty())
        return false;

    const int state = std::max(loadState, static_cast<int>(AddFiles));
    if (state != Reload && filtered.size() == 1
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
    tnCADImportDialog *const dialog = ensureDialog();
    if (!dialog)
        return false;
    const QPointer<tnCAD> self(this);
    const QStringList files = dialog->searchUrls(urls);
    return self && openFiles(files, parent, loadState, show);
}

bool tnCAD::openWithChooser()
{
    if (!canHaveWindows())
        return false;
    const QPointer<tnCAD> self(this);
    tnFileImportDialog chooser;
    if (chooser.exec() != QDialog::Accepted)
        return false;
    const QStringList files = chooser.selectedImportFiles();
    return self && openFiles(files, tndNode(), AddFiles, true);
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
