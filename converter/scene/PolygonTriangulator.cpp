#include "scene/PolygonTriangulator.h"

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <algorithm>
#include <cmath>
#include <deque>
#include <optional>

namespace tnconvert {

namespace {

using Triangles = std::vector<std::array<std::uint32_t, 3>>;

struct Point {
    double x;
    double y;
};

double turn(const Point &a, const Point &b, const Point &c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool isWithin(const Point &p, const Point &a, const Point &b, const Point &c)
{
    return turn(a, b, p) >= 0 && turn(b, c, p) >= 0 && turn(c, a, p) >= 0;
}

bool isSame(const Point &a, const Point &b)
{
    return a.x == b.x && a.y == b.y;
}

/// The polygon in its own plane, counterclockwise; empty when it has no plane.
std::vector<Point> projected(const std::vector<Vec3> &corners)
{
    Vec3 normal;
    for (std::size_t i = 0; i < corners.size(); ++i)
        normal = normal
            + (corners[i] - corners[0]).cross(corners[(i + 1) % corners.size()] - corners[0]);
    normal = normal.normalized();
    if (normal.dot(normal) < 0.5)
        return {};
    const Vec3 helper = std::fabs(normal.x) < 0.7 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
    const Vec3 u = helper.cross(normal).normalized();
    const Vec3 v = normal.cross(u);
    std::vector<Point> points;
    points.reserve(corners.size());
    for (const Vec3 &corner : corners)
        points.push_back({(corner - corners[0]).dot(u), (corner - corners[0]).dot(v)});
    return points;
}

bool isConvex(const std::vector<Point> &points)
{
    const std::size_t n = points.size();
    double angle = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Point &a = points[i];
        const Point &b = points[(i + 1) % n];
        const Point &c = points[(i + 2) % n];
        if (turn(a, b, c) < 0)
            return false;
        angle += std::atan2(turn(a, b, c), (b.x - a.x) * (c.x - b.x) + (b.y - a.y) * (c.y - b.y));
    }
    // A star turns left everywhere too, but goes round more than once.
    return angle < 3 * M_PI;
}

Triangles fan(std::size_t n)
{
    Triangles result;
    for (std::uint32_t i = 1; i + 1 < n; ++i)
        result.push_back({0, i, i + 1});
    return result;
}

/// Cuts off one corner after the other. In a polygon that does not cross itself no more than the
/// two neighbours of a cut corner can become ears by it, and only reflex corners can stand in the
/// way of one: each corner is looked at a few times, and what stands in its way is found in a tree.
class EarCutter {
public:
    explicit EarCutter(const std::vector<Point> &points)
        : m_points(points)
        , m_before(points.size())
        , m_after(points.size())
        , m_isCut(points.size())
    {
        std::vector<Entry> reflex;
        for (std::uint32_t i = 0; i < points.size(); ++i) {
            m_open.push_back(i);
            m_before[i] = i > 0 ? i - 1 : std::uint32_t(points.size() - 1);
            m_after[i] = i + 1 < points.size() ? i + 1 : 0;
        }
        for (const std::uint32_t i : m_open) {
            if (turnAt(i) <= 0)
                reflex.push_back(entry(i));
        }
        m_reflex = Tree(reflex);
    }

    Triangles cut()
    {
        Triangles result;
        std::uint32_t last = 0;
        for (std::size_t left = m_points.size(); left > 3; --left) {
            // Without an ear the polygon crosses itself; any corner has to do.
            last = nextEar().value_or(m_after[last]);
            result.push_back({m_before[last], last, m_after[last]});
            remove(last);
        }
        result.push_back({m_before[last], m_after[last], m_after[m_after[last]]});
        return result;
    }

private:
    using Position = boost::geometry::model::point<double, 2, boost::geometry::cs::cartesian>;
    using Entry = std::pair<Position, std::uint32_t>;
    using Tree = boost::geometry::index::rtree<Entry, boost::geometry::index::quadratic<16>>;

    Entry entry(std::uint32_t i) const { return {Position(m_points[i].x, m_points[i].y), i}; }

    double turnAt(std::uint32_t i) const
    {
        return turn(m_points[m_before[i]], m_points[i], m_points[m_after[i]]);
    }

    std::optional<std::uint32_t> nextEar()
    {
        while (!m_open.empty()) {
            const std::uint32_t corner = m_open.front();
            m_open.pop_front();
            if (!m_isCut[corner] && isEar(corner))
                return corner;
        }
        return std::nullopt;
    }

    bool isEar(std::uint32_t i) const
    {
        if (turnAt(i) <= 0)
            return false;
        const Point &a = m_points[m_before[i]];
        const Point &b = m_points[i];
        const Point &c = m_points[m_after[i]];
        const boost::geometry::model::box<Position> box(
            {std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})},
            {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})});
        const auto isInTheWay = [&](const Entry &other) {
            const Point &p = m_points[other.second];
            return !isSame(p, a) && !isSame(p, b) && !isSame(p, c) && isWithin(p, a, b, c);
        };
        namespace index = boost::geometry::index;
        return m_reflex.qbegin(index::intersects(box) && index::satisfies(isInTheWay))
            == m_reflex.qend();
    }

    void remove(std::uint32_t i)
    {
        const std::uint32_t neighbours[] = {m_before[i], m_after[i]};
        m_isCut[i] = true;
        m_reflex.remove(entry(i));
        for (const std::uint32_t neighbour : neighbours) {
            const bool wasReflex = turnAt(neighbour) <= 0;
            (neighbour == neighbours[0] ? m_after : m_before)[neighbour] =
                neighbour == neighbours[0] ? neighbours[1] : neighbours[0];
            if (wasReflex && turnAt(neighbour) > 0)
                m_reflex.remove(entry(neighbour));
            m_open.push_back(neighbour);
        }
    }

    const std::vector<Point> &m_points;
    std::vector<std::uint32_t> m_before;
    std::vector<std::uint32_t> m_after;
    std::vector<bool> m_isCut;
    std::deque<std::uint32_t> m_open; ///< corners that may be ears
    Tree m_reflex;
};

} // namespace

Triangles triangulated(const std::vector<Vec3> &corners)
{
    if (corners.size() < 3)
        return {};
    if (corners.size() == 3)
        return {{0, 1, 2}};
    const std::vector<Point> points = projected(corners);
    if (points.empty())
        return {};
    if (isConvex(points))
        return fan(points.size());
    return EarCutter(points).cut();
}

} // namespace tnconvert
