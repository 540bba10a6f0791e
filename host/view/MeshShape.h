#pragma once

#include "host/view/GpuMesh.h"

#include <Inventor/nodes/SoShape.h>

#include <cstdint>
#include <memory>

namespace tnhost {

struct SceneMesh;
struct ScenePrimitive;

/// One primitive of a mesh as a shape of the scene graph. It draws and picks the arrays of the
/// scene itself, where the shapes of the library want a list of indices of their own and keep
/// further copies. Any number of nodes may share it. Counted by references, as all nodes are.
class MeshShape : public SoShape {
    SO_NODE_ABSTRACT_HEADER(MeshShape);

public:
    static void initClass();

    MeshShape(std::shared_ptr<const SceneMesh> mesh, const ScenePrimitive &primitive);

    const ScenePrimitive &primitive() const { return m_primitive; }

    /// Lines between each two of the points, which are drawn as well when they are shown.
    void setEdges(std::vector<QVector3D> edges);
    bool hasEdges() const { return m_hasEdges; }
    void showEdges(bool areShown);

protected:
    ~MeshShape() override;

    void GLRender(SoGLRenderAction *action) override;
    void rayPick(SoRayPickAction *action) override;
    void generatePrimitives(SoAction *action) override;
    void computeBBox(SoAction *action, SbBox3f &box, SbVec3f &center) override;

private:
    /// Makes what is missing of the copies in the graphics memory of the context.
    void prepare(std::uint32_t context);
    void release(std::unique_ptr<GpuMesh> &mesh) const;
    void drawEdges() const;
    template <typename Visit>
    void forEachTriangle(const Visit &visit) const;

    const std::shared_ptr<const SceneMesh> m_mesh; ///< owns the primitive
    const ScenePrimitive &m_primitive;
    std::vector<QVector3D> m_edges;
    bool m_hasEdges = false;
    bool m_areEdgesShown = false;
    std::unique_ptr<GpuMesh> m_gpuMesh;
    std::unique_ptr<GpuMesh> m_gpuEdges;
    std::uint32_t m_context = 0; ///< where these lie
};

} // namespace tnhost
