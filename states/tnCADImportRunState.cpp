#include "states/tnCADImportRunState.h"

#include "dialog/tnCADImportDialog.h"

tnCADImportRunState::tnCADImportRunState(tnCADImportDialog *dialog)
    : tnCADImportAddFilesState(dialog)
{
}

bool tnCADImportRunState::settingsEnabled() const
{
    return false;
}

std::vector<QLayout *> tnCADImportRunState::shownLayouts() const
{
    return {dialog()->_layConversionProgress};
}

std::vector<QLayout *> tnCADImportRunState::hiddenLayouts() const
{
    const tnCADImportDialog &form = *dialog();
    return {form._layButtonBar, form._layImportDirectory, form._layReloadButtonBar,
            form._layAddRemove};
}

std::vector<QWidget *> tnCADImportRunState::shownWidgets() const
{
    return {};
}

std::vector<QWidget *> tnCADImportRunState::hiddenWidgets() const
{
    return {};
}

QString tnCADImportRunState::statusText() const
{
    return tr("Convert file(s)");
}
