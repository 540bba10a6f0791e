#include "readers/ObjReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/References.h"
#include "core/Text.h"
#include "scene/FacetMeshBuilder.h"

#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
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

/// Splits the first word off @p text, at the blanks that the library splits at.
std::string_view nextWord(std::string_view &text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(word.size());
    return word;
}

/// What the library would get wrong without a word: it takes coordinates that are no numbers for
/// 0, and it knows no lines that continue behind a backslash.
class ObjPreparation {
public:
    ObjPreparation(const std::string &path, std::string &content)
        : m_path(path)
        , m_content(content)
    {
    }

    void run()
    {
        std::size_t line = 1;
        for (std::size_t begin = 0; begin < m_content.size();) {
            std::size_t end = lineEnd(begin);
            std::size_t lineCount = 1;
            const std::size_t first = m_content.find_first_not_of(" \t", begin);
            // Names and comments may well end with a backslash of their own.
            const bool mayContinue =
                first < end && std::string_view("vflp").find(m_content[first]) != std::string::npos;
            for (std::size_t last = begin; mayContinue && continues(last, end); ++lineCount) {
                last = end + newlineLength(end);
                end = lineEnd(last);
            }
            std::size_t length = end - begin;
            if (lineCount > 1) {
                join(begin, end);
                length = lineEnd(begin) - begin;
            }
            checkVertex(std::string_view(m_content).substr(begin, length), line);
            line += lineCount;
            begin = end + newlineLength(end);
        }
    }

private:
    std::size_t lineEnd(std::size_t begin) const
    {
        return std::min(m_content.find_first_of("\r\n", begin), m_content.size());
    }

    std::size_t newlineLength(std::size_t at) const
    {
        return m_content.compare(at, 2, "\r\n") == 0 ? 2 : 1;
    }

    bool continues(std::size_t begin, std::size_t end) const
    {
        return end > begin && end < m_content.size() && m_content[end - 1] == '\\'
            && std::string_view(m_content).substr(begin, end - begin).find('#')
            == std::string_view::npos;
    }

    /// Moves the line ends to the end, so that the lines behind keep their numbers.
    void join(std::size_t begin, std::size_t end)
    {
        std::string joined;
        std::string newlines;
        for (std::size_t at = begin; at < end;) {
            const std::size_t stop = lineEnd(at);
            if (stop >= end) {
                joined.append(m_content, at, end - at);
                break;
            }
            joined.append(m_content, at, stop - 1 - at);
            joined.append(newlineLength(stop), ' ');
            newlines += '\n';
            at = stop + newlineLength(stop);
        }
        m_content.replace(begin, end - begin, joined + newlines);
    }

    void checkVertex(std::string_view text, std::size_t line) const
    {
        if (nextWord(text) != "v")
            return;
        text = text.substr(0, text.find('#'));
        for (int i = 0; i < 3; ++i) {
            if (!parseNumber(nextWord(text)))
                throw ConversionError(fileName(m_path) + " is damaged at line "
                                      + std::to_string(line)
                                      + ": a vertex has not three coordinates.");
        }
    }

    const std::string &m_path;
    std::string &m_content;
};

/// Unlike the library's own reader, one that opens nothing but files, which cannot block.
class MaterialLibraryReader : public tinyobj::MaterialReader {
public:
    MaterialLibraryReader(const std::string &objPath, bool followsOutside)
        : m_directory(std::filesystem::path(absolutePath(objPath)).parent_path())
        , m_references(objPath, followsOutside)
    {
    }

    /// A sentence for each library that may not be read.
    std::vector<std::string> losses() const { return {m_losses.begin(), m_losses.end()}; }

    bool operator()(const std::string &name, std::vector<tinyobj::material_t> *materials,
                    std::map<std::string, int> *indices, std::string *warnings,
                    std::string *errors) override
    {
        // A blank at the end of the line makes an empty name.
        if (name.empty())
            return false;
        try {
            const std::string path = (m_directory / name).string();
            if (!m_references.mayFollow(path)) {
                m_losses.insert("The materials of " + validUtf8(path)
                                + " are missing: " + m_references.objection(path) + ".");
                return false;
            }
            m_references.check(path);
            checkReadable(path);
            std::istringstream stream(std::string(withoutByteOrderMark(readWhole(path))));
            tinyobj::LoadMtl(indices, materials, &stream, warnings, errors);
            return true;
        } catch (const ConversionError &error) {
            *warnings += std::string(error.what()) + "\n";
            return false;
        }
    }

private:
    const std::filesystem::path m_directory;
    const References m_references;
    std::set<std::string> m_losses; ///< a file may name one library many times
};

/// The library's messages, one for each line.
void forEachLine(const std::string &text, const std::function<void(const std::string &)> &use)
{
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (!trimmed(line).empty())
            use(validUtf8(trimmed(line)));
    }
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

/// Turns the library's flat lists into meshes.
class ObjSceneBuilder {
public:
    ObjSceneBuilder(const tinyobj::attrib_t &attributes,
                    const std::vector<tinyobj::material_t> &materials, Report &report)
        : m_attributes(attributes)
        , m_hasColors(!attributes.colors.empty()
                      && attributes.colors.size() == attributes.vertices.size())
        , m_report(report)
    {
        for (const tinyobj::material_t &material : materials)
            m_materials.push_back(materialOf(material));
    }

    Node shapeNode(const tinyobj::shape_t &shape, const Settings &settings)
    {
        auto mesh = std::make_shared<Mesh>();
        mesh->name = shape.name;
        if (settings.importMeshes)
            addFacets(shape.mesh, *mesh);
        if (settings.importCurves)
            addLines(shape.lines, *mesh);
        Node node;
        node.name = shape.name;
        node.mesh = mesh;
        return node;
    }

    void warnOfDropped()
    {
        if (m_dropped > 0)
            m_report.warning(
                std::to_string(m_dropped)
                + " faces with indices out of range or impossible coordinates are left out.");
    }

private:
    /// The facets of one material, with the points that they use.
    struct Part {
        FacetMeshBuilder builder;
        std::unordered_map<int, std::uint32_t> pointOf;
    };

    void addFacets(const tinyobj::mesh_t &stated, Mesh &mesh)
    {
        const bool hasGroups =
            std::any_of(stated.smoothing_group_ids.begin(), stated.smoothing_group_ids.end(),
                        [](unsigned id) { return id != 0; });
        std::map<int, Part> parts;
        for (std::size_t i = 0; i + 2 < stated.indices.size(); i += 3) {
            const std::size_t face = i / 3;
            const int id = face < stated.material_ids.size() ? stated.material_ids[face] : -1;
            Part &part = parts[id];
            FacetMeshBuilder::Facet facet;
            for (std::size_t c = 0; c < 3; ++c)
                facet.corners[c] = corner(stated.indices[i + c], part);
            if (hasGroups && face < stated.smoothing_group_ids.size()) {
                facet.smoothingGroup = stated.smoothing_group_ids[face];
                part.builder.creaseAngle = M_PI;
            }
            part.builder.facets.push_back(facet);
        }
        for (auto &[id, part] : parts) {
            Primitive primitive = part.builder.build();
            m_dropped += part.builder.droppedFacets();
            if (id >= 0 && std::size_t(id) < m_materials.size())
                primitive.material = m_materials[std::size_t(id)];
            mesh.primitives.push_back(std::move(primitive));
        }
    }

    FacetMeshBuilder::Corner corner(const tinyobj::index_t &index, Part &part) const
    {
        FacetMeshBuilder::Corner result;
        // An index beyond all points makes the builder drop the facet.
        result.point = 0xFFFFFFFF;
        if (!isPoint(index.vertex_index))
            return result;
        const auto [entry, isNew] =
            part.pointOf.try_emplace(index.vertex_index, std::uint32_t(part.builder.points.size()));
        if (isNew)
            part.builder.points.push_back(triple(m_attributes.vertices, index.vertex_index));
        result.point = entry->second;
        if (index.normal_index >= 0
            && std::size_t(index.normal_index) * 3 + 2 < m_attributes.normals.size())
            result.normal = triple(m_attributes.normals, index.normal_index);
        if (m_hasColors)
            result.color = color(index.vertex_index);
        return result;
    }

    void addLines(const tinyobj::lines_t &stated, Mesh &mesh)
    {
        Primitive primitive;
        primitive.mode = Primitive::Mode::Lines;
        std::size_t start = 0;
        for (const int count : stated.num_line_vertices) {
            bool continues = false;
            for (std::size_t i = start; i < start + std::size_t(count) && i < stated.indices.size();
                 ++i) {
                const int index = stated.indices[i].vertex_index;
                if (!isPoint(index)) {
                    ++m_dropped;
                    continues = false;
                    continue;
                }
                const Vec3 p = triple(m_attributes.vertices, index);
                const auto vertex = std::uint32_t(primitive.positions.size());
                primitive.positions.push_back({float(p.x), float(p.y), float(p.z)});
                if (continues)
                    primitive.indices.insert(primitive.indices.end(), {vertex - 1, vertex});
                continues = true;
            }
            start += std::size_t(count);
        }
        if (!primitive.indices.empty())
            mesh.primitives.push_back(std::move(primitive));
    }

    bool isPoint(int index) const
    {
        return index >= 0 && std::size_t(index) * 3 + 2 < m_attributes.vertices.size();
    }

    static Vec3 triple(const std::vector<tinyobj::real_t> &values, int index)
    {
        const std::size_t start = std::size_t(index) * 3;
        return {values[start], values[start + 1], values[start + 2]};
    }

    Rgba8 color(int index) const
    {
        const Vec3 c = triple(m_attributes.colors, index);
        const auto byte = [](double v) {
            return std::uint8_t(std::lround(std::clamp(v, 0.0, 1.0) * 255));
        };
        return {byte(c.x), byte(c.y), byte(c.z), 255};
    }

    const tinyobj::attrib_t &m_attributes;
    const bool m_hasColors;
    Report &m_report;
    std::vector<Material> m_materials;
    std::size_t m_dropped = 0;
};

} // namespace

Scene ObjReader::read(const std::string &path, const Settings &settings, Report &report)
{
    report.progress(0, "Reading");
    std::string content(withoutByteOrderMark(readWhole(path)));
    checkContent(path, content);
    ObjPreparation(path, content).run();
    tinyobj::attrib_t attributes;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
    std::string warnings;
    std::string errors;
    std::istringstream stream(content);
    MaterialLibraryReader libraries(path, settings.followOutside);
    const bool isRead = tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors,
                                         &stream, &libraries, /*triangulate*/ true,
                                         /*default_vcols_fallback*/ false);
    forEachLine(warnings, [&report](const std::string &line) { report.warning(line); });
    if (!isRead) {
        std::string reasons;
        forEachLine(errors, [&reasons](const std::string &line) { reasons += " " + line; });
        throw ConversionError(
            fileName(path) + " is damaged:" + (reasons.empty() ? " it cannot be read." : reasons));
    }
    report.progress(60, "Reading");

    Scene scene;
    scene.up = UpAxis::Y;
    scene.losses = libraries.losses();
    ObjSceneBuilder builder(attributes, materials, report);
    for (const tinyobj::shape_t &shape : shapes)
        scene.roots.push_back(builder.shapeNode(shape, settings));
    builder.warnOfDropped();
    return scene;
}

} // namespace tnconvert
