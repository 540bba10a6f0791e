#pragma once

#include "host/scene/BoundingBox.h"
#include "host/view/Camera.h"
#include "host/view/NodePtr.h"

#include <Inventor/actions/SoGLRenderAction.h>
#include <Inventor/nodes/SoClipPlane.h>
#include <Inventor/nodes/SoDrawStyle.h>
#include <Inventor/nodes/SoOrthographicCamera.h>
#include <Inventor/nodes/SoPerspectiveCamera.h>
#include <Inventor/nodes/SoSeparator.h>
#include <Inventor/nodes/SoSwitch.h>

#include <QtCore/QSize>
#include <QtGui/QColor>

#include <optional>

namespace tnhost {

/// What is seen at a place of a picture.
struct Hit {
    unsigned int node; ///< whose geometry it is
    QVector3D point; ///< in the world
};

/// Draws a scene graph, lit from the eye, and tells what is to be seen at a place of the picture.
class Renderer {
public:
    /// Makes the library ready, once for the process. Before anything else of it.
    static void init();

    explicit Renderer(SoNode *parts);
    ~Renderer();

    /// Of the pictures, quiet, and dark where the surroundings are.
    static QColor background(bool isDark);
    void setWireframe(bool isWireframe);
    /// Cuts what is drawn, and what is picked, at a place of the box; nothing when that is empty.
    void setSection(const Section &section, const BoundingBox &box);
    /// Into the framebuffer that is bound in the current context, which must stay the same one.
    /// Changes the state of OpenGL.
    void render(const Camera &camera, const QSize &pixels, const QColor &background);
    /// The nearest surface at this place of a picture of that size.
    std::optional<Hit> pick(const Camera &camera, const QPointF &place, const QSizeF &size);

private:
    void place(const Camera &camera, double aspect);

    NodePtr<SoSeparator> m_root;
    NodePtr<SoNode> m_parts;
    // These belong to the root.
    SoPerspectiveCamera *m_perspective;
    SoOrthographicCamera *m_orthographic;
    SoSwitch *m_cameras; ///< these two, in this order
    SoDrawStyle *m_style;
    SoClipPlane *m_section;
    SoGLRenderAction m_action;
};

} // namespace tnhost
