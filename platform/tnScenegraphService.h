#pragma once

#include "platform/tnBaseService.h"
#include "platform/tndNode.h"

#include <vector>

/// The host's scene, as far as modules ask for it.
class TNPLATFORM_EXPORT tnScenegraphService : public tnBaseService {
public:
    ~tnScenegraphService() override;

    /// The registered service, or null.
    static tnScenegraphService *the();

    /// The selected nodes, in the order of the scene tree. With topmostOnly a node below another
    /// selected one is left out.
    virtual std::vector<tndNode> selectedNodes(bool topmostOnly) = 0;
    virtual tndNode rootNode() = 0;
    /// Whether the scene takes files without a dialog at present.
    virtual bool allowsDirectLoad() = 0;
};
