#pragma once

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

protected:
    ~PartNode() override = default;

private:
    const unsigned int m_id;
};

} // namespace tnhost
