#pragma once

#include "readers/kernel/FaceTally.h"
#include "scene/Scene.h"

#include <TopoDS_Face.hxx>

namespace tnconvert {

/// Takes the triangles of tessellated faces, and counts those that have none.
class FaceMesher {
public:
    /// Faces without triangles are tried again with a chord deviation in mm and an angle in
    /// radians.
    /// @p tally must outlive the mesher.
    FaceMesher(double deviation, double angle, FaceTally &tally);

    /// The triangles of one of the faces, with normals; none when it is lost.
    Primitive triangles(const TopoDS_Face &face);

private:
    Primitive trianglesOfRepaired(const TopoDS_Face &face) const;
    void countLost(const TopoDS_Face &face);

    const double m_deviation;
    const double m_angle;
    FaceTally &m_tally;
};

} // namespace tnconvert
