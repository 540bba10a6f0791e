#pragma once

#include "scene/Scene.h"

#include <memory>
#include <string>

namespace tnconvert {

/// Writes a scene as glTF 2.0 binary: metres, Y-up, linear colours.
class GlbWriter {
public:
    /// @p source, a name or path, is noted in the file as the scene's origin; the top node is named
    /// after it. So is @p sourceId, unless it is empty: it means something to the caller alone.
    explicit GlbWriter(std::string source, std::string sourceId = {});

    /// Writes @p scene to @p path, so that a file of this name is always whole: the bytes go to
    /// @p path with ".part" appended, which is made anew, whatever stood there, and renamed at the
    /// end. Links at either name are replaced, not followed. Throws ConversionError, with nothing
    /// left behind, when the file cannot be written.
    void write(const Scene &scene, const std::string &path);

private:
    std::string m_source;
    std::string m_sourceId;
};

} // namespace tnconvert
