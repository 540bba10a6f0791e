#pragma once

#include <ShapeBuild_ReShape.hxx>
#include <TopoDS_Shape.hxx>

namespace tnconvert {

/// Heals the faces of a shape that cannot be tessellated as a file has them: those on curved
/// surfaces, which need their edges in the surface's parameters, seams and bounds. That is a
/// fraction of the work of healing the whole shape; ShapeFitness tells whether it is enough.
class ShapeHealing {
public:
    explicit ShapeHealing(const TopoDS_Shape &shape);

    /// What became of the shape or of what it consists of.
    TopoDS_Shape healed(const TopoDS_Shape &shape) const { return m_changes->Apply(shape); }

private:
    const Handle(ShapeBuild_ReShape) m_changes;
};

} // namespace tnconvert
