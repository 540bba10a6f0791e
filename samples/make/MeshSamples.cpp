#include "Samples.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

namespace tnsamples {

namespace {

using Point = std::array<float, 3>;
using Triangle = std::array<Point, 3>;

void save(const std::string &path, const std::string &content)
{
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    file << content;
}

/// Twelve teeth with tips 20 mm and gaps 16 mm from the axis, 8 mm thick.
std::vector<Triangle> gear()
{
    constexpr float thickness = 8;
    struct Corner {
        double degrees;
        double radius;
    };
    constexpr Corner tooth[] = {{-10, 16}, {-4, 20}, {4, 20}, {10, 16}};
    std::vector<Point> outline;
    for (int i = 0; i < 12; ++i) {
        for (const Corner &corner : tooth) {
            const double angle = (30 * i + corner.degrees) * M_PI / 180;
            outline.push_back({float(corner.radius * std::cos(angle)),
                               float(corner.radius * std::sin(angle)), 0});
        }
    }
    const auto raised = [](Point p) {
        p[2] = thickness;
        return p;
    };
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const Point a = outline[i];
        const Point b = outline[(i + 1) % outline.size()];
        triangles.push_back({a, b, raised(b)});
        triangles.push_back({a, raised(b), raised(a)});
        triangles.push_back({Point{0, 0, 0}, b, a});
        triangles.push_back({Point{0, 0, thickness}, raised(a), raised(b)});
    }
    return triangles;
}

Point normal(const Triangle &t)
{
    const auto edge = [&t](std::size_t to, std::size_t axis) { return t[to][axis] - t[0][axis]; };
    Point n = {edge(1, 1) * edge(2, 2) - edge(1, 2) * edge(2, 1),
               edge(1, 2) * edge(2, 0) - edge(1, 0) * edge(2, 2),
               edge(1, 0) * edge(2, 1) - edge(1, 1) * edge(2, 0)};
    const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (float &c : n)
        c /= length;
    return n;
}

std::string asciiStl(const std::vector<Triangle> &triangles)
{
    std::ostringstream out;
    const auto print = [&out](const Point &p) {
        out << p[0] << ' ' << p[1] << ' ' << p[2] << '\n';
    };
    out << "solid gear\n";
    for (const Triangle &triangle : triangles) {
        out << "facet normal ";
        print(normal(triangle));
        out << "outer loop\n";
        for (const Point &p : triangle) {
            out << "vertex ";
            print(p);
        }
        out << "endloop\nendfacet\n";
    }
    out << "endsolid gear\n";
    return out.str();
}

std::string binaryStl(const std::vector<Triangle> &triangles)
{
    std::string out = "binary gear";
    out.resize(80, ' ');
    const auto append = [&out](const auto &value) {
        out.append(reinterpret_cast<const char *>(&value), sizeof value);
    };
    append(std::uint32_t(triangles.size()));
    for (const Triangle &triangle : triangles) {
        append(normal(triangle));
        append(triangle);
        append(std::uint16_t(0));
    }
    return out;
}

/// A box of the chair: its least corner and its size, in millimetres, y up.
struct Board {
    const char *name;
    const char *material;
    std::array<int, 3> corner;
    std::array<int, 3> size;
};

std::string chair()
{
    constexpr Board boards[] = {
        {"seat", "cushion", {0, 420, 0}, {400, 40, 400}},
        {"back", "cushion", {0, 460, 0}, {400, 440, 30}},
        {"leg-1", "wood", {0, 0, 0}, {40, 420, 40}},
        {"leg-2", "wood", {360, 0, 0}, {40, 420, 40}},
        {"leg-3", "wood", {0, 0, 360}, {40, 420, 40}},
        {"leg-4", "wood", {360, 0, 360}, {40, 420, 40}},
    };
    constexpr std::array<int, 4> sides[] = {{1, 5, 7, 3}, {2, 4, 8, 6}, {1, 2, 6, 5},
                                            {3, 7, 8, 4}, {1, 3, 4, 2}, {5, 6, 8, 7}};
    std::ostringstream out;
    out << "# A chair of boards\nmtllib chair.mtl\n";
    int base = 0;
    for (const Board &board : boards) {
        out << "o " << board.name << '\n';
        for (unsigned i = 0; i < 8; ++i) {
            out << 'v';
            for (unsigned axis = 0; axis < 3; ++axis)
                out << ' ' << board.corner[axis] + ((i >> axis & 1) != 0 ? board.size[axis] : 0);
            out << '\n';
        }
        out << "usemtl " << board.material << '\n';
        for (const auto &side : sides) {
            out << 'f';
            for (const int corner : side)
                out << ' ' << base + corner;
            out << '\n';
        }
        base += 8;
    }
    return out.str();
}

constexpr const char *chairMaterials = R"(# Materials of the chair
newmtl wood
Kd 0.55 0.35 0.2
Ns 20
newmtl cushion
Kd 0.7 0.1 0.15
Ns 4
)";

constexpr const char *lamp = R"(#VRML V2.0 utf8
# A desk lamp; lengths in metres, y up.
WorldInfo { title "Lamp" info [ "made for trying out the import" ] }
Viewpoint { position 0 0.2 1 }
DEF Lamp Transform {
  children [
    DEF Foot Shape {
      appearance Appearance { material DEF Metal Material {
        diffuseColor 0.3 0.3 0.35 shininess 0.6 } }
      geometry Cylinder { radius 0.08 height 0.02 }
    }
    DEF LowerArm Transform {
      translation 0 0.11 0
      children [
        DEF Rod Shape {
          appearance Appearance { material USE Metal }
          geometry Box { size 0.01 0.2 0.01 }
        }
      ]
    }
    DEF UpperArm Transform {
      translation 0.1 0.21 0
      rotation 0 0 1 -1.5707963
      children USE Rod
    }
    DEF Head Transform {
      translation 0.2 0.19 0
      children [
        Shape {
          appearance Appearance { material DEF Shade Material { diffuseColor 0.8 0.2 0.1 } }
          geometry Cone { bottomRadius 0.05 height 0.06 bottom FALSE }
        }
        Transform { translation 0 -0.02 0 children Shape {
          appearance Appearance { material DEF Bulb Material {
            diffuseColor 1 1 0.8 emissiveColor 0.5 0.5 0.3 transparency 0.2 } }
          geometry Sphere { radius 0.015 }
        } }
      ]
    }
    DEF Switch-plate Transform {
      translation 0.05 0.01 0
      children Shape {
        appearance Appearance { material USE Shade }
        geometry IndexedFaceSet {
          convex FALSE
          coord Coordinate { point [ 0 0.001 0, 0 0.001 0.02, 0.02 0.001 0.02, 0.02 0.001 0.01,
                                     0.01 0.001 0.01, 0.01 0.001 0 ] }
          coordIndex [ 0 1 2 3 4 5 -1 ]
        }
      }
    }
  ]
}
)";

} // namespace

void writeMeshSamples(const std::string &directory)
{
    save(directory + "/gear-ascii.stl", asciiStl(gear()));
    save(directory + "/gear.stl", binaryStl(gear()));
    save(directory + "/chair.obj", chair());
    save(directory + "/chair.mtl", chairMaterials);
    save(directory + "/lamp.wrl", lamp);
}

} // namespace tnsamples
