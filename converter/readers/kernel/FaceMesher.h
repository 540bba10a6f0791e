#pragma once

#include "readers/kernel/FaceTally.h"
#include "scene/Scene.h"

#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>

namespace tnconvert {

/// Tessellates the faces of one shape, and counts those where that fails.
class FaceMesher {
public:
    /// Tessellates all faces of @p shape with a chord deviation in mm and an angle in radians.
    /// @p tally must outlive the mesher.
    FaceMesher(const TopoDS_Shape &shape, double deviation, double angle, FaceTally &tally);

    /// The triangles of one of the faces, with normals; none when it is lost.
    Primitive triangles(const TopoDS_Face &face);

private:
    void mesh(const TopoDS_Shape &shape) const;
    Primitive trianglesOfRepaired(const TopoDS_Face &face) const;
    void countLost(const TopoDS_Face &face);

    const double m_deviation;
    const double m_angle;
    FaceTally &m_tally;
};

} // namespace tnconvert
