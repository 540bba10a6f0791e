#include "module/DialogHolder.h"

#include "dialog/tnCADImportDialog.h"
#include "module/getService.h"
#include "platform/tnController.h"
#include "platform/tnFileIOService.h"
#include "platform/tnLog.h"

#include <QtCore/QScopeGuard>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>

namespace {

/// The dialog has a size by its own liking, which is too much for small screens in large scales.
void fitToScreen(QWidget &window)
{
    if (const QScreen *const screen = window.screen()) {
        const QSize title(0, window.style()->pixelMetric(QStyle::PM_TitleBarHeight));
        window.resize(window.size().boundedTo(screen->availableSize() - title));
    }
}

/// Has the dialog end before what it needs for that. Objects in static storage go in the reverse
/// order of their making: this guard is younger than all that the making of a dialog has brought up
/// in the libraries, the settings for one.
void endAtExit()
{
    // What windows need to go is made only when the first of them goes.
    {
        const QWindow gone;
    }
    static const auto guard = qScopeGuard(&DialogHolder::end);
}

} // namespace

QPointer<tnCADImportDialog> DialogHolder::s_dialog;

tnCADImportDialog *DialogHolder::dialog()
{
    return s_dialog;
}

bool DialogHolder::canMake()
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) {
        tnLog::error("tCAD: there is no QApplication to import files with!");
        return false;
    }
    if (!getService<tnFileIOService>()) {
        tnLog::error("tCAD: there is no file service to import files with!");
        return false;
    }
    return true;
}

tnCADImportDialog *DialogHolder::ensure()
{
    if (!canMake())
        return nullptr;
    if (!s_dialog) {
        qAddPostRoutine(&DialogHolder::end);
        s_dialog = new tnCADImportDialog(tnController::getMainWindow());
        fitToScreen(*s_dialog);
        endAtExit();
    }
    return s_dialog;
}

void DialogHolder::end()
{
    qRemovePostRoutine(&DialogHolder::end); // static storage may go before the application
    delete s_dialog;
}
