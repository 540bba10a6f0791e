#include "states/tnCADImportReloadState.h"

#include "dialog/tnCADImportDialog.h"

#include <algorithm>

tnCADImportReloadState::tnCADImportReloadState(tnCADImportDialog *dialog, bool multipleFiles)
    : tnCADImportAddFilesState(dialog)
    , m_multipleFiles(multipleFiles)
{
}

bool tnCADImportReloadState::listLocked() const
{
    return true;
}

std::vector<QLayout *> tnCADImportReloadState::shownLayouts() const
{
    return {dialog()->_layButtonBar};
}

std::vector<QLayout *> tnCADImportReloadState::hiddenLayouts() const
{
    const tnCADImportDialog &form = *dialog();
    return {form._layImportDirectory, form._layConversionProgress, form._layReloadButtonBar,
            form._layAddRemove};
}

// The options of a new import and those of a merge change sides; only the file type goes by the
// number of files.

std::vector<QWidget *> tnCADImportReloadState::shownWidgets() const
{
    std::vector<QWidget *> widgets = tnCADImportAddFilesState::hiddenWidgets();
    if (m_multipleFiles)
        widgets.push_back(dialog()->_fileTypeFrame);
    return widgets;
}

std::vector<QWidget *> tnCADImportReloadState::hiddenWidgets() const
{
    QWidget *const fileType = dialog()->_fileTypeFrame;
    std::vector<QWidget *> widgets = tnCADImportAddFilesState::shownWidgets();
    widgets.erase(std::remove(widgets.begin(), widgets.end(), fileType), widgets.end());
    if (!m_multipleFiles)
        widgets.push_back(fileType);
    return widgets;
}

QString tnCADImportReloadState::statusText() const
{
    return tr("Ready to re-import.");
}

QString tnCADImportReloadState::optionsCaption() const
{
    return tr("Re-import Options");
}

QString tnCADImportReloadState::windowTitle() const
{
    return tr("Re-import File");
}
