#pragma once

#include "scene/Transform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tnconvert {

/// The statements of an Obj file that draw something.
struct ObjFile {
    struct Corner {
        std::uint32_t point = 0; ///< index into points
        std::optional<std::uint32_t> normal; ///< index into normals
    };
    struct Face {
        std::vector<Corner> corners; ///< at least three
        int material = -1; ///< index into materials; -1: none
        std::uint32_t smoothingGroup = 0;
    };
    struct Shape {
        std::string name;
        std::vector<Face> faces;
        std::vector<std::vector<std::uint32_t>> lines; ///< of points
    };

    std::vector<Vec3> points;
    std::vector<Vec3> colors; ///< as many as points, or fewer when not every point has one
    std::vector<Vec3> normals; ///< null where the file states none that can be used
    std::vector<Shape> shapes; ///< none is empty
    std::vector<std::string> materials; ///< names, as they are used
    std::vector<std::string> libraries; ///< what stands behind each mtllib

    std::uint64_t triangles = 0; ///< that the faces will have
    std::size_t lostFaces = 0; ///< with indices out of range or fewer than three corners
    std::size_t lostLines = 0; ///< with indices out of range or fewer than two points
    std::size_t freeForms = 0; ///< curved surfaces, which are not read

    /// Reads @p text. @p name stands in messages. Throws ConversionError when a vertex has not
    /// three coordinates or when there are too many triangles.
    static ObjFile read(std::string_view text, const std::string &name);
};

} // namespace tnconvert
