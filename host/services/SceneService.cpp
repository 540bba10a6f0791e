#include "host/services/SceneService.h"

#include "host/scene/Scene.h"

namespace tnhost {

std::vector<tndNode> SceneService::selectedNodes(bool topmostOnly)
{
    return m_scene.selectedNodes(topmostOnly);
}

tndNode SceneService::rootNode()
{
    return m_scene.root();
}

} // namespace tnhost
