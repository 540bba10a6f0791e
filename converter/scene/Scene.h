#pragma once

#include "scene/Transform.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tnconvert {

/// Red, green, blue and opacity from 0 to 1, in sRGB as CAD files state them.
using Color = std::array<double, 4>;

struct Material {
    std::string name;
    Color color{0.7, 0.7, 0.7, 1};
    std::array<double, 3> emissive{0, 0, 0};
    double metallic = 0;
    double roughness = 0.5;

    bool operator<(const Material &o) const
    {
        return std::tie(name, color, emissive, metallic, roughness)
            < std::tie(o.name, o.color, o.emissive, o.metallic, o.roughness);
    }
};

using Vec3f = std::array<float, 3>;
using Rgba8 = std::array<std::uint8_t, 4>;

/// Triangles or line segments of one material.
struct Primitive {
    enum class Mode { Triangles, Lines };

    Mode mode = Mode::Triangles;
    Material material;
    std::vector<Vec3f> positions; ///< millimetres
    std::vector<Vec3f> normals; ///< as many as positions, or none
    std::vector<Rgba8> colors; ///< sRGB; as many as positions, or none
    std::vector<std::uint32_t> indices; ///< three for each triangle, two for each segment
};

struct Mesh {
    std::string name;
    std::vector<Primitive> primitives;
};

/// Names and values as the file states them.
using Metadata = std::vector<std::pair<std::string, std::string>>;

struct Node {
    std::string name;
    Transform transform; ///< to the parent's coordinates
    std::shared_ptr<const Mesh> mesh; ///< may be null; shared by all instances of a part
    std::vector<Node> children;
    bool visible = true;
    std::string layer;
    Metadata metadata;
};

enum class UpAxis { Y, Z };

/// What a reader makes of a file. All lengths are millimetres.
struct Scene {
    std::vector<Node> roots;
    UpAxis up = UpAxis::Z;
    Metadata metadata; ///< of the file as a whole
    /// Absolute paths of the part files that could not be read; the rest of the scene is whole.
    std::vector<std::string> missingParts;
    /// A sentence for each thing that the file states and the scene lacks.
    std::vector<std::string> losses;
    /// Whether the settings left out something that could have been drawn.
    bool isFiltered = false;
};

} // namespace tnconvert
