#include "host/view/Renderer.h"

#include "host/view/MeshShape.h"
#include "host/view/PartNode.h"

#include <Inventor/SoDB.h>
#include <Inventor/SoPickedPoint.h>
#include <Inventor/actions/SoGetBoundingBoxAction.h>
#include <Inventor/actions/SoRayPickAction.h>
#include <Inventor/elements/SoGLCacheContextElement.h>
#include <Inventor/errors/SoDebugError.h>
#include <Inventor/nodes/SoDirectionalLight.h>
#include <Inventor/nodes/SoEnvironment.h>
#include <Inventor/nodes/SoPolygonOffset.h>
#include <Inventor/nodes/SoShapeHints.h>

#include <QtCore/QtMath>

#include <algorithm>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

namespace tnhost {

namespace {

/// Nearer than this part of the farthest distance nothing is drawn, for the depth buffer's sake.
constexpr float leastNear = 0.001F;

SoDirectionalLight *makeLight(const SbVec3f &direction, float intensity)
{
    auto *light = new SoDirectionalLight;
    light->direction = direction;
    light->intensity = intensity;
    return light;
}

SbVec3f vec(const QVector3D &vector)
{
    return {vector.x(), vector.y(), vector.z()};
}

/// Whoever drew last in this context has left it in a state of their own.
void resetGl()
{
    glUseProgram(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    for (GLuint attribute = 0; attribute < 4; ++attribute)
        glDisableVertexAttribArray(attribute);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, 0);
    for (const GLenum capability :
         {GL_BLEND, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_TEXTURE_2D, GL_CULL_FACE})
        glDisable(capability);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    // Mirrors and scales are no reason for another brightness.
    glEnable(GL_NORMALIZE);
}

} // namespace

void Renderer::init()
{
    static const bool once = [] {
        SoDB::init();
        MeshShape::initClass();
        PartNode::initClass();
        // It complains on standard error of contexts that come from no X server.
        SoDebugError::setHandlerCallback([](const SoError *, void *) {}, nullptr);
        return true;
    }();
    Q_UNUSED(once)
}

Renderer::Renderer(SoNode *parts)
    : m_root(new SoSeparator)
    , m_parts(parts)
    , m_perspective(new SoPerspectiveCamera)
    , m_orthographic(new SoOrthographicCamera)
    , m_cameras(new SoSwitch)
    , m_style(new SoDrawStyle)
    , m_section(new SoClipPlane)
    , m_action(SbViewportRegion())
{
    m_root->renderCaching = SoSeparator::OFF;
    // What stands before the camera stays with the eye.
    auto *environment = new SoEnvironment;
    environment->ambientIntensity = 0.5F;
    m_root->addChild(environment);
    m_root->addChild(makeLight({0.25F, -0.35F, -1}, 0.8F));
    m_root->addChild(makeLight({-0.8F, 0.5F, -0.6F}, 0.3F));
    for (SoCamera *camera :
         {static_cast<SoCamera *>(m_perspective), static_cast<SoCamera *>(m_orthographic)}) {
        camera->viewportMapping = SoCamera::LEAVE_ALONE;
        m_cameras->addChild(camera);
    }
    m_root->addChild(m_cameras);
    m_root->addChild(m_style);
    m_section->on = FALSE;
    m_root->addChild(m_section);
    auto *hints = new SoShapeHints;
    hints->vertexOrdering = SoShapeHints::COUNTERCLOCKWISE; // lights both sides
    m_root->addChild(hints);
    m_root->addChild(new SoPolygonOffset); // curves and edges lie on surfaces
    m_root->addChild(parts);
    m_action.setCacheContext(SoGLCacheContextElement::getUniqueCacheContext());
    m_action.setTransparencyType(SoGLRenderAction::SORTED_OBJECT_BLEND);
}

Renderer::~Renderer() = default;

QColor Renderer::background(bool isDark)
{
    return isDark ? QColor(0x2b, 0x2e, 0x33) : QColor(0xee, 0xf0, 0xf3);
}

void Renderer::setWireframe(bool isWireframe)
{
    m_style->style = isWireframe ? SoDrawStyle::LINES : SoDrawStyle::FILLED;
}

void Renderer::setSection(const Section &section, const BoundingBox &box)
{
    m_section->on = section.axis != Section::Axis::None && !box.isEmpty();
    if (!m_section->on.getValue())
        return;
    const int axis = static_cast<int>(section.axis) - static_cast<int>(Section::Axis::X);
    const float place = box.min[axis] + section.place * (box.max[axis] - box.min[axis]);
    SbVec3f kept(0, 0, 0);
    kept[axis] = section.isFlipped ? 1.0F : -1.0F;
    m_section->plane = SbPlane(kept, kept[axis] * place);
}

void Renderer::place(const Camera &camera, double aspect)
{
    m_cameras->whichChild = camera.isOrthographic() ? 1 : 0;
    m_perspective->heightAngle = qDegreesToRadians(Camera::verticalAngle());
    m_orthographic->height = camera.height();
    auto *lens = static_cast<SoCamera *>(m_cameras->getChild(m_cameras->whichChild.getValue()));
    const QQuaternion turn = camera.orientation();
    lens->position = vec(camera.position());
    lens->orientation.setValue(turn.x(), turn.y(), turn.z(), turn.scalar());
    lens->aspectRatio = static_cast<float>(aspect);
    lens->focalDistance = camera.distance();

    SoGetBoundingBoxAction measure{SbViewportRegion()};
    measure.apply(m_parts.get());
    const SbBox3f box = measure.getBoundingBox();
    if (box.isEmpty())
        return;
    const SbVec3f middle = box.getCenter();
    const float radius = 0.5F * (box.getMax() - box.getMin()).length();
    const float depth = camera.depthOf({middle[0], middle[1], middle[2]});
    const float nearest = depth - radius * 1.01F;
    const float farthest = std::max(depth + radius * 1.01F, camera.distance() * leastNear);
    lens->farDistance = farthest;
    lens->nearDistance =
        camera.isOrthographic() ? nearest : std::max(nearest, farthest * leastNear);
}

void Renderer::render(const Camera &camera, const QSize &pixels, const QColor &background)
{
    place(camera, double(pixels.width()) / pixels.height());
    resetGl();
    glViewport(0, 0, pixels.width(), pixels.height());
    glClearColor(static_cast<float>(background.redF()), static_cast<float>(background.greenF()),
                 static_cast<float>(background.blueF()), 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    m_action.setViewportRegion(
        SbViewportRegion(static_cast<short>(pixels.width()), static_cast<short>(pixels.height())));
    m_action.invalidateState();
    m_action.apply(m_root.get());
}

std::optional<Hit> Renderer::pick(const Camera &camera, const QPointF &place, const QSizeF &size)
{
    this->place(camera, size.width() / size.height());
    SoRayPickAction action{
        SbViewportRegion(static_cast<short>(size.width()), static_cast<short>(size.height()))};
    action.setNormalizedPoint({static_cast<float>(place.x() / size.width()),
                               static_cast<float>(1 - place.y() / size.height())});
    action.apply(m_root.get());
    const SoPickedPoint *found = action.getPickedPoint();
    if (!found)
        return std::nullopt;
    const SbVec3f point = found->getPoint();
    const SoPath *path = found->getPath();
    for (int i = path->getLength() - 1; i >= 0; --i) {
        if (path->getNode(i)->isOfType(PartNode::getClassTypeId()))
            return Hit{static_cast<const PartNode *>(path->getNode(i))->id(),
                       {point[0], point[1], point[2]}};
    }
    return std::nullopt;
}

} // namespace tnhost
