#include "readers/obj/ObjFile.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "core/Text.h"

#include <algorithm>
#include <map>

namespace tnconvert {

namespace {

constexpr const char *blanks = " \t";

/// Splits the first word off @p text.
std::string_view nextWord(std::string_view &text)
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text.remove_prefix(word.size());
    return word;
}

std::optional<Vec3> nextTriple(std::string_view &text)
{
    const std::optional<double> x = parseNumber(nextWord(text));
    const std::optional<double> y = parseNumber(nextWord(text));
    const std::optional<double> z = parseNumber(nextWord(text));
    if (!x || !y || !z)
        return std::nullopt;
    return Vec3{*x, *y, *z};
}

/// Indices count from 1 on, negative ones backwards from the last entry so far.
std::optional<std::uint32_t> resolved(std::string_view word, std::size_t count)
{
    const double stated = parseNumber(word).value_or(0);
    const double index = stated < 0 ? double(count) + stated : stated - 1;
    if (!(index >= 0 && index < double(count)))
        return std::nullopt;
    return std::uint32_t(index);
}

class Parser {
public:
    Parser(std::string_view text, const std::string &name)
        : m_text(text)
        , m_name(name)
    {
        m_file.shapes.emplace_back();
    }

    ObjFile parse()
    {
        using Handler = void (Parser::*)(std::string_view);
        static const std::map<std::string_view, Handler> handlers = {
            {"v", &Parser::addPoint},       {"vn", &Parser::addNormal},
            {"f", &Parser::addFace},        {"l", &Parser::addLine},
            {"o", &Parser::beginShape},     {"g", &Parser::beginShape},
            {"s", &Parser::setSmoothing},   {"usemtl", &Parser::setMaterial},
            {"surf", &Parser::noteSurface}, {"mtllib", &Parser::addLibrary}};
        for (std::string line; nextStatement(line);) {
            std::string_view rest = line;
            const auto handler = handlers.find(nextWord(rest));
            if (handler != handlers.end())
                (this->*handler->second)(trimmed(rest));
        }
        beginShape({});
        m_file.shapes.pop_back();
        return std::move(m_file);
    }

private:
    std::string_view takeLine()
    {
        const std::size_t end = std::min(m_text.find_first_of("\r\n"), m_text.size());
        const std::string_view line = m_text.substr(0, end);
        m_text.remove_prefix(end);
        m_text.remove_prefix(
            std::min<std::size_t>(m_text.substr(0, 2) == "\r\n" ? 2 : 1, m_text.size()));
        ++m_lastLine;
        return line;
    }

    /// A line and those that it goes on in, behind a backslash.
    bool nextStatement(std::string &statement)
    {
        if (m_text.empty())
            return false;
        m_line = m_lastLine + 1;
        statement = takeLine();
        const std::size_t first = statement.find_first_not_of(blanks);
        // Names and comments may well end with a backslash of their own.
        if (first == std::string::npos || std::string_view("vfl").find(statement[first]) > 2)
            return true;
        while (!m_text.empty() && statement.back() == '\\'
               && statement.find('#') == std::string::npos) {
            statement.back() = ' ';
            statement += takeLine();
        }
        statement.erase(std::min(statement.find('#'), statement.size()));
        return true;
    }

    void addPoint(std::string_view rest)
    {
        const std::optional<Vec3> point = nextTriple(rest);
        if (!point)
            throw ConversionError(m_name + " is damaged at line " + std::to_string(m_line)
                                  + ": a vertex has not three coordinates.");
        m_file.points.push_back(*point);
        if (const std::optional<Vec3> color = nextTriple(rest))
            m_file.colors.push_back(*color);
    }

    void addNormal(std::string_view rest)
    {
        m_file.normals.push_back(nextTriple(rest).value_or(Vec3()));
    }

    void addFace(std::string_view rest)
    {
        ObjFile::Face face;
        face.material = m_material;
        face.smoothingGroup = m_smoothingGroup;
        while (!(rest = trimmed(rest)).empty()) {
            const std::string_view word = nextWord(rest);
            const std::size_t slash = std::min(word.find('/'), word.size());
            const std::optional<std::uint32_t> point =
                resolved(word.substr(0, slash), m_file.points.size());
            if (!point) {
                ++m_file.lostFaces;
                return;
            }
            ObjFile::Corner corner{*point, std::nullopt};
            const std::size_t second = word.find('/', slash + 1);
            if (second != std::string_view::npos)
                corner.normal = resolved(word.substr(second + 1), m_file.normals.size());
            face.corners.push_back(corner);
        }
        if (face.corners.size() < 3) {
            ++m_file.lostFaces;
            return;
        }
        m_file.triangles += face.corners.size() - 2;
        checkTriangleCount(m_name, m_file.triangles);
        m_file.shapes.back().faces.push_back(std::move(face));
    }

    void addLine(std::string_view rest)
    {
        std::vector<std::uint32_t> line;
        while (!(rest = trimmed(rest)).empty()) {
            const std::string_view word = nextWord(rest);
            const std::optional<std::uint32_t> point =
                resolved(word.substr(0, word.find('/')), m_file.points.size());
            if (!point) {
                line.clear();
                break;
            }
            line.push_back(*point);
        }
        if (line.size() < 2)
            ++m_file.lostLines;
        else
            m_file.shapes.back().lines.push_back(std::move(line));
    }

    void beginShape(std::string_view name)
    {
        ObjFile::Shape &shape = m_file.shapes.back();
        if (!shape.faces.empty() || !shape.lines.empty())
            m_file.shapes.emplace_back();
        m_file.shapes.back().name = validUtf8(name);
    }

    void setSmoothing(std::string_view rest)
    {
        // "off" is no number.
        const double group = parseNumber(nextWord(rest)).value_or(0);
        m_smoothingGroup = group > 0 && group < 4e9 ? std::uint32_t(group) : 0;
    }

    void setMaterial(std::string_view name)
    {
        const auto [known, isNew] =
            m_materials.try_emplace(std::string(name), int(m_file.materials.size()));
        if (isNew)
            m_file.materials.emplace_back(name);
        m_material = known->second;
    }

    void addLibrary(std::string_view names)
    {
        if (!names.empty())
            m_file.libraries.emplace_back(names);
    }

    void noteSurface(std::string_view) { ++m_file.freeForms; }

    ObjFile m_file;
    std::string_view m_text;
    const std::string &m_name;
    std::size_t m_lastLine = 0; ///< the number of lines taken so far
    std::size_t m_line = 0; ///< where the statement begins
    std::map<std::string, int> m_materials;
    int m_material = -1;
    std::uint32_t m_smoothingGroup = 0;
};

} // namespace

ObjFile ObjFile::read(std::string_view text, const std::string &name)
{
    return Parser(text, name).parse();
}

} // namespace tnconvert
