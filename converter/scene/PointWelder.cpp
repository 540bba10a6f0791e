#include "scene/PointWelder.h"

#include "core/Limits.h"

#include <cstring>

namespace tnconvert {

PointWelder::PointWelder(PointList &points, std::size_t expected)
    : m_points(points)
    , m_bits(4)
{
    while ((std::size_t(1) << m_bits) < expected + expected / 2)
        ++m_bits;
    m_slots.assign(std::size_t(1) << m_bits, none);
}

std::size_t PointWelder::firstSlot(const Vec3f &near) const
{
    std::uint64_t xy = 0;
    std::uint32_t z = 0;
    std::memcpy(&xy, near.data(), sizeof xy);
    std::memcpy(&z, near.data() + 2, sizeof z);
    std::uint64_t hash = xy * 0x9E3779B97F4A7C15U;
    hash = ((hash ^ (hash >> 32)) + z) * 0xD6E8FEB86659FD93U;
    return std::size_t((hash ^ (hash >> 32)) * 0x9E3779B97F4A7C15U >> (64 - m_bits));
}

std::uint32_t PointWelder::index(const Vec3 &point)
{
    if (!PointList::isPossible(point))
        return impossible;
    const PointList::Parts parts(point);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = firstSlot(parts.near);
    for (; m_slots[slot] != none; slot = (slot + 1) & mask) {
        if (m_points.isAt(m_slots[slot], parts))
            return m_slots[slot];
    }
    const auto index = std::uint32_t(m_points.size());
    m_slots[slot] = index;
    m_points.append(parts);
    checkOutputSize(m_points.size() * 2 * sizeof(Vec3f)); // with their normals
    if (m_points.size() > m_slots.size() / 4 * 3)
        grow();
    return index;
}

void PointWelder::grow()
{
    ++m_bits;
    std::vector<std::uint32_t>().swap(m_slots); // before the larger one is made
    m_slots.assign(std::size_t(1) << m_bits, none);
    for (std::uint32_t i = 0; i < m_points.size(); ++i) {
        std::size_t slot = firstSlot(m_points.near(i));
        while (m_slots[slot] != none)
            slot = (slot + 1) & (m_slots.size() - 1);
        m_slots[slot] = i;
    }
}

} // namespace tnconvert
