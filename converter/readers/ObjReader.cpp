#include "readers/ObjReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/References.h"
#include "core/Text.h"
#include "readers/obj/ObjFile.h"
#include "scene/FacetMeshBuilder.h"
#include "scene/PolygonTriangulator.h"

#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <unordered_map>

namespace tnconvert {

namespace {

void checkContent(const std::string &path, std::string_view content)
{
    static const std::set<std::string_view> keywords = {
        "v",    "vn",  "vt",     "vp",     "f",      "l",        "p",       "o",
        "g",    "s",   "mtllib", "usemtl", "cstype", "deg",      "curv",    "surf",
        "parm", "end", "mg",     "bevel",  "lod",    "c_interp", "d_interp"};
    while (!content.empty()) {
        const std::size_t end = content.find_first_of("\r\n");
        const std::string_view line = trimmed(content.substr(0, end));
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
        if (line.empty() || line[0] == '#')
            continue;
        if (keywords.count(line.substr(0, line.find_first_of(" \t"))) == 0)
            break;
        return;
    }
    throwWrongContent(path, "an Obj file", "its first line has no keyword of this format");
}

Material materialOf(const tinyobj::material_t &stated)
{
    Material material;
    material.name = stated.name;
    for (std::size_t i = 0; i < 3; ++i) {
        material.color[i] = stated.diffuse[i];
        material.emissive[i] = stated.emission[i];
    }
    material.color[3] = stated.dissolve;
    material.metallic = stated.metallic;
    if (stated.roughness > 0)
        material.roughness = stated.roughness;
    else if (stated.shininess > 1)
        material.roughness = std::sqrt(2 / (stated.shininess + 2.0));
    return material;
}

/// The material libraries of one file.
class Libraries {
public:
    Libraries(const std::string &objPath, bool followsOutside, Report &report)
        : m_directory(std::filesystem::path(absolutePath(objPath)).parent_path())
        , m_references(objPath, followsOutside)
        , m_report(report)
    {
    }

    /// @p names stand in one line. A name may have blanks in it, or be one of several.
    void read(const std::string &names)
    {
        std::error_code ignored;
        if (std::filesystem::exists(m_directory / names, ignored))
            return readOne(names);
        std::istringstream words(names);
        for (std::string name; words >> name;)
            readOne(name);
    }

    /// A sentence for each library that may not be read.
    std::vector<std::string> losses() const { return {m_losses.begin(), m_losses.end()}; }

    /// The material of this name; the usual one, with a warning, where there is none.
    Material material(const std::string &name) const
    {
        const auto found = m_indices.find(name);
        if (found != m_indices.end())
            return materialOf(m_materials[std::size_t(found->second)]);
        m_report.warning("The material " + validUtf8(name) + " is not known.");
        return {};
    }

private:
    void readOne(const std::string &name)
    {
        try {
            const std::string path = (m_directory / name).string();
            if (!m_references.mayFollow(path)) {
                m_losses.insert("The materials of " + validUtf8(path)
                                + " are missing: " + m_references.objection(path) + ".");
                return;
            }
            m_report.reference(absolutePath(path));
            m_references.check(path);
            // Other than the library's own way, this opens nothing but files, which cannot block.
            checkReadable(path);
            std::istringstream stream(std::string(withoutByteOrderMark(readWhole(path))));
            std::string warnings;
            std::string errors;
            tinyobj::LoadMtl(&m_indices, &m_materials, &stream, &warnings, &errors);
            std::istringstream lines(warnings + errors);
            for (std::string line; std::getline(lines, line);) {
                if (!trimmed(line).empty())
                    m_report.warning(validUtf8(trimmed(line)));
            }
        } catch (const ConversionError &error) {
            m_report.warning(error.what());
        }
    }

    const std::filesystem::path m_directory;
    const References m_references;
    Report &m_report;
    std::set<std::string> m_losses; ///< a file may name one library many times
    std::map<std::string, int> m_indices;
    std::vector<tinyobj::material_t> m_materials;
};

/// Turns the shapes of a file into meshes.
class ObjSceneBuilder {
public:
    ObjSceneBuilder(const ObjFile &file, std::vector<Material> materials)
        : m_file(file)
        , m_hasColors(file.colors.size() == file.points.size())
        , m_materials(std::move(materials))
    {
    }

    Node shapeNode(const ObjFile::Shape &shape, const Settings &settings)
    {
        auto mesh = std::make_shared<Mesh>();
        mesh->name = shape.name;
        if (settings.importMeshes)
            addFacets(shape, *mesh);
        if (settings.importCurves)
            addLines(shape, *mesh);
        Node node;
        node.name = shape.name;
        node.mesh = mesh;
        return node;
    }

    /// Triangles that the meshes lack because their coordinates are out of all bounds.
    std::size_t dropped() const { return m_dropped; }

private:
    /// The facets of one material, with the points that they use.
    struct Part {
        FacetMeshBuilder builder;
        std::unordered_map<std::uint32_t, std::uint32_t> pointOf;
    };

    void addFacets(const ObjFile::Shape &shape, Mesh &mesh)
    {
        const bool hasGroups =
            std::any_of(shape.faces.begin(), shape.faces.end(),
                        [](const ObjFile::Face &face) { return face.smoothingGroup != 0; });
        std::map<int, Part> parts;
        for (const ObjFile::Face &face : shape.faces)
            addFace(face, hasGroups, parts[face.material]);
        for (auto &[id, part] : parts) {
            Primitive primitive = part.builder.build();
            m_dropped += part.builder.droppedFacets();
            if (id >= 0)
                primitive.material = m_materials[std::size_t(id)];
            mesh.primitives.push_back(std::move(primitive));
        }
    }

    void addFace(const ObjFile::Face &face, bool hasGroups, Part &part) const
    {
        std::vector<Vec3> positions;
        for (const ObjFile::Corner &c : face.corners)
            positions.push_back(m_file.points[c.point]);
        for (const std::array<std::uint32_t, 3> &triangle : triangulated(positions)) {
            FacetMeshBuilder::Facet facet;
            for (std::size_t i = 0; i < 3; ++i)
                facet.corners[i] = corner(face.corners[triangle[i]], part);
            if (hasGroups) {
                facet.smoothingGroup = face.smoothingGroup;
                part.builder.creaseAngle = M_PI;
            }
            part.builder.facets.push_back(facet);
        }
    }

    FacetMeshBuilder::Corner corner(const ObjFile::Corner &stated, Part &part) const
    {
        FacetMeshBuilder::Corner result;
        const auto [entry, isNew] =
            part.pointOf.try_emplace(stated.point, std::uint32_t(part.builder.points.size()));
        if (isNew)
            part.builder.points.push_back(m_file.points[stated.point]);
        result.point = entry->second;
        if (stated.normal)
            result.normal = m_file.normals[*stated.normal];
        if (m_hasColors)
            result.color = color(m_file.colors[stated.point]);
        return result;
    }

    void addLines(const ObjFile::Shape &shape, Mesh &mesh) const
    {
        Primitive primitive;
        primitive.mode = Primitive::Mode::Lines;
        for (const std::vector<std::uint32_t> &line : shape.lines) {
            for (std::size_t i = 0; i < line.size(); ++i) {
                const Vec3 &p = m_file.points[line[i]];
                const auto vertex = std::uint32_t(primitive.positions.size());
                primitive.positions.push_back({float(p.x), float(p.y), float(p.z)});
                if (i > 0)
                    primitive.indices.insert(primitive.indices.end(), {vertex - 1, vertex});
            }
        }
        if (!primitive.indices.empty())
            mesh.primitives.push_back(std::move(primitive));
    }

    static Rgba8 color(const Vec3 &c)
    {
        const auto byte = [](double v) {
            return std::uint8_t(std::lround(std::clamp(v, 0.0, 1.0) * 255));
        };
        return {byte(c.x), byte(c.y), byte(c.z), 255};
    }

    const ObjFile &m_file;
    const bool m_hasColors;
    const std::vector<Material> m_materials;
    std::size_t m_dropped = 0;
};

/// Tells @p scene what the file states and the scene lacks, or need not have.
void addLosses(const ObjFile &file, const Settings &settings, std::size_t dropped, Scene &scene)
{
    std::size_t faces = 0;
    bool hasLines = false;
    for (const ObjFile::Shape &shape : file.shapes) {
        faces += shape.faces.size();
        hasLines = hasLines || !shape.lines.empty();
    }
    scene.isFiltered =
        (!settings.importMeshes && faces > 0) || (!settings.importCurves && hasLines);
    const auto add = [&scene](std::size_t count, const std::string &what) {
        if (count > 0)
            scene.losses.push_back(std::to_string(count) + what);
    };
    if (settings.importMeshes) {
        add(file.lostFaces,
            " of " + std::to_string(faces + file.lostFaces)
                + " faces have indices out of range or fewer than three corners.");
        add(dropped, " triangles have impossible coordinates.");
        add(file.freeForms, " free-form surfaces are not read.");
    }
    if (settings.importCurves)
        add(file.lostLines, " lines have indices out of range or fewer than two points.");
}

} // namespace

Scene ObjReader::read(const std::string &path, const Settings &settings, Report &report)
{
    report.progress(0, "Reading");
    const std::string content = readWhole(path);
    const std::string_view text = withoutByteOrderMark(content);
    checkContent(path, text);
    const ObjFile file = ObjFile::read(text, fileName(path));
    report.progress(60, "Reading");
    Libraries libraries(path, settings.followOutside, report);
    for (const std::string &names : file.libraries)
        libraries.read(names);
    std::vector<Material> materials;
    for (const std::string &name : file.materials)
        materials.push_back(libraries.material(name));

    Scene scene;
    scene.up = UpAxis::Y;
    scene.losses = libraries.losses();
    ObjSceneBuilder builder(file, std::move(materials));
    for (const ObjFile::Shape &shape : file.shapes)
        scene.roots.push_back(builder.shapeNode(shape, settings));
    addLosses(file, settings, builder.dropped(), scene);
    return scene;
}

} // namespace tnconvert
