#include "host/import/ImportSettings.h"

#include <type_traits>

namespace tnhost {

using tnCADFileTypes::FileType;

tndXlatSettings ImportSettings::get(FileType type) const
{
    const auto found = m_settings.find(type);
    return found == m_settings.end() ? defaults(type) : found->second;
}

void ImportSettings::set(FileType type, const tndXlatSettings &settings)
{
    m_settings[type] = settings;
}

tndXlatSettings ImportSettings::defaults(FileType type)
{
    tndXlatSettings settings;
    switch (type) {
    case FileType::Iges:
    case FileType::Heron:
        // Loose surfaces, each turned as its author happened to draw it.
        settings.setUseStitching(true);
        settings.setFixSurfaceOrientation(true);
        break;
    case FileType::Draftline:
    case FileType::DGN:
        // Drawings are mostly lines, and their layers are how their authors think of them.
        settings.setImportCurves(true);
        settings.setCreateLayerGroups(true);
        break;
    case FileType::JT:
        // Ready-made triangles in several fineness levels; all of them would lie in one another.
        settings.setImportMeshLODs(2);
        settings.setImportMetadata(true);
        break;
    case FileType::Cinema4D:
    case FileType::Obj:
    case FileType::VRML:
    case FileType::SketchUp:
        // Made to be looked at: the groups carry the looks.
        settings.setImportGroupMaterials(true);
        break;
    case FileType::OpenSG:
    case FileType::TARN:
        settings.setImportCameras(true);
        settings.setImportLights(true);
        settings.setImportVariants(true);
        break;
    default:
        break;
    }
    return settings;
}

QJsonObject ImportSettings::toJson(const tndXlatSettings &settings)
{
    QJsonObject object;
    settings.forEachField([&object](const char *name, auto value) {
        if constexpr (std::is_enum_v<decltype(value)>)
            object.insert(QLatin1String(name), static_cast<int>(value));
        else
            object.insert(QLatin1String(name), value);
    });
    return object;
}

} // namespace tnhost
