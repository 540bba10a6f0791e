#pragma once

#include "platform/tnCADFileTypes.h"
#include "platform/tndXlatSettings.h"

#include <QtCore/QJsonObject>

#include <map>

namespace tnhost {

/// The translator options of all file types.
class ImportSettings {
public:
    /// What has been set for the type, else its defaults.
    tndXlatSettings get(tnCADFileTypes::FileType type) const;
    void set(tnCADFileTypes::FileType type, const tndXlatSettings &settings);

    /// What suits most files of the type.
    static tndXlatSettings defaults(tnCADFileTypes::FileType type);
    /// Every field by its name; enumerations as numbers.
    static QJsonObject toJson(const tndXlatSettings &settings);

private:
    std::map<tnCADFileTypes::FileType, tndXlatSettings> m_settings;
};

} // namespace tnhost
