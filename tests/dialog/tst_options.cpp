#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ScriptedServices.h"

#include <QtTest/QtTest>
#include <QtWidgets/QFileDialog>

using namespace tnCADFileTypes;

namespace {

/// Fields of records, or widgets, by name; switches, indices and enumerators are numbers, too.
using Values = QMap<QString, double>;

template <typename Record>
Values valuesOf(const Record &record)
{
    Values values;
    record.forEachField([&](const char *name, auto value) { values[name] = double(value); });
    return values;
}

Values operator+(Values values, const Values &changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        values[it.key()] = it.value();
    return values;
}

/// A widget, a value that it doesn't have at first, and the fields that change with it.
struct Change {
    QString widget;
    double value;
    Values fields;
};

/// From "widget value field other=1; ...", where a field takes the value of the widget or its own.
std::vector<Change> changes(const QString &text)
{
    std::vector<Change> all;
    for (const QString &entry : text.simplified().split("; ")) {
        QStringList words = entry.split(' ');
        Change change{words.takeFirst(), words.takeFirst().toDouble(), {}};
        for (const QString &word : words) {
            const QStringList field = word.split('=');
            change.fields[field[0]] = field.size() > 1 ? field[1].toDouble() : change.value;
        }
        all.push_back(change);
    }
    return all;
}

/// One change for each widget of the translator options.
const QString xlatText = QStringLiteral(R"(
    _cbImportSurfaces 2 ImportInvisibleSurfaces=1; _cbImportMeshes 0 ImportMeshes;
    _cbImportCurves 1 ImportCurves; chordDeviationSpinBox 0.0375 ChordDeviation;
    maxChordLengthSpinBox 250.5 MaxChordLength; normalToleranceSpinBox 7.25 NormalTolerance;
    useStitchingCheckBox 1 UseStitching; stitchingToleranceSpinBox 0.0005 StitchingTolerance;
    keepNurbsCheckBox 1 KeepNurbs; fixOrientationCheckBox 1 FixSurfaceOrientation;
    mergeGeometriesCheckBox 0 MergeGeometries; createLayerGroupsCheckBox 1 CreateLayerGroups;
    removeEmptyGroupsCheckBox 0 RemoveEmptyGroups; unshareNodesCheckBox 1 UnshareNodes;
    flushTransformationsCheckBox 1 FlushTransformations;
    m_importGroupMaterials 1 ImportGroupMaterials;
    m_associativeMeshesEnabled 1 ImportAssociativeMeshes;
    m_invisibleInstancesEnabled 1 ImportInvisibleInstances;
    m_importReferencedFiles 0 ImportReferencedFiles; m_camerasEnabled 1 ImportCameras;
    m_lightsEnabled 1 ImportLights; m_variantsEnabled 1 ImportVariants;
    m_templateGeometriesEnabled 1 ImportTemplateGeometries;
    m_emptyLayersEnabled 1 ImportEmptyLayers; m_layerFoldersEnabled 1 ImportLayerFolders;
    m_coordSystemsEnabled 1 ImportCoordSystems; m_meshLODs 2 ImportMeshLODs;
    m_jtToolkit 1 JtToolkit; m_reduceKeyframes 0 ReduceKeyframes;
    m_optimizeMaterials 0 MergeSubReferenceMaterials; m_importMetadata 1 ImportMetadata;
    m_importAsSmartCheckBox 1 ImportAsSmartReference;
    m_referenceBehaviorComboBox 1 SmartReferenceBehavior=3)");

const std::vector<Change> xlatChanges = changes(xlatText);
const std::vector<Change> allChanges = changes(xlatText + R"(;
    _cbImportSurfaces 0 ImportSurfaces; _cbImportMeshes 2 ImportInvisibleMeshes=1;
    _cbImportCurves 2 ImportCurves=1 ImportInvisibleCurves=1;
    _globalReferenceBehavior 1 CreateReferences SourceReferenceBehavior;
    _preserveTransformations 0 PreserveTransformations;
    _preserveAnimations 0 PreserveAnimations; _preserveTouchSensors 0 PreserveTouchSensors;
    _preserveRenderLayerSettings 0 PreserveRenderLayerSettings;
    _mergeMaterials 1 MergeMaterials; _applyMaterials 1 ApplyMaterialsFromAssetManager;
    _centerInOrigin 1 CenterInOrigin; _putOnGround 1 PutOnGround;
    _importAnimations 0 ImportAnimations; _import_variants 0 ImportTarnVariants;
    _import_touch_sensors 0 ImportTarnTouchSensors; _import_sequences 0 ImportTarnSequences;
    _import_animation_curves 0 ImportTarnAnimationCurves;
    _import_clips 0 ImportTarnAnimationClips; _import_annotations 0 ImportTarnAnnotations;
    _merge_materials 1 MergeTarnMaterials; _environmentOption 3 EnvironmentImportOption)");

/// A dialog whose service takes the suffix ".t12" for type 12.
struct Options {
    ScriptedServices services;
    ScriptedFileService &service = services.files;
    tnCADImportDialog dialog{nullptr};
    tnTesselationSettings &tessellation = *dialog._tesselation;
    QComboBox *const types = dialog._cbFileType;

    explicit Options(const std::vector<int> &typesOfFiles = {})
    {
        for (int type = Cinema4D; type <= Unsupported; ++type)
            service.types[QStringLiteral("t%1").arg(type)] = static_cast<FileType>(type);
        prepare(typesOfFiles);
    }
    void prepare(const std::vector<int> &typesOfFiles)
    {
        dialog.prepareImport({}, {}, tnCADImportDialog::AddFiles);
        add(typesOfFiles);
    }
    void add(const std::vector<int> &typesOfFiles)
    {
        QStringList files;
        for (const int type : typesOfFiles)
            files << QStringLiteral("/cad/file.t%1").arg(type);
        dialog.appendFiles(files);
    }
    void removeRows(std::set<int> rows) { dialog.tableView->fileModel()->removeFiles(rows); }
    void select(int type) { types->setCurrentIndex(types->findData(type)); }
    QStringList items() const
    {
        QStringList texts;
        for (int i = 0; i < types->count(); ++i)
            texts << types->itemText(i);
        return texts;
    }

    QWidget *widget(const QString &name) const { return dialog.findChild<QWidget *>(name); }
    static const char *property(const QWidget *widget)
    {
        return widget->inherits("QComboBox") ? "currentIndex"
            : widget->inherits("QCheckBox")  ? "checked"
                                             : "value";
    }
    Values allShown() const
    {
        Values values;
        for (const auto &[name, value, fields] : allChanges)
            values[name] = widget(name)->property(property(widget(name))).toDouble();
        return values;
    }
    void put(const QString &name, double value)
    {
        widget(name)->setProperty(property(widget(name)), value);
    }
    void putAll(const std::vector<Change> &changes)
    {
        for (const Change &change : changes)
            put(change.widget, change.value);
    }
    /// What the service holds of a type and of the scene.
    Values held(FileType type) const
    {
        return valuesOf(service.xlatSettings.at(type)) + valuesOf(service.sceneSettings)
            + valuesOf(service.mergeSettings);
    }
    Values written(FileType type)
    {
        dialog.writeSettingsToService();
        return valuesOf(service.xlatSettings.at(type));
    }
};

} // namespace

class tst_Options : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// A widget changes the fields that are its own and no others, nothing goes to the service
    /// before it is told to, and what went there comes back into the same widget.
    void eachOption()
    {
        for (const auto &[widget, value, fields] : allChanges) {
            Options options({JT});
            const Values shown = options.allShown();
            const Values before = options.held(JT);
            const QByteArray row = widget.toLatin1() + ' ' + QByteArray::number(value);
            QVERIFY2(shown[widget] != value, row);
            options.put(widget, value);
            QVERIFY2(options.held(JT) == before, row);
            options.dialog.writeSettingsToService();
            QVERIFY2(options.held(JT) == before + fields, row);

            options.put(widget, shown[widget]);
            options.prepare({JT});
            options.dialog.readSceneImportSettings();
            options.dialog.readProjectMergeSettings();
            QVERIFY2(options.allShown() == (shown + Values{{widget, value}}), row);
        }
    }

    /// All options at once go into the working copy of the type, leave that of another type alone,
    /// survive a look at that one, and reach the service.
    void eachType()
    {
        const std::set<int> without{Cinema4D, Webplan, Lumen, Obj, Python, Orrery, VRML};
        for (int number = Cinema4D; number <= BCAD; ++number) {
            const auto type = static_cast<FileType>(number);
            const QByteArray row = "type " + QByteArray::number(number);
            const bool supported = tnCADImportDialog::supportsImportSettings(type);
            QVERIFY2(supported != (without.count(type) != 0), row);
            if (!supported || type == Parasolid || type == SketchUp) // the latter share BCAD's
                continue;
            const FileType other = type == JT ? Step : JT;
            Options options;
            tndXlatSettings &record = options.service.xlatSettings[type];
            record.setUseLegacyLoader(true); // no widget
            record.setImporterVersion(tndImporterVersion::Legacy);
            Values expected = valuesOf(record);
            for (const Change &change : xlatChanges)
                expected = expected + change.fields;
            if (type == Heron) // the way of stitching is not on offer
                expected["UseHealStitch"] = 0;
            options.prepare({type == BCAD ? int(SketchUp) : type, other});

            options.select(type);
            options.putAll(xlatChanges);
            options.put("m_healStitch", 0);
            const Values changed = options.allShown();
            options.select(other);
            options.put("m_importerVersion", 0);
            options.select(type);
            QVERIFY2(options.allShown() == changed, row);
            QVERIFY2(options.written(type) == expected, row);
            QVERIFY2(options.written(other) == valuesOf(tndXlatSettings()), row);
        }
    }

    /// The box and the field follow the record on show, whatever the type before has left in the
    /// widgets, and neither the record's word nor the user's is lost while the box is disabled.
    void fixOrientation()
    {
        for (int bits = 0; bits < 16; ++bits) {
            const bool boxBefore = bits & 1, legacy = bits & 2, surfaces = bits & 4, fix = bits & 8;
            Options options;
            options.service.xlatSettings[Step].setFixSurfaceOrientation(boxBefore);
            tndXlatSettings &record = options.service.xlatSettings[CatiaV5];
            record.setImporterVersion(static_cast<tndImporterVersion>(legacy));
            record.setImportSurfaces(surfaces);
            record.setFixSurfaceOrientation(fix);
            options.prepare({Step});
            options.add({CatiaV5});
            options.put("m_importerVersion", !legacy);
            options.select(CatiaV5);

            const QCheckBox *box = options.tessellation.fixOrientationCheckBox;
            const auto check = [&](bool enabled, bool checked) {
                QVERIFY2(box->isEnabled() == enabled, QByteArray::number(bits));
                QVERIFY2(box->isChecked() == checked, QByteArray::number(bits));
                const Values written =
                    options.written(FileType(options.types->currentData().toInt()));
                QVERIFY2(written["FixSurfaceOrientation"] == checked, QByteArray::number(bits));
            };
            check(legacy && surfaces, legacy && surfaces && fix);
            options.put("m_importerVersion", 1);
            options.put("_cbImportSurfaces", 2);
            check(true, fix);
            options.put("fixOrientationCheckBox", !fix);
            options.put("_cbImportSurfaces", 0);
            check(false, false);
            options.put("m_importerVersion", 0);
            options.put("_cbImportSurfaces", 1);
            check(false, false);
            options.put("m_importerVersion", 1);
            check(true, !fix);
            options.put("m_importerVersion", 0);
            options.select(Step);
            check(true, boxBefore);
        }
        Options options({Step});
        for (const int index : {0, 1, 0, 2}) {
            options.put("_cbImportSurfaces", index);
            QCOMPARE(options.tessellation.tessellationFrame->isEnabled(), index != 0);
            QCOMPARE(options.tessellation.keepNurbsCheckBox->isEnabled(), index != 0);
            QVERIFY(options.tessellation.fixOrientationCheckBox->isEnabled());
        }
        Options fresh; // the box shows "Import none" before it is filled, too
        fresh.service.xlatSettings[Step].setImportSurfaces(false);
        fresh.prepare({Step});
        QVERIFY(!fresh.tessellation.tessellationFrame->isEnabled());
        QVERIFY(!fresh.tessellation.keepNurbsCheckBox->isEnabled());
    }

    /// Each type comes after one that shows almost everything.
    void groupsOnShow()
    {
        Options options;
        options.service.xlatSettings[Rhino].setUseLegacyLoader(true);
        options.prepare({KXT, Cosmo, Obj, TARN, Heron, CatiaV5, JT, Rhino, Parasolid});
        const QString geometry =
            " keepNurbsCheckBox surfaceOptionsExtra fixOrientationCheckBox mergeGeometriesCheckBox "
            "createLayerGroupsCheckBox removeEmptyGroupsCheckBox unshareNodesCheckBox";
        const QString surfaces = geometry + " tessellationFrame";
        const QString shared = " _general_settings _advanced_settings";
        const QString imports = " _tesselation _cbImportSurfaces _cbImportMeshes _cbImportCurves";
        const QString cad = shared + surfaces + imports;
        const QString scene = " _scene_settings _globalReferenceBehavior";
        const QString file = " _file_specific_options m_importMetadata";
        const QString parts = " m_importReferencedFiles m_optimizeMaterials";
        const QString jt =
            parts + " m_importGroupMaterials m_invisibleInstancesEnabled m_jtToolkit m_meshLODs";
        const QString heron = parts
            + " m_invisibleInstancesEnabled m_camerasEnabled m_lightsEnabled m_variantsEnabled"
              " m_templateGeometriesEnabled m_emptyLayersEnabled m_layerFoldersEnabled";
        const QString catia = parts
            + " m_importGroupMaterials m_invisibleInstancesEnabled m_associativeMeshesEnabled"
              " m_coordSystemsEnabled m_importerVersion";
        const QString references = " m_importAsSmartCheckBox m_referenceBehaviorComboBox";
        const QString others = " _project_settings m_reduceKeyframes m_healStitch";
        const QStringList names =
            (cad + scene + file + jt + heron + catia + references + others).simplified().split(' ');
        const auto check = [&](int type, const QString &shown) {
            options.select(CatiaV5);
            options.select(type);
            for (const QString &name : names)
                QVERIFY2(options.widget(name)->isHidden() != shown.split(' ').contains(name),
                         qPrintable(options.types->currentText() + ' ' + name));
        };
        check(KXT, scene + file + " _tesselation m_reduceKeyframes");
        check(Cosmo, scene + geometry + " _tesselation");
        check(Obj, scene + surfaces);
        check(TARN, surfaces + " _file_specific_options _project_settings" + parts + references);
        check(Heron, cad + scene + file + heron);
        check(JT, cad + scene + file + jt);
        check(Rhino, surfaces + imports + scene + file);
        check(BCAD, cad + scene);
        check(CatiaV5, cad + scene + file + catia);
        options.service.xlatSettings[Rhino].setUseLegacyLoader(false);
        options.dialog.readXlatSettings();
        check(Rhino, cad + scene + file);

        options.removeRows({0, 1, 2, 3, 4, 5, 6, 7, 8});
        QCOMPARE(options.types->count(), 0);
        for (const QWidget *widget : options.dialog.findChildren<QWidget *>()) {
            if (widget->property("importDialogGroup").isValid())
                QVERIFY2(widget->isHidden(), qPrintable(widget->objectName()));
        }
    }

    void typesInTheBox()
    {
        Options options;
        options.service.disabledTypes = {VRML};
        options.prepare({Parasolid, VRML});
        QCOMPARE(options.items(), QStringList("Base CAD"));
        options.add({Step});
        QCOMPARE(options.items(), QStringList({"Base CAD", "Step"}));
        // It has the box's name and is still sorted as BCAD; the item on show goes away.
        options.add({Obj});
        QCOMPARE(options.items(), QStringList({"Step", "Base CAD", "Obj"}));
        QCOMPARE(options.types->currentText(), QString("Step"));
        QVERIFY(!options.dialog._file_specific_options->isHidden());
        options.prepare({Undefined, Iges});
        QCOMPARE(options.items(), QStringList("Iges"));
    }

    void typesWithoutOptionsKeepTheWidgets()
    {
        Options options({Step, Obj, Unsupported});
        options.select(Step);
        options.putAll(xlatChanges);
        const Values shown = options.allShown();
        const Values step = options.written(Step);
        CapturedStream output(stdout);
        options.select(Unsupported);
        QVERIFY(output.take().contains("onTypeChanged : File type not supported!\n"));
        QVERIFY(!options.dialog._file_specific_options->isHidden());
        QCOMPARE(options.allShown(), shown);
        options.select(Obj);
        QCOMPARE(options.allShown(), shown);
        options.put("keepNurbsCheckBox", 0);
        QCOMPARE(options.written(Step), step);
    }

    void batchesWriteTheirTypesOnly()
    {
        Options options({JT, Step, Iges, Obj});
        options.select(JT);
        options.put("keepNurbsCheckBox", 1);
        options.removeRows({0});
        options.dialog._max_procs->setValue(7);
        options.service.xlatSettings.clear();
        options.dialog.writeSettingsToService();
        QCOMPARE(options.service.xlatSettings.size(), std::size_t(2));
        QVERIFY(options.service.xlatSettings.count(Step)
                && options.service.xlatSettings.count(Iges));
        QCOMPARE(options.service.maxParallelProcesses, 7);
    }

    void defaults()
    {
        Options options({JT, Step});
        tnCADImportDialog &dialog = options.dialog;
        options.service.defaultXlatSettings[Step].setKeepNurbs(true);
        options.service.maxParallelProcesses = 5;
        options.select(JT);
        options.put("unshareNodesCheckBox", 1);
        options.select(Step);
        const Values shown = options.allShown();
        options.putAll(allChanges);
        dialog._max_procs->setValue(9);
        dialog._output_dir->setText("/elsewhere");

        dialog.onDefaults();
        QCOMPARE(dialog._result->text(), QString("All import settings are reset to default."));
        QCOMPARE(dialog._max_procs->value(), 5);
        QCOMPARE(dialog._output_dir->text(), defaultOutputDirectory());
        QCOMPARE(options.allShown(), (shown + Values{{"keepNurbsCheckBox", 1}}));
        QCOMPARE(options.written(JT)["UnshareNodes"], 1.0);
        QCOMPARE(options.held(Step)["KeepNurbs"], 1.0);

        dialog._result->setText("Importing");
        QTRY_COMPARE_WITH_TIMEOUT(
            dialog._result->text(),
            QString("Ready to import. Drag and drop to add more files and folders."), 6000);
    }

    void outputDirectoryAndAssetManager()
    {
        Options options({Step});
        QLineEdit *directory = options.dialog._output_dir;
        directory->setText("/");
        for (const bool accept : {false, true}) {
            QTimer::singleShot(0, &options.dialog, [accept] {
                auto *chooser = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
                QCOMPARE(chooser->directory().path(), QString("/"));
                chooser->selectFile(QDir::tempPath());
                QMetaObject::invokeMethod(chooser, accept ? "accept" : "reject");
            });
            options.dialog._tbOutputPath->click();
            QCOMPARE(directory->text(), accept ? QDir::tempPath() : QString("/"));
        }
        options.dialog._assetManager->click();
        options.dialog._assetManager2->click();
        QCOMPARE(options.services.controller.assetManagerShown, 2);
    }
};

QTEST_MAIN(tst_Options)
#include "tst_options.moc"
