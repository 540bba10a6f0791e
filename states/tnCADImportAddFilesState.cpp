#include "states/tnCADImportAddFilesState.h"

#include "dialog/tnCADImportDialog.h"

tnCADImportAddFilesState::tnCADImportAddFilesState(tnCADImportDialog *dialog)
    : tnCADImportState(dialog)
{
}

void tnCADImportAddFilesState::enter()
{
    for (QLayout *layout : shownLayouts())
        setLayoutWidgetsVisible(layout, true);
    for (QLayout *layout : hiddenLayouts())
        setLayoutWidgetsVisible(layout, false);
    for (QWidget *widget : shownWidgets())
        widget->setVisible(true);
    for (QWidget *widget : hiddenWidgets())
        widget->setVisible(false);
    setSettingsEnabled(settingsEnabled());
    setListLocked(listLocked());

    tnCADImportDialog *const form = dialog();
    // The lists show the button with the box; only one of the box's entries has a use for it.
    if (form->_materialAssignment->isVisible())
        form->_assetManager2->setVisible(form->_materialAssignment->currentIndex() == 2);
    form->_result->setText(statusText());
    form->_scene_settings->setCaption(optionsCaption());
    form->setWindowTitle(windowTitle());
}

bool tnCADImportAddFilesState::settingsEnabled() const
{
    return true;
}

bool tnCADImportAddFilesState::listLocked() const
{
    return false;
}

std::vector<QLayout *> tnCADImportAddFilesState::shownLayouts() const
{
    const tnCADImportDialog &form = *dialog();
    return {form._layButtonBar, form._layAddRemove};
}

std::vector<QLayout *> tnCADImportAddFilesState::hiddenLayouts() const
{
    const tnCADImportDialog &form = *dialog();
    return {form._layImportDirectory, form._layConversionProgress, form._layReloadButtonBar};
}

std::vector<QWidget *> tnCADImportAddFilesState::shownWidgets() const
{
    const tnCADImportDialog &form = *dialog();
    return {form._fileTypeFrame,  form._applyMaterialsLabel,
            form._applyMaterials, form._assetManager,
            form.frame_7,         form._modeLabel,
            form._cbMode,         form.frame_10,
            form._lbOutputDir,    form._output_dir,
            form._tbOutputPath,   form._globalReferenceBehaviorFrame,
            form._line1};
}

std::vector<QWidget *> tnCADImportAddFilesState::hiddenWidgets() const
{
    const tnCADImportDialog &form = *dialog();
    return {form._materialAssignmentLabel,
            form._materialAssignment,
            form._assetManager2,
            form.frame_13,
            form._preserveTransformations,
            form._preserveAnimations,
            form._preserveTouchSensors,
            form._preserveRenderLayerSettings,
            form._line2};
}

QString tnCADImportAddFilesState::statusText() const
{
    return tr("Ready to import. Drag and drop to add more files and folders.");
}

QString tnCADImportAddFilesState::optionsCaption() const
{
    return tr("Global Scene Options");
}

QString tnCADImportAddFilesState::windowTitle() const
{
    return tr("Import File(s)");
}
