#pragma once

#include "scene/Scene.h"

#include <cmath>
#include <limits>
#include <utility>

namespace tnconvert {

/// Points in the single precision of outputs. What that leaves of them stands beside, since normals
/// of narrow facets need it; where a file states no more, it takes no memory.
class PointList {
public:
    /// A point in two parts, which are its sum.
    struct Parts {
        Vec3f near{};
        Vec3f rest{};

        explicit Parts(const Vec3 &p)
            : near{float(p.x) + 0.0F, float(p.y) + 0.0F, float(p.z) + 0.0F} // never -0
            , rest{float(p.x - near[0]), float(p.y - near[1]), float(p.z - near[2])}
        {
        }
    };

    /// Whether outputs can state @p p: it is made of numbers, and they are not too large.
    static bool isPossible(const Vec3 &p)
    {
        constexpr double largest = 1e30;
        return std::fabs(p.x) < largest && std::fabs(p.y) < largest && std::fabs(p.z) < largest;
    }
    bool isPossible(std::size_t index) const { return !std::isnan(m_near[index][0]); }

    bool empty() const { return m_near.empty(); }
    std::size_t size() const { return m_near.size(); }
    std::size_t capacity() const { return m_near.capacity(); }
    void reserve(std::size_t count) { m_near.reserve(count); }

    /// Impossible points are added too, as such.
    void push_back(const Vec3 &p)
    {
        constexpr float none = std::numeric_limits<float>::quiet_NaN();
        if (isPossible(p))
            append(Parts(p));
        else
            append(Parts({none, 0, 0}));
    }
    void append(const Parts &parts)
    {
        if (!m_rest.empty() || (parts.rest != Vec3f{} && !std::isnan(parts.near[0]))) {
            if (m_rest.empty())
                m_rest.reserve(m_near.capacity());
            m_rest.resize(m_near.size());
            m_rest.push_back(parts.rest);
        }
        m_near.push_back(parts.near);
    }

    Vec3 operator[](std::size_t index) const
    {
        const Vec3f &p = m_near[index];
        if (m_rest.empty())
            return {p[0], p[1], p[2]};
        const Vec3f &rest = m_rest[index];
        return {double(p[0]) + rest[0], double(p[1]) + rest[1], double(p[2]) + rest[2]};
    }
    /// The point as an output has it.
    const Vec3f &near(std::size_t index) const { return m_near[index]; }
    bool isAt(std::size_t index, const Parts &parts) const
    {
        return m_near[index] == parts.near
            && (m_rest.empty() ? Vec3f{} : m_rest[index]) == parts.rest;
    }

    /// The points as an output has them; the list is empty afterwards.
    std::vector<Vec3f> taken()
    {
        m_rest = {};
        return std::exchange(m_near, {});
    }

private:
    std::vector<Vec3f> m_near;
    std::vector<Vec3f> m_rest; ///< empty while there is none
};

} // namespace tnconvert
