#include "states/tnCADImportAddFolderState.h"

#include "dialog/tnCADImportDialog.h"

tnCADImportAddFolderState::tnCADImportAddFolderState(tnCADImportDialog *dialog)
    : tnCADImportAddFilesState(dialog)
{
}

bool tnCADImportAddFolderState::settingsEnabled() const
{
    return false;
}

std::vector<QLayout *> tnCADImportAddFolderState::shownLayouts() const
{
    return {dialog()->_layImportDirectory};
}

std::vector<QLayout *> tnCADImportAddFolderState::hiddenLayouts() const
{
    return {dialog()->_layButtonBar, dialog()->_layConversionProgress};
}
