#include "readers/obj/ObjFile.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "core/Report.h"
#include "core/Text.h"
#include "readers/LineReader.h"
#include "scene/PolygonTriangulator.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <set>

namespace tnconvert {

namespace {

std::optional<Vec3> takeTriple(std::string_view &text)
{
    const std::optional<double> x = takeNumber(text);
    const std::optional<double> y = takeNumber(text);
    const std::optional<double> z = takeNumber(text);
    if (!x || !y || !z)
        return std::nullopt;
    return Vec3{*x, *y, *z};
}

/// Indices count from 1 on, negative ones backwards from the last entry so far.
std::uint32_t resolved(std::string_view word, std::size_t count)
{
    std::int64_t stated = 0;
    const char *const end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, stated);
    const std::int64_t index = stated < 0 ? std::int64_t(count) + stated : stated - 1;
    const bool isValid =
        error == std::errc() && rest == end && index >= 0 && index < std::int64_t(count);
    return isValid ? std::uint32_t(index) : ObjFile::none;
}

Rgba8 colorOf(const Vec3 &c)
{
    const auto byte = [](double v) {
        return std::uint8_t(std::lround(std::clamp(v, 0.0, 1.0) * 255));
    };
    return {byte(c.x), byte(c.y), byte(c.z), 255};
}

/// Whether a statement of another kind would hardly begin like this: it is one that has lost its
/// keyword, or whose keyword is damaged.
bool isDamaged(std::string_view keyword)
{
    return keyword.size() == 1
        || std::any_of(keyword.begin(), keyword.end(), [](char c) { return c >= '0' && c <= '9'; });
}

struct Corner {
    std::uint32_t point;
    std::uint32_t normal;
};

class Parser {
public:
    Parser(std::string_view text, const std::string &name, Report &report)
        : m_lines(text)
        , m_name(name)
        , m_report(report)
    {
        m_file.shapes.emplace_back();
    }

    ObjFile parse()
    {
        for (std::string_view line; nextStatement(line);)
            takeStatement(line);
        beginShape({});
        m_file.shapes.pop_back();
        if (!m_hasNormals && m_file.normalOf.empty())
            m_file.normals.clear(); // no corner has one
        if (m_foreign > 0)
            m_report.warning(std::to_string(m_foreign) + " statements of unknown kinds, as "
                             + m_firstForeign + ", are left out.");
        return std::move(m_file);
    }

private:
    /// A line and those that it goes on in, behind a backslash.
    bool nextStatement(std::string_view &statement)
    {
        if (!m_lines.next(statement))
            return false;
        m_line = m_lines.number();
        if (m_line % (1 << 18) == 0)
            m_report.progress(60 * m_lines.done(), "Reading");
        std::string_view text = statement;
        static const std::set<std::string_view> named = {"o",      "g",      "usemtl",
                                                         "mtllib", "usemap", "maplib"};
        // Names and comments may well end with a backslash of their own.
        if (statement.empty() || statement.back() != '\\' || named.count(takeWord(text)) > 0)
            return true;
        m_joined = statement;
        std::string_view further;
        while (m_joined.back() == '\\' && m_joined.find('#') == std::string::npos
               && m_lines.next(further)) {
            m_joined.back() = ' ';
            m_joined += further;
        }
        statement = m_joined;
        return true;
    }

    void takeStatement(std::string_view statement)
    {
        using Handler = void (Parser::*)(std::string_view);
        static const std::map<std::string_view, Handler> handlers = {
            {"v", &Parser::addPoint},       {"vn", &Parser::addNormal},
            {"f", &Parser::addFace},        {"l", &Parser::addLine},
            {"o", &Parser::beginShape},     {"g", &Parser::beginShape},
            {"s", &Parser::setSmoothing},   {"usemtl", &Parser::setMaterial},
            {"surf", &Parser::noteSurface}, {"mtllib", &Parser::addLibrary}};
        const std::string_view keyword = takeWord(statement);
        if (keyword.empty() || keyword[0] == '#')
            return;
        const auto handler = handlers.find(keyword);
        if (handler != handlers.end())
            (this->*handler->second)(trimmed(statement));
        else if (!ObjFile::isKeyword(keyword))
            noteUnknown(keyword);
    }

    void noteUnknown(std::string_view keyword)
    {
        if (!isDamaged(keyword)) {
            if (m_foreign++ == 0)
                m_firstForeign = validUtf8(keyword) + " at line " + std::to_string(m_line);
        } else if (m_file.unknown++ == 0) {
            m_file.firstUnknown = m_line;
        }
    }

    /// Makes room for as many entries as there will be if the rest of the file goes on like the
    /// part since @p began, where the first one stood.
    template <typename List>
    void makeRoom(List &list, double &began) const
    {
        constexpr std::size_t few = 10'000;
        if (list.size() == 0)
            began = m_lines.done();
        if (list.size() < few || list.size() + 3 <= list.capacity())
            return;
        const double part = std::max(0.01, (m_lines.done() - began) / (1 - began));
        list.reserve(std::size_t(double(list.size()) / part * 1.02) + few);
    }

    void addPoint(std::string_view rest)
    {
        rest = withoutComment(rest);
        const std::optional<Vec3> point = takeTriple(rest);
        if (!point)
            throw ConversionError(m_name + " is damaged at line " + std::to_string(m_line)
                                  + ": a vertex has not three coordinates.");
        makeRoom(m_file.points, m_pointsBegan);
        m_file.points.push_back(*point);
        if (rest.empty())
            return;
        if (const std::optional<Vec3> color = takeTriple(rest))
            m_file.colors.push_back(colorOf(*color));
    }

    void addNormal(std::string_view rest)
    {
        rest = withoutComment(rest);
        const Vec3 normal = takeTriple(rest).value_or(Vec3()).normalized();
        makeRoom(m_file.normals, m_normalsBegan);
        m_file.normals.push_back({float(normal.x), float(normal.y), float(normal.z)});
    }

    void addFace(std::string_view rest)
    {
        m_polygon.clear();
        rest = withoutComment(rest);
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            const std::size_t slash = std::min(word.find('/'), word.size());
            const std::uint32_t point = resolved(word.substr(0, slash), m_file.points.size());
            if (point == ObjFile::none) {
                ++m_file.lostFaces;
                return;
            }
            const std::size_t second = std::min(word.find('/', slash + 1), word.size() - 1);
            m_polygon.push_back({point, resolved(word.substr(second + 1), m_file.normals.size())});
        }
        if (m_polygon.size() < 3) {
            ++m_file.lostFaces;
            return;
        }
        ++m_file.faces;
        makeRoom(m_file.corners, m_cornersBegan);
        if (m_polygon.size() == 3)
            addTriangle(0, 1, 2);
        else
            addPolygon();
        checkTriangleCount(m_name, m_file.corners.size() / 3, statedTriangleBound);
    }

    void addPolygon()
    {
        std::vector<Vec3> positions;
        for (const Corner &corner : m_polygon)
            positions.push_back(m_file.points[corner.point]);
        if (std::all_of(positions.begin(), positions.end(),
                        [](const Vec3 &p) { return PointList::isPossible(p); })) {
            for (const auto &[a, b, c] : triangulated(positions))
                addTriangle(a, b, c);
        } else {
            // Those with the impossible points are counted where meshes are made.
            for (std::uint32_t i = 2; i < m_polygon.size(); ++i)
                addTriangle(0, i - 1, i);
        }
    }

    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        for (const std::uint32_t i : {a, b, c})
            addCorner(m_polygon[i]);
        std::vector<ObjFile::Run> &runs = m_file.shapes.back().runs;
        if (runs.empty() || runs.back().material != m_run.material
            || runs.back().smoothingGroup != m_run.smoothingGroup)
            runs.push_back(m_run);
        runs.back().end = m_file.corners.size();
    }

    /// Most files give all points normals of the same indices, or none; what others state has to be
    /// noted corner by corner.
    void addCorner(const Corner &corner)
    {
        std::vector<std::uint32_t> &normalOf = m_file.normalOf;
        if (m_file.corners.empty())
            m_hasNormals = corner.normal != ObjFile::none;
        const bool isUsual = corner.normal == (m_hasNormals ? corner.point : ObjFile::none);
        if (!isUsual && normalOf.empty())
            normalOf = m_hasNormals
                ? m_file.corners
                : std::vector<std::uint32_t>(m_file.corners.size(), ObjFile::none);
        if (!isUsual || !normalOf.empty()) {
            makeRoom(normalOf, m_cornersBegan);
            normalOf.push_back(corner.normal);
        }
        m_file.corners.push_back(corner.point);
    }

    static std::string_view withoutComment(std::string_view text)
    {
        return text.substr(0, text.find('#'));
    }

    void addLine(std::string_view rest)
    {
        std::vector<std::uint32_t> line;
        rest = withoutComment(rest);
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            const std::uint32_t point =
                resolved(word.substr(0, word.find('/')), m_file.points.size());
            if (point == ObjFile::none) {
                line.clear();
                break;
            }
            line.push_back(point);
        }
        if (line.size() < 2)
            ++m_file.lostLines;
        else
            m_file.shapes.back().lines.push_back(std::move(line));
    }

    void beginShape(std::string_view name)
    {
        const ObjFile::Shape &last = m_file.shapes.back();
        if (!last.runs.empty() || !last.lines.empty())
            m_file.shapes.emplace_back();
        m_file.shapes.back().name = validUtf8(name);
        m_file.shapes.back().begin = m_file.corners.size();
    }

    void setSmoothing(std::string_view rest)
    {
        // "off" is no number.
        const double group = takeNumber(rest).value_or(0);
        m_run.smoothingGroup = group > 0 && group < 4e9 ? std::uint32_t(group) : 0;
    }

    void setMaterial(std::string_view name)
    {
        const auto [known, isNew] =
            m_materials.try_emplace(std::string(name), int(m_file.materials.size()));
        if (isNew)
            m_file.materials.emplace_back(name);
        m_run.material = known->second;
    }

    void addLibrary(std::string_view names)
    {
        if (!names.empty())
            m_file.libraries.emplace_back(names);
    }

    void noteSurface(std::string_view) { ++m_file.freeForms; }

    ObjFile m_file;
    LineReader m_lines;
    const std::string &m_name;
    Report &m_report;
    std::string m_joined; ///< a statement of several lines
    std::size_t m_line = 0; ///< where the statement begins
    std::map<std::string, int> m_materials;
    ObjFile::Run m_run; ///< what the next triangle belongs to
    std::vector<Corner> m_polygon;
    double m_pointsBegan = 0; ///< parts of the file, from 0 to 1
    double m_normalsBegan = 0;
    double m_cornersBegan = 0;
    bool m_hasNormals =
        false; ///< of the same indices as the points, unless normalOf says otherwise
    std::size_t m_foreign = 0; ///< statements of extensions
    std::string m_firstForeign;
};

} // namespace

bool ObjFile::isKeyword(std::string_view keyword)
{
    static const std::set<std::string_view> keywords = {
        "v",      "vn",     "vt",       "vp",       "f",          "fo",        "l",     "p",
        "o",      "g",      "s",        "mtllib",   "usemtl",     "cstype",    "deg",   "bmat",
        "step",   "curv",   "curv2",    "surf",     "parm",       "trim",      "hole",  "scrv",
        "sp",     "end",    "con",      "mg",       "bevel",      "lod",       "ctech", "stech",
        "maplib", "usemap", "c_interp", "d_interp", "shadow_obj", "trace_obj", "call",  "csh"};
    return keywords.count(keyword) > 0;
}

ObjFile ObjFile::read(std::string_view text, const std::string &name, Report &report)
{
    return Parser(text, name, report).parse();
}

} // namespace tnconvert
