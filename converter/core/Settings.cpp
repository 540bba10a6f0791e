#include "core/Settings.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace tnconvert {

namespace {

struct Switch {
    const char *name;
    bool Settings::*member;
};

struct Quantity {
    const char *name;
    double Settings::*member;
    double least;
    double most;
};

constexpr double unlimited = std::numeric_limits<double>::max();

constexpr Switch switches[] = {
    {"ImportSurfaces", &Settings::importSurfaces},
    {"ImportInvisibleSurfaces", &Settings::importInvisibleSurfaces},
    {"ImportMeshes", &Settings::importMeshes},
    {"ImportInvisibleMeshes", &Settings::importInvisibleMeshes},
    {"ImportCurves", &Settings::importCurves},
    {"ImportInvisibleCurves", &Settings::importInvisibleCurves},
    {"UseStitching", &Settings::useStitching},
    {"FixSurfaceOrientation", &Settings::fixSurfaceOrientation},
    {"MergeGeometries", &Settings::mergeGeometries},
    {"CreateLayerGroups", &Settings::createLayerGroups},
    {"RemoveEmptyGroups", &Settings::removeEmptyGroups},
    {"UnshareNodes", &Settings::unshareNodes},
    {"FlushTransformations", &Settings::flushTransformations},
    {"ImportReferencedFiles", &Settings::importReferencedFiles},
    {"ImportMetadata", &Settings::importMetadata},
    {"FollowOutside", &Settings::followOutside},
    {"FullSource", &Settings::fullSource},
};

constexpr double tiny = std::numeric_limits<double>::min();

constexpr Quantity quantities[] = {
    {"ChordDeviation", &Settings::chordDeviation, tiny, unlimited},
    {"MaxChordLength", &Settings::maxChordLength, 0, unlimited},
    {"NormalTolerance", &Settings::normalTolerance, 0.1, 180},
    {"StitchingTolerance", &Settings::stitchingTolerance, tiny, unlimited},
};

} // namespace

Settings Settings::fromJson(const nlohmann::json &object, std::vector<std::string> &warnings)
{
    Settings settings;
    if (!object.is_object()) {
        if (!object.is_null())
            warnings.emplace_back("The settings are no JSON object; the defaults are used.");
        return settings;
    }
    const auto refuse = [&warnings](const char *name, const char *why) {
        warnings.push_back("The setting " + std::string(name) + " " + why
                           + "; the default is used.");
    };
    for (const Switch &entry : switches) {
        const auto found = object.find(entry.name);
        if (found == object.end())
            continue;
        if (found->is_boolean())
            settings.*entry.member = found->get<bool>();
        else
            refuse(entry.name, "is neither true nor false");
    }
    for (const Quantity &entry : quantities) {
        const auto found = object.find(entry.name);
        if (found == object.end())
            continue;
        if (!found->is_number()) {
            refuse(entry.name, "is no number");
            continue;
        }
        const double value = found->get<double>();
        if (value >= entry.least && value <= entry.most)
            settings.*entry.member = value;
        else
            refuse(entry.name, "is out of range");
    }
    if (const auto found = object.find("Healing"); found != object.end()) {
        if (*found == "full")
            settings.healing = Healing::Full;
        else if (*found != "needed")
            refuse("Healing", "is neither \"needed\" nor \"full\"");
    }
    return settings;
}

} // namespace tnconvert
