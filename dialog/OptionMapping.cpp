#include "dialog/OptionMapping.h"

#include "ui_tnImportDialog.h"

namespace {

using Form = Ui::tnImportDialog;

// Widgets stand in the form itself or in its tessellation options.
template <typename Widget>
Widget *widgetOf(const Form &form, Widget *Ui_tnImportDialog::*member)
{
    return form.*member;
}

template <typename Widget>
Widget *widgetOf(const Form &form, Widget *tnTesselationSettings::*member)
{
    return form._tesselation->*member;
}

template <typename Record, typename Member>
OptionRow<Record> check(Member box, bool (Record::*get)() const, void (Record::*set)(bool))
{
    return {[=](const Record &from, Form &form) { widgetOf(form, box)->setChecked((from.*get)()); },
            [=](const Form &form, Record &to) { (to.*set)(widgetOf(form, box)->isChecked()); }};
}

template <typename Record, typename Member>
OptionRow<Record> value(Member spin, double (Record::*get)() const, void (Record::*set)(double))
{
    return {[=](const Record &from, Form &form) { widgetOf(form, spin)->setValue((from.*get)()); },
            [=](const Form &form, Record &to) { (to.*set)(widgetOf(form, spin)->value()); }};
}

template <typename Record, typename Member>
OptionRow<Record> index(Member combo, int (Record::*get)() const, void (Record::*set)(int))
{
    return {
        [=](const Record &from, Form &form) {
            widgetOf(form, combo)->setCurrentIndex((from.*get)());
        },
        [=](const Form &form, Record &to) { (to.*set)(widgetOf(form, combo)->currentIndex()); }};
}

/// A combo with the entries none, visible, all, for a field and its invisible counterpart.
template <typename Record, typename Member>
OptionRow<Record> noneVisibleAll(Member combo, bool (Record::*get)() const,
                                 void (Record::*set)(bool), bool (Record::*getInvisible)() const,
                                 void (Record::*setInvisible)(bool))
{
    return {[=](const Record &from, Form &form) {
                const int shown = (from.*get)() ? 1 + static_cast<int>((from.*getInvisible)()) : 0;
                widgetOf(form, combo)->setCurrentIndex(shown);
            },
            [=](const Form &form, Record &to) {
                const int chosen = widgetOf(form, combo)->currentIndex();
                (to.*set)(chosen >= 1);
                (to.*setInvisible)(chosen >= 2);
            }};
}

// A field of a record by its name: its getter and its setter.
#define FIELD(Record, name) &Record::get##name, &Record::set##name

#define XLAT(name) FIELD(tndXlatSettings, name)
#define SCENE(name) FIELD(tndSceneImportSettings, name)
#define MERGE(name) FIELD(tndProjectMergeSettings, name)

using tessellation = tnTesselationSettings;

} // namespace

const OptionTable<tndXlatSettings> &xlatOptions()
{
    static const OptionTable<tndXlatSettings> table{
        noneVisibleAll(&Form::_cbImportSurfaces, XLAT(ImportSurfaces),
                       XLAT(ImportInvisibleSurfaces)),
        noneVisibleAll(&Form::_cbImportMeshes, XLAT(ImportMeshes), XLAT(ImportInvisibleMeshes)),
        noneVisibleAll(&Form::_cbImportCurves, XLAT(ImportCurves), XLAT(ImportInvisibleCurves)),
        value(&tessellation::chordDeviationSpinBox, XLAT(ChordDeviation)),
        value(&tessellation::maxChordLengthSpinBox, XLAT(MaxChordLength)),
        value(&tessellation::normalToleranceSpinBox, XLAT(NormalTolerance)),
        check(&tessellation::useStitchingCheckBox, XLAT(UseStitching)),
        value(&tessellation::stitchingToleranceSpinBox, XLAT(StitchingTolerance)),
        check(&tessellation::keepNurbsCheckBox, XLAT(KeepNurbs)),
        check(&tessellation::mergeGeometriesCheckBox, XLAT(MergeGeometries)),
        check(&tessellation::createLayerGroupsCheckBox, XLAT(CreateLayerGroups)),
        check(&tessellation::removeEmptyGroupsCheckBox, XLAT(RemoveEmptyGroups)),
        check(&tessellation::unshareNodesCheckBox, XLAT(UnshareNodes)),
        check(&tessellation::flushTransformationsCheckBox, XLAT(FlushTransformations)),
        check(&Form::m_importGroupMaterials, XLAT(ImportGroupMaterials)),
        check(&Form::m_associativeMeshesEnabled, XLAT(ImportAssociativeMeshes)),
        check(&Form::m_invisibleInstancesEnabled, XLAT(ImportInvisibleInstances)),
        check(&Form::m_importReferencedFiles, XLAT(ImportReferencedFiles)),
        check(&Form::m_camerasEnabled, XLAT(ImportCameras)),
        check(&Form::m_lightsEnabled, XLAT(ImportLights)),
        check(&Form::m_variantsEnabled, XLAT(ImportVariants)),
        check(&Form::m_templateGeometriesEnabled, XLAT(ImportTemplateGeometries)),
        check(&Form::m_emptyLayersEnabled, XLAT(ImportEmptyLayers)),
        check(&Form::m_layerFoldersEnabled, XLAT(ImportLayerFolders)),
        check(&Form::m_coordSystemsEnabled, XLAT(ImportCoordSystems)),
        index(&Form::m_meshLODs, XLAT(ImportMeshLODs)),
        index(&Form::m_jtToolkit, XLAT(JtToolkit)),
        check(&Form::m_reduceKeyframes, XLAT(ReduceKeyframes)),
        check(&Form::m_optimizeMaterials, XLAT(MergeSubReferenceMaterials)),
        check(&Form::m_importMetadata, XLAT(ImportMetadata)),
        check(&Form::m_importAsSmartCheckBox, XLAT(ImportAsSmartReference)),
        {[](const tndXlatSettings &from, Form &form) {
             const bool keep = from.getSmartReferenceBehavior() == tndSmartReferenceBehavior::Keep;
             form.m_referenceBehaviorComboBox->setCurrentIndex(keep ? 0 : 1);
         },
         [](const Form &form, tndXlatSettings &to) {
             to.setSmartReferenceBehavior(form.m_referenceBehaviorComboBox->currentIndex() == 0
                                              ? tndSmartReferenceBehavior::Keep
                                              : tndSmartReferenceBehavior::Remove);
         }},
        // One choice for all types: it comes with the scene's options and is only handed on here.
        {{},
         [](const Form &form, tndXlatSettings &to) {
             to.setSourceReferenceBehavior(form._globalReferenceBehavior->currentIndex() == 0
                                               ? tndSourceReferenceBehavior::None
                                               : tndSourceReferenceBehavior::SourceReference);
         }},
    };
    return table;
}

const OptionTable<tndSceneImportSettings> &sceneImportOptions()
{
    static const OptionTable<tndSceneImportSettings> table{
        {[](const tndSceneImportSettings &from, Form &form) {
             form._globalReferenceBehavior->setCurrentIndex(
                 static_cast<int>(from.getCreateReferences()));
         },
         [](const Form &form, tndSceneImportSettings &to) {
             to.setCreateReferences(form._globalReferenceBehavior->currentIndex() == 1);
         }},
        check(&Form::_preserveTransformations, SCENE(PreserveTransformations)),
        check(&Form::_preserveAnimations, SCENE(PreserveAnimations)),
        check(&Form::_preserveTouchSensors, SCENE(PreserveTouchSensors)),
        check(&Form::_preserveRenderLayerSettings, SCENE(PreserveRenderLayerSettings)),
        check(&Form::_mergeMaterials, SCENE(MergeMaterials)),
        check(&Form::_applyMaterials, SCENE(ApplyMaterialsFromAssetManager)),
        check(&Form::_centerInOrigin, SCENE(CenterInOrigin)),
        check(&Form::_putOnGround, SCENE(PutOnGround)),
        check(&Form::_importAnimations, SCENE(ImportAnimations)),
    };
    return table;
}

const OptionTable<tndProjectMergeSettings> &projectMergeOptions()
{
    static const OptionTable<tndProjectMergeSettings> table{
        check(&Form::_import_variants, MERGE(ImportTarnVariants)),
        check(&Form::_import_touch_sensors, MERGE(ImportTarnTouchSensors)),
        check(&Form::_import_sequences, MERGE(ImportTarnSequences)),
        check(&Form::_import_animation_curves, MERGE(ImportTarnAnimationCurves)),
        check(&Form::_import_clips, MERGE(ImportTarnAnimationClips)),
        check(&Form::_import_annotations, MERGE(ImportTarnAnnotations)),
        check(&Form::_merge_materials, MERGE(MergeTarnMaterials)),
        index(&Form::_environmentOption, MERGE(EnvironmentImportOption)),
    };
    return table;
}
