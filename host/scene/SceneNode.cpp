#include "host/scene/SceneNode.h"

namespace tnhost {

bool SceneNode::isShown() const
{
    const SceneNode *node = this;
    while (node && !node->m_isHidden)
        node = node->m_parent;
    return !node;
}

} // namespace tnhost
