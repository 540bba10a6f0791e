#pragma once

#include "core/Settings.h"

#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopoDS_Shape.hxx>

#include <optional>
#include <vector>

namespace tnconvert {

/// Sews the faces of a shape together and turns its solids and shells outwards, as far as the
/// settings ask for it.
class ShapeRepair {
public:
    ShapeRepair(const TopoDS_Shape &shape, const Settings &settings);

    const TopoDS_Shape &result() const { return m_result; }
    /// The face of the original shape that @p face of the result was made of.
    const TopoDS_Shape &origin(const TopoDS_Shape &face) const;

private:
    void stitch(double tolerance);
    void orient();

    TopoDS_Shape m_result;
    TopTools_DataMapOfShapeInteger m_originOf;
    std::vector<TopoDS_Shape> m_origins;
};

/// The diagonal of the box around the vertices and edges of @p shape in mm; nothing for a shape
/// without bounds.
std::optional<double> extentOf(const TopoDS_Shape &shape);

} // namespace tnconvert
