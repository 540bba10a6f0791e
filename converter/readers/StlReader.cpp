#include "readers/StlReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Limits.h"
#include "core/Text.h"
#include "scene/FacetMeshBuilder.h"

#include <cstring>

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

/// Points of a solid, three for each facet.
struct Solid {
    std::string name;
    std::vector<Vec3> corners;
};

/// What a file holds.
struct StlContent {
    std::vector<Solid> solids;
    std::uint64_t announced = 0; ///< triangles, so far as the file says how many
};

class AsciiStl {
public:
    AsciiStl(const std::string &path, std::string_view text)
        : m_path(path)
        , m_text(text)
    {
    }

    StlContent parse()
    {
        StlContent content;
        std::vector<Solid> &solids = content.solids;
        std::string_view line;
        bool isOpen = false;
        while (nextLine(line)) {
            const std::string_view word = firstWord(line);
            if (word.empty())
                continue;
            if (word == "solid") {
                solids.emplace_back();
                solids.back().name = validUtf8(trimmed(line.substr(word.size())));
                isOpen = true;
            } else if (word == "vertex") {
                if (!isOpen)
                    fail("a vertex stands outside of a solid");
                solids.back().corners.push_back(vertex(line.substr(word.size())));
            } else if (word == "endfacet" || word == "endloop") {
                if (solids.empty() || solids.back().corners.size() % 3 != 0)
                    fail("a facet has not three corners");
            } else if (word == "endsolid") {
                isOpen = false;
            } else if (word == "facet") {
                checkTriangleCount(fileName(m_path), ++content.announced);
            } else if (word != "outer" && word != "color") {
                fail("\"" + validUtf8(word) + "\" is no word of this format");
            }
        }
        if (isOpen)
            fail("the file ends within a solid");
        return content;
    }

private:
    bool nextLine(std::string_view &line)
    {
        if (m_text.empty())
            return false;
        const std::size_t end = m_text.find_first_of("\r\n");
        line = trimmed(m_text.substr(0, end));
        if (end == std::string_view::npos) {
            m_text = {};
        } else {
            const bool isPair = m_text.substr(end, 2) == "\r\n";
            m_text.remove_prefix(end + (isPair ? 2 : 1));
        }
        ++m_line;
        return true;
    }

    std::string_view firstWord(std::string_view line)
    {
        m_word = lowerCase(line.substr(0, line.find_first_of(" \t")));
        return m_word;
    }

    Vec3 vertex(std::string_view numbers) const
    {
        std::array<double, 3> values{};
        for (double &value : values) {
            numbers = trimmed(numbers);
            const std::size_t end = numbers.find_first_of(" \t");
            const std::optional<double> number = parseNumber(numbers.substr(0, end));
            if (!number)
                fail("a vertex has not three coordinates");
            value = *number;
            numbers = end == std::string_view::npos ? std::string_view() : numbers.substr(end);
        }
        return {values[0], values[1], values[2]};
    }

    [[noreturn]] void fail(const std::string &what) const
    {
        throw ConversionError(fileName(m_path) + " is damaged at line " + std::to_string(m_line)
                              + ": " + what + ".");
    }

    const std::string &m_path;
    std::string_view m_text;
    std::string m_word;
    std::size_t m_line = 0;
};

StlContent parseBinary(const std::string &content, std::size_t count)
{
    Solid solid;
    solid.corners.reserve(count * 3);
    for (std::size_t i = 0; i < count; ++i) {
        // The stated normal is skipped: many programs write nonsense there.
        const char *facet = content.data() + headerSize + i * facetSize + 12;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const char *p = facet + corner * 12;
            solid.corners.push_back(
                {littleEndianFloat(p), littleEndianFloat(p + 4), littleEndianFloat(p + 8)});
        }
    }
    return {{std::move(solid)}, count};
}

StlContent parse(const std::string &path, const std::string &content, Scene &scene, Report &report)
{
    const bool hasHeader = content.size() >= headerSize;
    const std::size_t count = hasHeader ? littleEndian32(content.data() + 80) : 0;
    const std::size_t expected = headerSize + count * facetSize;
    // Binary files may begin with "solid" as well, so the size decides first.
    if (hasHeader && content.size() == expected) {
        checkTriangleCount(fileName(path), count);
        return parseBinary(content, count);
    }

    const std::string_view text = withoutByteOrderMark(content);
    const std::string head = lowerCase(trimmed(text.substr(0, textHeadSize)));
    const bool isAscii = head.compare(0, 5, "solid") == 0
        && (head.find("facet") != std::string::npos || head.find("endsolid") != std::string::npos);
    if (isAscii)
        return AsciiStl(path, text).parse();

    const bool isText = head.find('\0') == std::string::npos;
    if (!hasHeader || isText)
        throwWrongContent(path, "an STL file",
                          "it neither begins with a solid nor has the size of a binary file");
    if (content.size() < expected)
        throw ConversionError(fileName(path) + " is truncated: it announces "
                              + std::to_string(count) + " triangles but has room for only "
                              + std::to_string((content.size() - headerSize) / facetSize) + ".");
    const std::size_t further = content.size() - expected;
    if (further % facetSize == 0)
        scene.losses.push_back("Behind the last triangle that is announced there is room for "
                               + std::to_string(further / facetSize) + " more.");
    else
        report.warning("Behind the last triangle stand further bytes; they are left out.");
    checkTriangleCount(fileName(path), count);
    return parseBinary(content, count);
}

} // namespace

Scene StlReader::read(const std::string &path, const Settings &settings, Report &report)
{
    report.progress(0, "Reading");
    const std::string content = readWhole(path);
    Scene scene;
    StlContent stl = parse(path, content, scene, report);
    report.progress(50, "Reading");
    if (!settings.importMeshes) {
        scene.isFiltered = stl.announced > 0;
        return scene;
    }
    std::size_t read = 0;
    std::size_t dropped = 0;
    for (Solid &solid : stl.solids) {
        read += solid.corners.size() / 3;
        FacetMeshBuilder builder;
        builder.points = std::move(solid.corners);
        std::vector<std::uint32_t> indexOf;
        weldPoints(builder.points, indexOf);
        builder.facets.resize(indexOf.size() / 3);
        for (std::size_t i = 0; i < builder.facets.size() * 3; ++i)
            builder.facets[i / 3].corners[i % 3].point = indexOf[i];
        auto mesh = std::make_shared<Mesh>();
        mesh->name = solid.name;
        mesh->primitives.push_back(builder.build());
        dropped += builder.droppedFacets();
        Node node;
        node.name = solid.name.empty() ? fileStem(path) : solid.name;
        node.mesh = mesh;
        scene.roots.push_back(std::move(node));
    }
    const std::string ofAll = " of " + std::to_string(stl.announced) + " triangles ";
    if (dropped > 0)
        scene.losses.push_back(std::to_string(dropped) + ofAll + "have impossible coordinates.");
    if (read < stl.announced)
        scene.losses.push_back(std::to_string(stl.announced - read) + ofAll + "have no corners.");
    return scene;
}

} // namespace tnconvert
