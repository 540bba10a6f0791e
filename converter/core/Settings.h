#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace tnconvert {

/// How much of the shapes of Step files is healed: all, or what cannot be used otherwise.
enum class Healing { Needed, Full };

/// The translator's options; the members are named after the fields of the JSON object.
struct Settings {
    bool importSurfaces = true;
    bool importInvisibleSurfaces = false;
    bool importMeshes = true;
    bool importInvisibleMeshes = false;
    bool importCurves = false;
    bool importInvisibleCurves = false;
    double chordDeviation = 0.1; ///< mm, greater than 0
    double maxChordLength = 0; ///< mm, 0: unlimited
    double normalTolerance = 15; ///< degrees, 0.1 to 180
    bool useStitching = false;
    double stitchingTolerance = 0.1; ///< mm
    bool fixSurfaceOrientation = false;
    bool mergeGeometries = true;
    bool createLayerGroups = false;
    bool removeEmptyGroups = true;
    bool unshareNodes = false;
    bool flushTransformations = false;
    bool importReferencedFiles = true;
    bool importMetadata = false;
    Healing healing = Healing::Needed;
    bool followOutside = false; ///< references may lead out of the input's folder
    bool fullSource = false; ///< the output names the input's path rather than its name alone

    /// Reads the fields of @p object. Absent fields keep their defaults and unknown ones are
    /// ignored; for a value of the wrong type or out of range the default stands and a sentence is
    /// added to @p warnings.
    static Settings fromJson(const nlohmann::json &object, std::vector<std::string> &warnings);
};

} // namespace tnconvert
