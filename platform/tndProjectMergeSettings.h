#pragma once

#include "platform/tndSettingsFields.h"

/// EnvironmentImportOption: 0 use from scene, 1 use from file, 2 add from file, 3 merge.
#define TND_PROJECT_MERGE_SETTINGS_FIELDS(FIELD)                                                   \
    FIELD(bool, ImportTarnVariants, true)                                                          \
    FIELD(bool, ImportTarnTouchSensors, true)                                                      \
    FIELD(bool, ImportTarnSequences, true)                                                         \
    FIELD(bool, ImportTarnAnimationCurves, true)                                                   \
    FIELD(bool, ImportTarnAnimationClips, true)                                                    \
    FIELD(bool, ImportTarnAnnotations, true)                                                       \
    FIELD(bool, MergeTarnMaterials, false)                                                         \
    FIELD(int, EnvironmentImportOption, 0)

/// What a native project file brings along when it is merged into the open project.
class tndProjectMergeSettings {
    TND_SETTINGS_RECORD(tndProjectMergeSettings, TND_PROJECT_MERGE_SETTINGS_FIELDS)
};
