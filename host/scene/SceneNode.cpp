#include "host/scene/SceneNode.h"

#include <algorithm>

namespace tnhost {

int SceneNode::row() const
{
    if (!m_parent)
        return 0;
    const auto &siblings = m_parent->m_children;
    const auto found = std::find_if(siblings.begin(), siblings.end(),
                                    [this](const auto &sibling) { return sibling.get() == this; });
    return static_cast<int>(found - siblings.begin());
}

bool SceneNode::isShown() const
{
    const SceneNode *node = this;
    while (node && !node->m_isHidden)
        node = node->m_parent;
    return !node;
}

} // namespace tnhost
