#pragma once

#include "platform/tnScenegraphService.h"

namespace tnhost {

class Scene;

/// What modules see of the scene, which must outlive it.
class SceneService final : public tnScenegraphService {
public:
    explicit SceneService(const Scene &scene)
        : m_scene(scene)
    {
    }

    std::vector<tndNode> selectedNodes(bool topmostOnly) override;
    tndNode rootNode() override;
    /// Always: this host has no state in which a file could not be added.
    bool allowsDirectLoad() override { return true; }

private:
    const Scene &m_scene;
};

} // namespace tnhost
