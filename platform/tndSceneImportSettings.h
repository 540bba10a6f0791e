#pragma once

#include "platform/tndSettingsFields.h"

#define TND_SCENE_IMPORT_SETTINGS_FIELDS(FIELD)                                                    \
    FIELD(bool, CreateReferences, false)                                                           \
    FIELD(bool, PreserveTransformations, true)                                                     \
    FIELD(bool, PreserveAnimations, true)                                                          \
    FIELD(bool, PreserveTouchSensors, true)                                                        \
    FIELD(bool, PreserveRenderLayerSettings, true)                                                 \
    FIELD(bool, MergeMaterials, false)                                                             \
    FIELD(bool, ApplyMaterialsFromAssetManager, false)                                             \
    FIELD(bool, CenterInOrigin, false)                                                             \
    FIELD(bool, PutOnGround, false)                                                                \
    FIELD(bool, ImportAnimations, true)

/// How converted files enter the scene; one set for all file types.
class tndSceneImportSettings {
    TND_SETTINGS_RECORD(tndSceneImportSettings, TND_SCENE_IMPORT_SETTINGS_FIELDS)
};
