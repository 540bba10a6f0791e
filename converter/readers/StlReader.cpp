#include "readers/StlReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Limits.h"
#include "core/MappedFile.h"
#include "core/Text.h"
#include "readers/LineReader.h"
#include "scene/FacetMeshBuilder.h"
#include "scene/PointWelder.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace tnconvert {

namespace {

constexpr std::size_t headerSize = 84;
constexpr std::size_t facetSize = 50;
constexpr std::size_t textHeadSize = 1 << 16; ///< some programs write a long story in line one

std::uint32_t littleEndian32(const char *bytes)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = (value << 8) | static_cast<unsigned char>(bytes[i]);
    return value;
}

float littleEndianFloat(const char *bytes)
{
    const std::uint32_t bits = littleEndian32(bytes);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// Makes a node of each solid as its corners come in.
class StlScene {
public:
    StlScene(const std::string &path, const Settings &settings)
        : m_path(path)
        , m_isWanted(settings.importMeshes)
    {
    }

    /// Ends the solid before. @p triangles is how many are expected, where that is known.
    void beginSolid(std::string_view name, std::uint64_t triangles = 0)
    {
        endSolid();
        m_name = validUtf8(trimmed(name));
        m_builder = {};
        m_builder.corners.reserve(3 * triangles);
        // Closed surfaces have half as many points as triangles.
        const std::uint64_t expected = triangles / 2 + triangles / 8;
        m_builder.points.reserve(expected);
        m_welder.emplace(m_builder.points, expected);
    }

    /// The corner is added soon.
    void prepareCorner(const Vec3 &point) const { m_welder->prepare(point); }

    void addCorner(const Vec3 &point)
    {
        ++m_corners;
        if (m_isWanted)
            m_builder.corners.push_back(m_welder->index(point));
    }

    std::uint64_t cornerCount() const { return m_corners; }

    void addLoss(const std::string &sentence) { m_scene.losses.push_back(sentence); }

    /// The scene of all solids. @p announced is how many triangles the file says that it has.
    Scene take(std::uint64_t announced)
    {
        endSolid();
        m_scene.isFiltered = !m_isWanted && announced > 0;
        const auto add = [&](std::uint64_t count, const char *what) {
            if (m_isWanted && count > 0)
                m_scene.losses.push_back(std::to_string(count) + " of " + std::to_string(announced)
                                         + " triangles " + what);
        };
        add(m_dropped, "have impossible coordinates.");
        add(announced - std::min(announced, m_corners / 3), "have no corners.");
        return std::move(m_scene);
    }

private:
    void endSolid()
    {
        if (!m_welder)
            return;
        m_welder.reset(); // its table is as large as half the mesh
        auto mesh = std::make_shared<Mesh>();
        mesh->name = m_name;
        mesh->primitives.push_back(m_builder.build());
        m_dropped += m_builder.droppedFacets();
        Node node;
        node.name = m_name.empty() ? fileStem(m_path) : m_name;
        node.mesh = std::move(mesh);
        m_scene.roots.push_back(std::move(node));
    }

    const std::string &m_path;
    const bool m_isWanted;
    std::string m_name;
    FacetMeshBuilder m_builder;
    std::optional<PointWelder> m_welder; ///< of the solid that is open
    std::uint64_t m_corners = 0;
    std::size_t m_dropped = 0;
    Scene m_scene;
};

class AsciiStl {
public:
    AsciiStl(const std::string &path, std::string_view text, StlScene &scene, Report &report)
        : m_name(fileName(path))
        , m_lines(text)
        , m_scene(scene)
        , m_report(report)
    {
    }

    /// The number of triangles that begin in the file.
    std::uint64_t read()
    {
        std::string_view line;
        while (m_lines.next(line)) {
            line = trimmed(line);
            if (!line.empty())
                takeStatement(line);
        }
        if (m_isOpen)
            fail("the file ends within a solid");
        return m_facets;
    }

private:
    void takeStatement(std::string_view line)
    {
        const std::string_view word = takeWord(line);
        if (is(word, "vertex")) {
            if (!m_isOpen)
                fail("a vertex stands outside of a solid");
            m_scene.addCorner(vertex(line));
        } else if (is(word, "endfacet") || is(word, "endloop")) {
            if (m_scene.cornerCount() % 3 != 0)
                fail("a facet has not three corners");
        } else if (is(word, "facet")) {
            if (++m_facets % (1 << 18) == 0)
                m_report.progress(50 * m_lines.done(), "Reading");
            checkTriangleCount(m_name, m_facets, statedTriangleBound);
        } else if (is(word, "solid")) {
            m_scene.beginSolid(line);
            m_isOpen = true;
        } else if (is(word, "endsolid")) {
            m_isOpen = false;
        } else if (!is(word, "outer") && !is(word, "color")) {
            fail("\"" + validUtf8(word) + "\" is no word of this format");
        }
    }

    static bool is(std::string_view word, std::string_view expected)
    {
        return word == expected || (word.size() == expected.size() && lowerCase(word) == expected);
    }

    Vec3 vertex(std::string_view numbers) const
    {
        std::array<double, 3> values{};
        for (double &value : values) {
            const std::optional<double> number = takeNumber(numbers);
            if (!number)
                fail("a vertex has not three coordinates");
            value = *number;
        }
        return {values[0], values[1], values[2]};
    }

    [[noreturn]] void fail(const std::string &what) const
    {
        throw ConversionError(m_name + " is damaged at line " + std::to_string(m_lines.number())
                              + ": " + what + ".");
    }

    const std::string m_name;
    LineReader m_lines;
    StlScene &m_scene;
    Report &m_report;
    bool m_isOpen = false;
    std::uint64_t m_facets = 0;
};

/// The corners of facet @p index of a binary file. The stated normal is skipped: many programs
/// write nonsense there.
std::array<Vec3, 3> cornersOf(std::string_view content, std::uint64_t index)
{
    std::array<Vec3, 3> corners;
    const char *p = content.data() + headerSize + index * facetSize + 12;
    for (Vec3 &corner : corners) {
        corner = {littleEndianFloat(p), littleEndianFloat(p + 4), littleEndianFloat(p + 8)};
        p += 12;
    }
    return corners;
}

/// The largest absolute value of the coordinates of some facets; infinite when one is no number.
double reach(std::string_view content, std::uint64_t first, std::uint64_t last)
{
    double largest = 0;
    for (std::uint64_t i = first; i < last; ++i) {
        for (const Vec3 &corner : cornersOf(content, i)) {
            for (const double c : {corner.x, corner.y, corner.z})
                largest = std::fabs(c) <= largest ? largest : std::fabs(c);
            if (!corner.isFinite())
                return std::numeric_limits<double>::infinity();
        }
    }
    return largest;
}

/// The triangles of a binary file, of which it announces no more than its size has room for: some
/// programs never come back to the count. What does not look like triangles was appended by others.
std::uint64_t countBySize(std::string_view content, std::uint64_t announced, StlScene &scene,
                          Report &report)
{
    const std::uint64_t room = (content.size() - headerSize) / facetSize;
    const std::uint64_t odd = (content.size() - headerSize) % facetSize;
    if (room == announced) {
        if (odd > 0)
            report.warning("Behind the last triangle stand further bytes; they are left out.");
        return announced;
    }
    const double usual = reach(content, 0, announced);
    const double bound = announced > 0 && std::isfinite(usual) ? 1000 * usual : 1e9;
    if (!(reach(content, announced, room) <= bound)) {
        scene.addLoss("Behind the last triangle that is announced stand "
                      + std::to_string((room - announced) * facetSize + odd)
                      + " bytes that are no triangles.");
        return announced;
    }
    report.warning("The file announces " + std::to_string(announced) + " triangles and has "
                   + std::to_string(room) + "; all are read.");
    if (odd > 0)
        scene.addLoss("The file ends within triangle " + std::to_string(room + 1) + ".");
    return room;
}

void readBinary(std::string_view content, std::uint64_t count, StlScene &scene, Report &report)
{
    constexpr std::uint64_t ahead = 12; // facets; memory answers within about that time
    scene.beginSolid({}, count);
    for (std::uint64_t i = 0; i < count; ++i) {
        if (i % (1 << 20) == 0)
            report.progress(50 * double(i) / double(count), "Reading");
        for (const Vec3 &corner : cornersOf(content, std::min(i + ahead, count - 1)))
            scene.prepareCorner(corner);
        for (const Vec3 &corner : cornersOf(content, i))
            scene.addCorner(corner);
    }
}

/// Whether the text of an STL file stands in @p content. Throws ConversionError when that is
/// neither text nor a whole binary file that announces @p count triangles.
bool isText(const std::string &path, std::string_view content, std::uint64_t count)
{
    const bool hasHeader = content.size() >= headerSize;
    // Binary files may begin with "solid" as well, so the size decides first.
    const std::uint64_t expected = headerSize + count * facetSize;
    if (hasHeader && content.size() == expected)
        return false;
    const std::string head =
        lowerCase(trimmed(withoutByteOrderMark(content).substr(0, textHeadSize)));
    if (head.compare(0, 5, "solid") == 0
        && (head.find("facet") != std::string::npos || head.find("endsolid") != std::string::npos))
        return true;
    if (!hasHeader || head.find('\0') == std::string::npos)
        throwWrongContent(path, "an STL file",
                          "it neither begins with a solid nor has the size of a binary file");
    if (content.size() < expected)
        throw ConversionError(fileName(path) + " is truncated: it announces "
                              + std::to_string(count) + " triangles but has room for only "
                              + std::to_string((content.size() - headerSize) / facetSize) + ".");
    return false;
}

/// Gives the number of triangles that the file says it has. It is closed when its mesh is made, so
/// that not both of them take room.
std::uint64_t readInto(StlScene &scene, const std::string &path, bool isWanted, Report &report)
{
    const MappedFile file(path);
    const std::string_view content = file.bytes();
    const bool hasHeader = content.size() >= headerSize;
    const std::uint64_t announced = hasHeader ? littleEndian32(content.data() + 80) : 0;
    if (isText(path, content, announced))
        return AsciiStl(path, withoutByteOrderMark(content), scene, report).read();
    checkTriangleCount(fileName(path), announced, statedTriangleBound);
    const std::uint64_t count = countBySize(content, announced, scene, report);
    checkTriangleCount(fileName(path), count, statedTriangleBound);
    if (isWanted)
        readBinary(content, count, scene, report);
    return count;
}

} // namespace

Scene StlReader::read(const std::string &path, const Settings &settings, Report &report)
{
    report.progress(0, "Reading");
    StlScene scene(path, settings);
    const std::uint64_t announced = readInto(scene, path, settings.importMeshes, report);
    report.progress(50, "Reading");
    return scene.take(announced);
}

} // namespace tnconvert
