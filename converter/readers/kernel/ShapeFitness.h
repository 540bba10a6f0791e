#pragma once

#include <TopoDS_Shape.hxx>

namespace tnconvert {

/// mm. Gaps below need no comparison with the size of a shape.
constexpr double harmlessGap = 1e-3;

/// The furthest that the end of an edge's curve is from its vertex, mm.
double largestGapOf(const TopoDS_Shape &shape);

/// Whether the pieces of a shape belong together as they are: edges end at their vertices, the
/// wires of all faces are closed, and neighbouring faces are turned the same way.
bool fitsTogether(const TopoDS_Shape &shape);

} // namespace tnconvert
