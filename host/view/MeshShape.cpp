#include "host/view/MeshShape.h"

#include "host/scene/SceneFragment.h"

#include <Inventor/SoPickedPoint.h>
#include <Inventor/SoPrimitiveVertex.h>
#include <Inventor/actions/SoGLRenderAction.h>
#include <Inventor/actions/SoRayPickAction.h>
#include <Inventor/bundles/SoMaterialBundle.h>
#include <Inventor/elements/SoGLCacheContextElement.h>
#include <Inventor/elements/SoGLLazyElement.h>
#include <Inventor/elements/SoModelMatrixElement.h>

#include <GL/gl.h>

#include <utility>

namespace tnhost {

SO_NODE_ABSTRACT_SOURCE(MeshShape)

namespace {

constexpr GLfloat edgeColor[] = {0.1F, 0.1F, 0.12F};

SbVec3f vec(const QVector3D &vector)
{
    return {vector.x(), vector.y(), vector.z()};
}

} // namespace

void MeshShape::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(MeshShape, SoShape, "Shape");
}

MeshShape::MeshShape(std::shared_ptr<const SceneMesh> mesh, const ScenePrimitive &primitive)
    : m_mesh(std::move(mesh))
    , m_primitive(primitive)
{
    SO_NODE_CONSTRUCTOR(MeshShape);
}

MeshShape::~MeshShape()
{
    release(m_gpuMesh);
    release(m_gpuEdges);
}

void MeshShape::setEdges(std::vector<QVector3D> edges)
{
    m_edges = std::move(edges);
    m_hasEdges = true;
    release(m_gpuEdges);
    touch();
}

void MeshShape::showEdges(bool areShown)
{
    m_areEdgesShown = areShown;
    touch();
}

void MeshShape::GLRender(SoGLRenderAction *action)
{
    if (m_primitive.indices.empty() || !shouldGLRender(action))
        return;
    SoState *state = action->getState();
    prepare(static_cast<std::uint32_t>(SoGLCacheContextElement::get(state)));
    state->push();
    if (m_primitive.kind == ScenePrimitive::Kind::Lines)
        SoLazyElement::setLightModel(state, SoLazyElement::BASE_COLOR);
    SoMaterialBundle(action).sendFirst();
    // In a mirror triangles turn their backs, which the lights would take for their inside.
    const bool isMirrored = SoModelMatrixElement::get(state).det3() < 0;
    if (isMirrored)
        glFrontFace(GL_CW);
    m_gpuMesh->draw();
    if (isMirrored)
        glFrontFace(GL_CCW);
    if (m_gpuEdges && m_areEdgesShown)
        drawEdges();
    state->pop();
}

void MeshShape::prepare(std::uint32_t context)
{
    if (m_context != context) {
        release(m_gpuMesh);
        release(m_gpuEdges);
    }
    m_context = context;
    if (!m_gpuMesh)
        m_gpuMesh = std::make_unique<GpuMesh>(m_primitive);
    if (!m_gpuEdges && m_areEdgesShown && !m_edges.empty())
        m_gpuEdges = std::make_unique<GpuMesh>(m_edges);
}

void MeshShape::release(std::unique_ptr<GpuMesh> &mesh) const
{
    if (!mesh)
        return;
    // Its context need not be the current one; the next picture that is drawn there does it.
    SoGLCacheContextElement::scheduleDeleteCallback(
        m_context, [](void *old, std::uint32_t) { delete static_cast<GpuMesh *>(old); },
        mesh.release());
}

void MeshShape::drawEdges() const
{
    // What the library believes to be set is so again afterwards.
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LIGHTING_BIT);
    glDisable(GL_LIGHTING);
    glColor3fv(edgeColor);
    m_gpuEdges->draw();
    glPopAttrib();
}

template <typename Visit>
void MeshShape::forEachTriangle(const Visit &visit) const
{
    const auto &indices = m_primitive.indices;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        visit(vec(m_primitive.positions[indices[i]]), vec(m_primitive.positions[indices[i + 1]]),
              vec(m_primitive.positions[indices[i + 2]]));
}

void MeshShape::rayPick(SoRayPickAction *action)
{
    // Curves are thin: what lies behind them is meant.
    if (m_primitive.kind != ScenePrimitive::Kind::Triangles || !shouldRayPick(action))
        return;
    computeObjectSpaceRay(action);
    forEachTriangle([&](const SbVec3f &a, const SbVec3f &b, const SbVec3f &c) {
        SbVec3f hit;
        SbVec3f weights;
        SbBool isFront = FALSE;
        if (action->intersect(a, b, c, hit, weights, isFront) && action->isBetweenPlanes(hit))
            action->addIntersection(hit);
    });
}

void MeshShape::generatePrimitives(SoAction *action)
{
    if (m_primitive.kind != ScenePrimitive::Kind::Triangles)
        return;
    SoPrimitiveVertex vertex;
    beginShape(action, TRIANGLES);
    forEachTriangle([&](const SbVec3f &a, const SbVec3f &b, const SbVec3f &c) {
        for (const SbVec3f &corner : {a, b, c}) {
            vertex.setPoint(corner);
            shapeVertex(&vertex);
        }
    });
    endShape();
}

void MeshShape::computeBBox(SoAction *, SbBox3f &box, SbVec3f &center)
{
    if (m_mesh->box.isEmpty())
        return;
    box.setBounds(vec(m_mesh->box.min), vec(m_mesh->box.max));
    center = box.getCenter();
}

} // namespace tnhost
