#pragma once

#include "platform/tndSettingsFields.h"

/// What becomes of the references of a native file that is imported as a smart reference.
enum class tndSmartReferenceBehavior { None = 0, Source = 1, Keep = 2, Remove = 3 };

/// Whether an imported file stays linked to its source.
enum class tndSourceReferenceBehavior { None = 0, SourceReference = 1 };

/// Which of two translators reads a file.
enum class tndImporterVersion { Lightweight = 0, Legacy = 1 };

/// Lengths are mm, angles degrees; MaxChordLength 0 means no bound. JtToolkit: 0 Parasolid, 1 Jt
/// Open. ImportMeshLODs: 0 all, 1 lowest, 2 highest.
#define TND_XLAT_SETTINGS_FIELDS(FIELD)                                                            \
    FIELD(bool, ImportSurfaces, true)                                                              \
    FIELD(bool, ImportInvisibleSurfaces, false)                                                    \
    FIELD(bool, ImportMeshes, true)                                                                \
    FIELD(bool, ImportInvisibleMeshes, false)                                                      \
    FIELD(bool, ImportCurves, false)                                                               \
    FIELD(bool, ImportInvisibleCurves, false)                                                      \
    FIELD(double, ChordDeviation, 0.1)                                                             \
    FIELD(double, MaxChordLength, 0.0)                                                             \
    FIELD(double, NormalTolerance, 15.0)                                                           \
    FIELD(bool, UseStitching, false)                                                               \
    FIELD(double, StitchingTolerance, 0.1)                                                         \
    FIELD(bool, KeepNurbs, false)                                                                  \
    FIELD(bool, FixSurfaceOrientation, false)                                                      \
    FIELD(bool, MergeGeometries, true)                                                             \
    FIELD(bool, CreateLayerGroups, false)                                                          \
    FIELD(bool, RemoveEmptyGroups, true)                                                           \
    FIELD(bool, UnshareNodes, false)                                                               \
    FIELD(bool, FlushTransformations, false)                                                       \
    FIELD(bool, ImportGroupMaterials, false)                                                       \
    FIELD(bool, ImportAssociativeMeshes, false)                                                    \
    FIELD(bool, ImportInvisibleInstances, false)                                                   \
    FIELD(bool, ImportReferencedFiles, true)                                                       \
    FIELD(bool, ImportCameras, false)                                                              \
    FIELD(bool, ImportLights, false)                                                               \
    FIELD(bool, ImportVariants, false)                                                             \
    FIELD(bool, ImportTemplateGeometries, false)                                                   \
    FIELD(bool, ImportEmptyLayers, false)                                                          \
    FIELD(bool, ImportLayerFolders, false)                                                         \
    FIELD(bool, ImportCoordSystems, false)                                                         \
    FIELD(int, ImportMeshLODs, 0)                                                                  \
    FIELD(int, JtToolkit, 0)                                                                       \
    FIELD(bool, ReduceKeyframes, true)                                                             \
    FIELD(bool, MergeSubReferenceMaterials, true)                                                  \
    FIELD(bool, ImportMetadata, false)                                                             \
    FIELD(bool, ImportAsSmartReference, false)                                                     \
    FIELD(tndSmartReferenceBehavior, SmartReferenceBehavior, tndSmartReferenceBehavior::Keep)      \
    FIELD(tndSourceReferenceBehavior, SourceReferenceBehavior, tndSourceReferenceBehavior::None)   \
    FIELD(tndImporterVersion, ImporterVersion, tndImporterVersion::Lightweight)                    \
    FIELD(bool, UseHealStitch, true)                                                               \
    FIELD(bool, UseLegacyLoader, false)

/// Translator options of one file type.
class tndXlatSettings {
    TND_SETTINGS_RECORD(tndXlatSettings, TND_XLAT_SETTINGS_FIELDS)
};
