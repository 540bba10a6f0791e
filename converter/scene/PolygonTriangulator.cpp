#include "scene/PolygonTriangulator.h"

#include <cmath>
#include <numeric>

namespace tnconvert {

namespace {

using Triangles = std::vector<std::array<std::uint32_t, 3>>;

/// Cutting ears costs the square of the corners; larger polygons are taken for convex.
constexpr std::size_t earBound = 4000;

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

class EarCutter {
public:
    explicit EarCutter(const std::vector<Point> &points)
        : m_points(points)
        , m_left(points.size())
    {
        std::iota(m_left.begin(), m_left.end(), 0U);
    }

    Triangles cut()
    {
        Triangles result;
        while (m_left.size() > 3) {
            // Without an ear the polygon crosses itself; any corner has to do.
            std::size_t ear = 0;
            while (ear < m_left.size() && !isEar(ear))
                ++ear;
            if (ear == m_left.size())
                ear = 0;
            result.push_back({before(ear), m_left[ear], after(ear)});
            m_left.erase(m_left.begin() + std::ptrdiff_t(ear));
        }
        result.push_back({m_left[0], m_left[1], m_left[2]});
        return result;
    }

private:
    std::uint32_t before(std::size_t i) const
    {
        return m_left[(i + m_left.size() - 1) % m_left.size()];
    }
    std::uint32_t after(std::size_t i) const { return m_left[(i + 1) % m_left.size()]; }

    bool isEar(std::size_t i) const
    {
        const Point &a = m_points[before(i)];
        const Point &b = m_points[m_left[i]];
        const Point &c = m_points[after(i)];
        if (turn(a, b, c) <= 0)
            return false;
        for (const std::uint32_t other : m_left) {
            const Point &p = m_points[other];
            if (isSame(p, a) || isSame(p, b) || isSame(p, c))
                continue;
            if (isWithin(p, a, b, c))
                return false;
        }
        return true;
    }

    const std::vector<Point> &m_points;
    std::vector<std::uint32_t> m_left;
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
    if (points.size() > earBound || isConvex(points))
        return fan(points.size());
    return EarCutter(points).cut();
}

} // namespace tnconvert
