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

protected:
    ~PartNode() override = default;

private:
    const unsigned int m_id;
    bool m_hasLook = false; ///< it is the first child
};

} // namespace tnhost
