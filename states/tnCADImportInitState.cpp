#include "states/tnCADImportInitState.h"

#include "dialog/tnCADImportDialog.h"
#include "filelist/SelectionKeeper.h"
#include "filelist/tnCADImportSortModel.h"
#include "platform/tnIconManager.h"
#include "platform/tnPlatform.h"

#include <QtWidgets/QHeaderView>

namespace {

// On an unscaled screen.
constexpr double listWidth = 370.0;
constexpr double settingsWidth = 440.0;
constexpr double windowWidth = 810.0;
constexpr double windowHeight = 600.0;

constexpr int labelWidth = 130;
/// By column; the last one takes what remains.
constexpr int columnWidths[] = {120, 60, 60};

} // namespace

tnCADImportInitState::tnCADImportInitState(tnCADImportDialog *dialog)
    : tnCADImportState(dialog)
{
}

void tnCADImportInitState::enter()
{
    dialog()->_tesselation->enableGroups(tnTesselationSettings::SurfaceTessellation);
    createModels();
    scaleLayout();
    // Comes into view with a file type that has such options.
    dialog()->_file_specific_options->hide();
    setIcons();
}

void tnCADImportInitState::createModels()
{
    auto *const proxy = new tnCADImportSortModel(dialog());
    auto *const files = new tnCADImportFileModel(dialog());
    proxy->setSourceModel(files);
    dialog()->tableView->setModel(proxy);
    proxy->setSortRole(tnCADImportFileModel::SortRole);
    new SelectionKeeper(dialog()->tableView);
}

void tnCADImportInitState::scaleLayout()
{
    const auto scaledX = [sx = tnPlatform::getDpiScaleX()](double width) {
        return static_cast<int>(width * sx);
    };
    tnCADImportDialog *const form = dialog();

    form->_settings->setMinimumWidth(scaledX(settingsWidth));
    QTNCollapsibleFrame::fixLayouts(form->_settings, labelWidth, nullptr);
    QTNCollapsibleFrame::fixLayout(form->_fileTypeFrame, labelWidth);
    QTNCollapsibleFrame::fixLayout(form->_globalReferenceBehaviorFrame, labelWidth);
    int column = 0;
    for (const int width : columnWidths)
        form->tableView->horizontalHeader()->resizeSection(column++, width);
    form->_splitter->setSizes({scaledX(listWidth), scaledX(settingsWidth)});
    form->resize(scaledX(windowWidth), static_cast<int>(windowHeight * tnPlatform::getDpiScaleY()));
    form->_tesselation->tessellationFrame->setCollapsed(true);
    form->_tesselation->advancedFrame->setCollapsed(true);
}

void tnCADImportInitState::setIcons()
{
    const QSize icon(tnPlatform::getMediumIconSizeX(), tnPlatform::getMediumIconSizeY());
    const QSize button = icon + QSize(2, 2);
    const tnCADImportDialog &form = *dialog();
    const std::pair<QPushButton *, const char *> icons[] = {
        {form._tbOutputPath, "FileOpen"},
        {form._assetManager, "ModuleAssets"},
        {form._assetManager2, "ModuleAssets"},
    };
    for (const auto &[widget, name] : icons) {
        widget->setIconSize(icon);
        widget->setMaximumSize(button);
        widget->setMinimumSize(button);
        widget->setIcon(tnIconManager::getIcon(QLatin1String(name), QLatin1String("")));
    }
}
