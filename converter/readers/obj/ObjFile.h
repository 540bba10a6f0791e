#pragma once

#include "scene/PointList.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tnconvert {

class Report;

/// The statements of an Obj file that draw something, its polygons in triangles.
struct ObjFile {
    /// In place of an index into normals: none is stated.
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    /// Triangles that follow each other and look alike.
    struct Run {
        int material = -1; ///< index into materials; -1: none
        std::uint32_t smoothingGroup = 0;
        std::size_t end =
            0; ///< index of the first corner behind; they begin where the last run ends
    };
    struct Shape {
        std::string name;
        std::size_t begin = 0; ///< its first corner
        std::vector<Run> runs;
        std::vector<std::vector<std::uint32_t>> lines; ///< of points
    };

    PointList points;
    std::vector<Rgba8> colors; ///< as many as points, or fewer when not every point has one
    std::vector<Vec3f> normals; ///< null where the file states none that can be used
    std::vector<std::uint32_t> corners; ///< indices into points, three for each triangle
    /// For each corner an index into normals, or none; empty when each point has the normal of its
    /// own index, so far as there are so many.
    std::vector<std::uint32_t> normalOf;
    std::vector<Shape> shapes; ///< none is empty
    std::vector<std::string> materials; ///< names, as they are used
    std::vector<std::string> libraries; ///< what stands behind each mtllib

    std::size_t faces = 0; ///< polygons that can be drawn
    std::size_t lostFaces = 0; ///< with indices out of range or fewer than three corners
    std::size_t lostLines = 0; ///< with indices out of range or fewer than two points
    std::size_t freeForms = 0; ///< curved surfaces, which are not read
    std::size_t unknown = 0; ///< statements that the format does not have
    std::size_t firstUnknown = 0; ///< the line of the first of them

    /// Whether the format has statements that begin with @p keyword.
    static bool isKeyword(std::string_view keyword);

    /// Reads @p text. @p name stands in messages. Throws ConversionError when a vertex has not
    /// three coordinates or when there are too many triangles.
    static ObjFile read(std::string_view text, const std::string &name, Report &report);
};

} // namespace tnconvert
