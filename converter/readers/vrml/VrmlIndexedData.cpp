#include "readers/vrml/VrmlIndexedData.h"

#include <algorithm>
#include <cmath>

namespace tnconvert {

VrmlIndexedData::VrmlIndexedData(const VrmlNode &vrml, const char *child, const char *list,
                                 const char *index, const char *perVertex)
    : m_index(vrml.numbers(index))
    , m_isPerVertex(vrml.flag(perVertex, true))
    , m_child(vrml.child(child))
{
    if (m_child)
        m_values = &m_child->numbers(list);
}

std::optional<Vec3> VrmlIndexedData::at(std::size_t face, std::size_t position, double point) const
{
    if (!m_values || m_values->empty())
        return std::nullopt;
    double row = m_isPerVertex ? point : double(face);
    if (!m_index.empty()) {
        const std::size_t entry = m_isPerVertex ? position : face;
        row = entry < m_index.size() ? m_index[entry] : -1;
    }
    if (!(row >= 0) || row * 3 + 2 >= double(m_values->size()))
        return std::nullopt;
    const std::size_t start = std::size_t(row) * 3;
    return Vec3{(*m_values)[start], (*m_values)[start + 1], (*m_values)[start + 2]};
}

std::vector<Vec3> vrmlPoints(const VrmlNumbers &values, double unit)
{
    std::vector<Vec3> points;
    points.reserve(values.size() / 3);
    for (std::size_t i = 0; i + 2 < values.size(); i += 3)
        points.push_back(Vec3{values[i], values[i + 1], values[i + 2]} * unit);
    return points;
}

std::optional<Rgba8> vrmlColor(const std::optional<Vec3> &color)
{
    if (!color || !color->isFinite())
        return std::nullopt;
    const auto byte = [](double value) {
        return std::uint8_t(std::lround(std::clamp(value, 0.0, 1.0) * 255));
    };
    return Rgba8{byte(color->x), byte(color->y), byte(color->z), 255};
}

} // namespace tnconvert
