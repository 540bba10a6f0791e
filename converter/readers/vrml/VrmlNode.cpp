#include "readers/vrml/VrmlNode.h"

namespace tnconvert {

void VrmlNumbers::push_back(double value)
{
    const bool isInteger = value >= -1e9 && value <= 1e9 && double(std::int32_t(value)) == value;
    if (m_values.empty() && isInteger)
        return m_integers.push_back(std::int32_t(value));
    if (!m_integers.empty()) {
        m_values.assign(m_integers.begin(), m_integers.end());
        m_integers = {};
    }
    m_values.push_back(value);
}

const VrmlField *VrmlNode::field(const char *fieldName) const
{
    const auto found = fields.find(fieldName);
    return found == fields.end() ? nullptr : &found->second;
}

VrmlNodePtr VrmlNode::child(const char *fieldName) const
{
    const std::vector<VrmlNodePtr> &nodes = children(fieldName);
    return nodes.empty() ? nullptr : nodes.front();
}

const std::vector<VrmlNodePtr> &VrmlNode::children(const char *fieldName) const
{
    static const std::vector<VrmlNodePtr> none;
    const VrmlField *found = field(fieldName);
    return found ? found->nodes : none;
}

const VrmlNumbers &VrmlNode::numbers(const char *fieldName) const
{
    static const VrmlNumbers none;
    const VrmlField *found = field(fieldName);
    return found ? found->numbers : none;
}

double VrmlNode::number(const char *fieldName, double fallback) const
{
    const VrmlNumbers &values = numbers(fieldName);
    return values.empty() ? fallback : values.front();
}

bool VrmlNode::flag(const char *fieldName, bool fallback) const
{
    return number(fieldName, fallback ? 1 : 0) != 0;
}

std::string VrmlNode::text(const char *fieldName) const
{
    const VrmlField *found = field(fieldName);
    return found && !found->strings.empty() ? found->strings.front() : std::string();
}

} // namespace tnconvert
