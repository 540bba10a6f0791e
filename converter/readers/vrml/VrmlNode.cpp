#include "readers/vrml/VrmlNode.h"

namespace tnconvert {

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

const std::vector<double> &VrmlNode::numbers(const char *fieldName) const
{
    static const std::vector<double> none;
    const VrmlField *found = field(fieldName);
    return found ? found->numbers : none;
}

double VrmlNode::number(const char *fieldName, double fallback) const
{
    const std::vector<double> &values = numbers(fieldName);
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
