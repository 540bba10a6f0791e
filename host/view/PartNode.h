#pragma once

#include <Inventor/nodes/SoMaterial.h>
#include <Inventor/nodes/SoSeparator.h>

namespace tnhost {

/// What stands for one node of the scene in the scene graph: its transformation, its geometry, and
/// below it the parts of its children. Counted by references.
class PartNode : public SoSeparator {
    SO_NODE_ABSTRACT_HEADER(PartNode);

public:
    static void initClass();

    /// Of the node with this id.
    explicit PartNode(unsigned int id);

    unsigned int id() const { return m_id; }

    /// Shows the part, and all below it, in this look rather than its own; null: as it is.
    void setLook(SoMaterial *look);
    /// What is not shown is neither drawn, nor picked, nor part of a box.
    void setShown(bool isShown);

    void GLRenderBelowPath(SoGLRenderAction *action) override;
    void rayPick(SoRayPickAction *action) override;
    void getBoundingBox(SoGetBoundingBoxAction *action) override;

protected:
    ~PartNode() override = default;

private:
    const unsigned int m_id;
    bool m_isShown = true;
    bool m_hasLook = false; ///< it is the first child
};

} // namespace tnhost
