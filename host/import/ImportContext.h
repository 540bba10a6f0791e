#pragma once

#include "host/import/Conversions.h"
#include "host/import/FragmentLoader.h"
#include "host/import/ImportLog.h"
#include "host/import/ImportSettings.h"
#include "host/import/OutputNames.h"
#include "host/import/PartNames.h"
#include "host/scene/Scene.h"
#include "platform/tnFileIOService.h"

#include <QtCore/QMultiHash>

namespace tnhost {

/// What all jobs share. Outlives them.
struct ImportContext {
    tnFileIOService &service; ///< whose signals report the jobs
    ImportLog &log;
    Conversions &conversions;
    FragmentLoader &loader;
    OutputNames &names;
    PartNames &partNames;
    Scene &scene;
};

/// What a job was asked to do, with the settings as they were at that time.
struct ImportRequest {
    quint64 id = 0;
    QStringList files;
    tndNode target; ///< null: the root
    tndNode replaced; ///< not null: the files take this node's place
    /// By path: files that take the place of these nodes, as far as they are still there.
    QMultiHash<QString, tndNode> places;
    QString outputDirectory; ///< empty: a temporary one
    bool load = false;
    bool removeConverted = false;
    bool isLargestFirst = false; ///< the files need not start in their order
    ImportSettings settings;
    tndSceneImportSettings sceneSettings;
};

} // namespace tnhost
