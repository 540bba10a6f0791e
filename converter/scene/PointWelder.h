#pragma once

#include "scene/PointList.h"

namespace tnconvert {

/// Adds points to a list, those of equal coordinates once: one look into a table for each.
class PointWelder {
public:
    /// What index() gives for impossible points; no list is that long.
    static constexpr std::uint32_t impossible = 0xFFFFFFFF;

    /// @p points must be empty, outlive the object and get its points from here alone. Up to
    /// @p expected points the table need not grow.
    PointWelder(PointList &points, std::size_t expected);

    /// The index of @p point in the list.
    std::uint32_t index(const Vec3 &point);

    /// Has the table at hand for @p point, which is asked for soon.
    void prepare(const Vec3 &point) const
    {
        __builtin_prefetch(&m_slots[firstSlot(PointList::Parts(point).near)]);
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    /// Where the search for @p near begins.
    std::size_t firstSlot(const Vec3f &near) const;
    void grow();

    PointList &m_points;
    unsigned m_bits; ///< the table has 2 to this power slots
    std::vector<std::uint32_t> m_slots; ///< indices into the list, or none
};

} // namespace tnconvert
