#include "host/view/PartNode.h"

namespace tnhost {

SO_NODE_ABSTRACT_SOURCE(PartNode)

void PartNode::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(PartNode, SoSeparator, "Separator");
}

PartNode::PartNode(unsigned int id)
    : m_id(id)
{
    SO_NODE_CONSTRUCTOR(PartNode);
    // Display lists would be one more copy of everything.
    renderCaching = OFF;
}

void PartNode::setLook(SoMaterial *look)
{
    if (m_hasLook)
        removeChild(0);
    if (look)
        insertChild(look, 0);
    m_hasLook = look != nullptr;
}

void PartNode::setShown(bool isShown)
{
    if (isShown == m_isShown)
        return;
    m_isShown = isShown;
    touch(); // boxes of what is above are kept otherwise
}

void PartNode::GLRenderBelowPath(SoGLRenderAction *action)
{
    if (m_isShown)
        SoSeparator::GLRenderBelowPath(action);
}

void PartNode::rayPick(SoRayPickAction *action)
{
    if (m_isShown)
        SoSeparator::rayPick(action);
}

void PartNode::getBoundingBox(SoGetBoundingBoxAction *action)
{
    if (m_isShown)
        SoSeparator::getBoundingBox(action);
}

} // namespace tnhost
