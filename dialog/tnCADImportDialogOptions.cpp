// The options by file type: which are on show, and how they travel between the widgets, the
// working copy and the file service.

#include "dialog/tnCADImportDialog.h"

#include "dialog/OptionMapping.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "module/getService.h"
#include "platform/tnControllerService.h"
#include "platform/tnFileIOService.h"
#include "records/CADFileTypes.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtWidgets/QFileDialog>

#include <cstdio>

using namespace tnCADFileTypes;

namespace {

constexpr char groupProperty[] = "importDialogGroup";
constexpr int resetMessageTime = 5000; // ms

/// The types whose options are those of BCAD stand for it.
FileType effectiveType(FileType type)
{
    return baseCadTypes().count(type) ? BCAD : type;
}

/// Types outside the catalogue, or against its word, that have translator options.
bool alwaysSupportsImportSettings(FileType type)
{
    switch (type) {
    case Cosmo:
    case KXT:
    case OpenSG:
    case PLMXML:
    case TARN:
    case BCAD:
        return true;
    default:
        return false;
    }
}

} // namespace

bool tnCADImportDialog::supportsImportSettings(FileType type)
{
    if (alwaysSupportsImportSettings(type))
        return true;
    const auto entry = catalogue().find(type);
    if (entry != catalogue().end())
        return entry->second.importSettings;
    std::printf("tnCADImportDialog::supportsImportSettings : type %s not found\n",
                displayNameOrUndefined(type).toUtf8().constData());
    return false;
}

FileType tnCADImportDialog::currentType() const
{
    return static_cast<FileType>(_cbFileType->currentData(Qt::UserRole).toInt());
}

void tnCADImportDialog::readSceneImportSettings()
{
    showOptions(sceneImportOptions(), getService<tnFileIOService>()->getSceneImportSettings(),
                *this);
}

void tnCADImportDialog::readProjectMergeSettings()
{
    showOptions(projectMergeOptions(), getService<tnFileIOService>()->getProjectMergeSettings(),
                *this);
}

void tnCADImportDialog::readXlatSettings()
{
    auto *service = getService<tnFileIOService>();
    for (const auto &[type, entry] : catalogue()) {
        if (supportsImportSettings(type))
            m_xlatSettings[type] = service->getImportSettings(type);
    }
    m_xlatSettings[BCAD] = service->getImportSettings(BCAD);
    _max_procs->setValue(service->getMaxParallelProcesses());
}

void tnCADImportDialog::showXlatSettings(FileType type)
{
    if (!supportsImportSettings(type))
        return;
    const FileType effective = effectiveType(type);
    // A copy: each widget that changes stores all widgets into the working copy, the ones that are
    // still to be filled included.
    const tndXlatSettings settings =
        supportsImportSettings(effective) ? m_xlatSettings[effective] : tndXlatSettings();

    showOptions(xlatOptions(), settings, *this);
    updateSurfaceOptions(); // the box tells only of changes, and not of what it shows at first
    m_legacyLoader = type == Rhino && settings.getUseLegacyLoader();

    QWidget *const surfaceOptions[] = {
        _tesselation->keepNurbsCheckBox,         _tesselation->surfaceOptionsExtra,
        _tesselation->fixOrientationCheckBox,    _tesselation->mergeGeometriesCheckBox,
        _tesselation->createLayerGroupsCheckBox, _tesselation->removeEmptyGroupsCheckBox,
        _tesselation->unshareNodesCheckBox};
    for (QWidget *option : surfaceOptions)
        option->setVisible(effective != KXT);

    m_fixOrientationChecked = settings.getFixSurfaceOrientation();
    const bool fixable =
        type != CatiaV5 || settings.getImporterVersion() != tndImporterVersion::Lightweight;
    _tesselation->fixOrientationCheckBox->setEnabled(fixable);
    _tesselation->fixOrientationCheckBox->setChecked(fixable
                                                     && settings.getFixSurfaceOrientation());

    if (effective == CatiaV5) {
        const bool lightweight = settings.getImporterVersion() == tndImporterVersion::Lightweight;
        m_importerVersion->setCurrentIndex(lightweight ? 0 : 1);
    }
    if (effective == Heron)
        m_healStitch->setCurrentIndex(settings.getUseHealStitch() ? 0 : 1);

    // The stores on the way went by widgets half filled, and by the type on show before.
    m_fixOrientationChecked = settings.getFixSurfaceOrientation();
}

tndXlatSettings tnCADImportDialog::collectXlatSettings()
{
    tndXlatSettings settings;
    const FileType type = currentType();
    FileType effective = Undefined;
    if (supportsImportSettings(type)) {
        effective = effectiveType(type);
        if (supportsImportSettings(effective))
            settings = m_xlatSettings[effective];
    }

    collectOptions(xlatOptions(), *this, settings);

    updateFixOrientation();
    if (m_fixOrientationEnabled)
        m_fixOrientationChecked = _tesselation->fixOrientationCheckBox->isChecked();
    settings.setFixSurfaceOrientation(m_fixOrientationEnabled && m_fixOrientationChecked);

    if (effective == Heron)
        settings.setUseHealStitch(m_healStitch->isVisible() && m_healStitch->currentIndex() == 0);
    if (effective == CatiaV5) {
        settings.setImporterVersion(m_importerVersion->currentIndex() == 0
                                        ? tndImporterVersion::Lightweight
                                        : tndImporterVersion::Legacy);
    }
    return settings;
}

/// Catia's lightweight importer orients the surfaces itself, and without surfaces there is nothing
/// to orient.
void tnCADImportDialog::updateFixOrientation()
{
    m_fixOrientationEnabled = m_currentFileType != CatiaV5
        || (_cbImportSurfaces->currentIndex() != 0 && m_importerVersion->currentIndex() != 0);
    _tesselation->fixOrientationCheckBox->setEnabled(m_fixOrientationEnabled);
}

/// The box shows nothing while it is disabled, and the user's choice when it comes back.
void tnCADImportDialog::showFixOrientation()
{
    updateFixOrientation();
    _tesselation->fixOrientationCheckBox->setChecked(m_fixOrientationEnabled
                                                     && m_fixOrientationChecked);
}

void tnCADImportDialog::onSurfacesChanged()
{
    updateSurfaceOptions();
    showFixOrientation();
}

/// Without surfaces there is nothing to tessellate or to keep.
void tnCADImportDialog::updateSurfaceOptions()
{
    const bool hasSurfaces = _cbImportSurfaces->currentIndex() != 0;
    _tesselation->tessellationFrame->setEnabled(hasSurfaces);
    _tesselation->keepNurbsCheckBox->setEnabled(hasSurfaces);
}

void tnCADImportDialog::applyFileTypeGroups(FileType type)
{
    m_currentFileType = type;
    const auto mask = optionGroupMasks().find(type);
    if (mask != optionGroupMasks().end())
        applyGroupMask(mask->second);
    else
        std::puts("tnCADImportDialog::onTypeChanged : File type not supported!");

    const bool meshesOnly = type == Cosmo || type == KXT;
    _tesselation->enableGroups(meshesOnly ? tnTesselationSettings::NoGroup
                                          : tnTesselationSettings::SurfaceTessellation);
    _assetManager2->setVisible(_materialAssignment->currentIndex() == 2);
    if (type == Rhino && m_legacyLoader) {
        _general_settings->hide();
        _advanced_settings->hide();
    }
    m_healStitch->hide();
    m_healStitchLabel->hide();
    m_importerVersion->setVisible(type == CatiaV5);
    m_importerVersionLabel->setVisible(type == CatiaV5);
    // No widget tells that the type itself disables the box.
    if (type == CatiaV5)
        showFixOrientation();
}

void tnCADImportDialog::applyGroupMask(unsigned int mask)
{
    const auto widgets = _settings->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        const QVariant group = widget->property(groupProperty);
        if (group.isValid())
            widget->setVisible((mask & group.toUInt()) != 0);
    }
}

void tnCADImportDialog::updateFileTypes()
{
    // By the bytes of the name, then by type.
    using NamedType = std::pair<QByteArray, int>;
    std::set<FileType> types;
    fileModel()->collectFileTypes(types);
    std::set<NamedType> wanted;
    for (const FileType type : types)
        wanted.insert({displayNameOrUndefined(type).toUtf8(), type});
    std::set<NamedType> present;
    for (int i = 0; i < _cbFileType->count(); ++i)
        present.insert({_cbFileType->itemText(i).toUtf8(), _cbFileType->itemData(i).toInt()});

    // The item of BCAD does not bear the type's name, so it never counts as present: a new one
    // comes, the old one goes, and it moves to the end of the list.
    auto *service = getService<tnFileIOService>();
    for (const NamedType &entry : wanted) {
        const auto type = static_cast<FileType>(entry.second);
        if (present.count(entry) || !service->isFileTypeEnabled(type))
            continue;
        _cbFileType->addItem(type == BCAD ? QStringLiteral("Base CAD")
                                          : QString::fromUtf8(entry.first),
                             entry.second);
    }
    for (const NamedType &entry : present) {
        if (!wanted.count(entry))
            _cbFileType->removeItem(_cbFileType->findData(entry.second));
    }
    if (types.empty())
        applyGroupMask(0);
}

void tnCADImportDialog::onTypeChanged(int typ)
{
    const auto type = static_cast<FileType>(_cbFileType->itemData(typ, Qt::UserRole).toInt());
    showXlatSettings(type);
    applyFileTypeGroups(type);
}

void tnCADImportDialog::updateSettings()
{
    const FileType type = currentType();
    if (supportsImportSettings(type))
        m_xlatSettings[type] = collectXlatSettings();
}

void tnCADImportDialog::writeSettingsToService()
{
    auto *service = getService<tnFileIOService>();
    for (int i = 0; i < _cbFileType->count(); ++i) {
        const auto type = static_cast<FileType>(_cbFileType->itemData(i).toInt());
        const auto settings = m_xlatSettings.find(type);
        if (settings != m_xlatSettings.end())
            service->setImportSettings(type, settings->second);
    }
    service->setMaxParallelProcesses(_max_procs->value());

    tndSceneImportSettings sceneSettings;
    collectOptions(sceneImportOptions(), *this, sceneSettings);
    service->setSceneImportSettings(sceneSettings);

    tndProjectMergeSettings mergeSettings;
    collectOptions(projectMergeOptions(), *this, mergeSettings);
    service->setProjectMergeSettings(mergeSettings);
}

void tnCADImportDialog::onDefaults()
{
    _result->setText(tr("All import settings are reset to default."));
    QTimer::singleShot(resetMessageTime, Qt::CoarseTimer, this, [this] {
        _result->setText(tr("Ready to import. Drag and drop to add more files and folders."));
    });

    auto *service = getService<tnFileIOService>();
    _max_procs->setValue(service->getMaxParallelProcesses());
    _output_dir->setText(defaultOutputDirectory());
    readSceneImportSettings();
    readProjectMergeSettings();

    const FileType type = currentType();
    if (supportsImportSettings(type)) {
        m_xlatSettings[type] = service->getDefaultImportSettings(type);
        showXlatSettings(type);
        applyFileTypeGroups(type);
    }
}

void tnCADImportDialog::onSelectOutputDirectory()
{
    // The dialog may go while the user looks for a directory.
    const QPointer<tnCADImportDialog> self(this);
    const QString directory = QFileDialog::getExistingDirectory(
        this, tr("Select Output Directory"), _output_dir->text(), QFileDialog::ShowDirsOnly);
    if (self && !directory.isEmpty())
        _output_dir->setText(directory);
}

void tnCADImportDialog::onAssetManager()
{
    getService<tnControllerService>()->showAssetManager(true);
}
