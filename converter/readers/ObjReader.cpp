#include "readers/ObjReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/MappedFile.h"
#include "core/References.h"
#include "core/Text.h"
#include "readers/LineReader.h"
#include "readers/obj/ObjFile.h"
#include "scene/FacetMeshBuilder.h"

#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <utility>

namespace tnconvert {

namespace {

void checkContent(const std::string &path, std::string_view content)
{
    LineReader lines(content);
    for (std::string_view line; lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line[0] == '#')
            continue;
        if (ObjFile::isKeyword(takeWord(line)))
            return;
        break;
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

/// Gives a part of some entries indices of their own.
class Renumbering {
public:
    explicit Renumbering(std::size_t count)
        : m_count(count)
    {
    }

    /// The index of entry @p old in the part; ObjFile::none has itself.
    std::uint32_t operator()(std::uint32_t old)
    {
        if (old == ObjFile::none)
            return old;
        if (m_newIndex.empty())
            m_newIndex.assign(m_count, ObjFile::none);
        if (m_newIndex[old] == ObjFile::none) {
            m_newIndex[old] = std::uint32_t(m_used.size());
            m_used.push_back(old);
        }
        return m_newIndex[old];
    }

    /// The entries of the part, which ends with this.
    std::vector<std::uint32_t> takeUsed()
    {
        for (const std::uint32_t old : m_used)
            m_newIndex[old] = ObjFile::none;
        return std::exchange(m_used, {});
    }

private:
    std::size_t m_count;
    std::vector<std::uint32_t> m_newIndex; ///< empty before the first part
    std::vector<std::uint32_t> m_used;
};

/// Turns the shapes of a file into meshes, and takes the file to pieces for that.
class ObjSceneBuilder {
public:
    ObjSceneBuilder(ObjFile &file, std::vector<Material> materials)
        : m_file(file)
        , m_hasColors(file.colors.size() == file.points.size())
        , m_materials(std::move(materials))
    {
    }

    std::vector<Node> nodes(const Settings &settings)
    {
        std::vector<Node> result;
        for (const ObjFile::Shape &shape : m_file.shapes) {
            auto mesh = std::make_shared<Mesh>();
            mesh->name = shape.name;
            // The points may be gone after the facets.
            const Primitive lines = settings.importCurves ? linesOf(shape) : Primitive();
            if (settings.importMeshes)
                addFacets(shape, *mesh);
            if (!lines.indices.empty())
                mesh->primitives.push_back(lines);
            Node node;
            node.name = shape.name;
            node.mesh = mesh;
            result.push_back(std::move(node));
        }
        return result;
    }

    /// Triangles that the meshes lack because their coordinates are out of all bounds.
    std::size_t dropped() const { return m_dropped; }

private:
    void addFacets(const ObjFile::Shape &shape, Mesh &mesh)
    {
        const bool hasGroups =
            std::any_of(shape.runs.begin(), shape.runs.end(),
                        [](const ObjFile::Run &run) { return run.smoothingGroup != 0; });
        std::set<int> materials;
        for (const ObjFile::Run &run : shape.runs)
            materials.insert(run.material);
        const bool isWhole = m_file.shapes.size() == 1 && materials.size() == 1;
        for (const int material : materials) {
            FacetMeshBuilder builder = isWhole ? wholeFile() : part(shape, material);
            if (hasGroups) {
                builder.creaseAngle = M_PI;
                builder.groups = groups(shape, material);
            }
            Primitive primitive = builder.build();
            m_dropped += builder.droppedFacets();
            if (material >= 0)
                primitive.material = m_materials[std::size_t(material)];
            mesh.primitives.push_back(std::move(primitive));
        }
    }

    FacetMeshBuilder wholeFile()
    {
        FacetMeshBuilder builder;
        builder.points = std::move(m_file.points);
        builder.corners = std::move(m_file.corners);
        builder.normals = std::move(m_file.normals);
        builder.normalOf = std::move(m_file.normalOf);
        if (m_hasColors)
            builder.pointColors = std::move(m_file.colors);
        return builder;
    }

    /// The triangles of one material, with the points and normals that they use.
    FacetMeshBuilder part(const ObjFile::Shape &shape, int material)
    {
        FacetMeshBuilder builder;
        const bool hasNormalList = !m_file.normalOf.empty();
        forRuns(shape, material, [&](const ObjFile::Run &, std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                builder.corners.push_back(m_newPoint(m_file.corners[i]));
                if (hasNormalList)
                    builder.normalOf.push_back(m_newNormal(m_file.normalOf[i]));
            }
        });
        for (const std::uint32_t point : m_newPoint.takeUsed()) {
            builder.points.push_back(m_file.points[point]);
            if (m_hasColors)
                builder.pointColors.push_back(m_file.colors[point]);
            if (!hasNormalList && !m_file.normals.empty())
                builder.normals.push_back(m_file.normals[point]);
        }
        for (const std::uint32_t normal : m_newNormal.takeUsed())
            builder.normals.push_back(m_file.normals[normal]);
        return builder;
    }

    static std::vector<std::uint32_t> groups(const ObjFile::Shape &shape, int material)
    {
        std::vector<std::uint32_t> result;
        forRuns(shape, material, [&](const ObjFile::Run &run, std::size_t begin, std::size_t end) {
            result.insert(result.end(), (end - begin) / 3, run.smoothingGroup);
        });
        // One group for all is as good as none, and cheaper.
        const bool isOne = result.front() != 0
            && std::all_of(result.begin(), result.end(),
                           [&](std::uint32_t group) { return group == result.front(); });
        return isOne ? std::vector<std::uint32_t>() : result;
    }

    template <typename Take>
    static void forRuns(const ObjFile::Shape &shape, int material, Take take)
    {
        std::size_t begin = shape.begin;
        for (const ObjFile::Run &run : shape.runs) {
            if (run.material == material)
                take(run, begin, run.end);
            begin = run.end;
        }
    }

    Primitive linesOf(const ObjFile::Shape &shape) const
    {
        Primitive primitive;
        primitive.mode = Primitive::Mode::Lines;
        for (const std::vector<std::uint32_t> &line : shape.lines) {
            for (std::size_t i = 0; i < line.size(); ++i) {
                const auto vertex = std::uint32_t(primitive.positions.size());
                primitive.positions.push_back(m_file.points.near(line[i]));
                if (i > 0)
                    primitive.indices.insert(primitive.indices.end(), {vertex - 1, vertex});
            }
        }
        return primitive;
    }

    ObjFile &m_file;
    const bool m_hasColors;
    const std::vector<Material> m_materials;
    Renumbering m_newPoint{m_file.points.size()};
    Renumbering m_newNormal{m_file.normals.size()};
    std::size_t m_dropped = 0;
};

/// Tells @p scene what the file states and the scene lacks, or need not have.
void addLosses(const ObjFile &file, const Settings &settings, std::size_t dropped, Scene &scene)
{
    const bool hasLines =
        std::any_of(file.shapes.begin(), file.shapes.end(),
                    [](const ObjFile::Shape &shape) { return !shape.lines.empty(); });
    scene.isFiltered =
        (!settings.importMeshes && file.faces > 0) || (!settings.importCurves && hasLines);
    const auto add = [&scene](std::size_t count, const std::string &what) {
        if (count > 0)
            scene.losses.push_back(std::to_string(count) + what);
    };
    if (settings.importMeshes) {
        add(file.lostFaces,
            " of " + std::to_string(file.faces + file.lostFaces)
                + " faces have indices out of range or fewer than three corners.");
        add(dropped, " triangles have impossible coordinates.");
        add(file.freeForms, " free-form surfaces are not read.");
    }
    add(file.unknown,
        (file.unknown == 1 ? " line is no statement of this format, line "
                           : " lines are no statements of this format, first line ")
            + std::to_string(file.firstUnknown) + ".");
    if (settings.importCurves)
        add(file.lostLines, " lines have indices out of range or fewer than two points.");
}

/// The file itself is closed at the end.
ObjFile statementsOf(const std::string &path, Report &report)
{
    const MappedFile file(path);
    const std::string_view text = withoutByteOrderMark(file.bytes());
    checkContent(path, text);
    return ObjFile::read(text, fileName(path), report);
}

} // namespace

Scene ObjReader::read(const std::string &path, const Settings &settings, Report &report)
{
    report.progress(0, "Reading");
    ObjFile file = statementsOf(path, report);
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
    scene.roots = builder.nodes(settings);
    addLosses(file, settings, builder.dropped(), scene);
    return scene;
}

} // namespace tnconvert
