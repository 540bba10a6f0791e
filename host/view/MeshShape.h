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

protected:
    ~MeshShape() override;

    void GLRender(SoGLRenderAction *action) override;
    void rayPick(SoRayPickAction *action) override;
    void generatePrimitives(SoAction *action) override;
    void computeBBox(SoAction *action, SbBox3f &box, SbVec3f &center) override;

private:
    const GpuMesh &gpuMesh(std::uint32_t context);
    void releaseGpuMesh();
    template <typename Visit>
    void forEachTriangle(const Visit &visit) const;

    const std::shared_ptr<const SceneMesh> m_mesh; ///< owns the primitive
    const ScenePrimitive &m_primitive;
    std::unique_ptr<GpuMesh> m_gpuMesh;
    std::uint32_t m_context = 0; ///< where that lies
};

} // namespace tnhost
