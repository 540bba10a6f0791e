#pragma once

#include "core/Report.h"
#include "core/Settings.h"
#include "scene/Scene.h"

#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>

#include <functional>
#include <optional>

namespace tnconvert {

/// Tessellates the shapes of the CAD kernel as the settings ask for.
class ShapeMesher {
public:
    /// The look of a face or edge of the shape; nothing when it is not to be drawn.
    using Look = std::function<std::optional<Material>(const TopoDS_Shape &)>;

    ShapeMesher(const Settings &settings, Report &report);

    /// The shape's faces, and its free edges when curves are wanted. One primitive for each
    /// material; when geometries are not merged, one mesh for each face.
    std::vector<std::shared_ptr<const Mesh>> meshes(const TopoDS_Shape &shape, const Look &look,
                                                    const std::string &name);

private:
    TopoDS_Shape repaired(const TopoDS_Shape &shape, TopTools_DataMapOfShapeInteger &originOf,
                          std::vector<TopoDS_Shape> &origins) const;
    double safeAngle() const; ///< radians
    double safeDeviation(const TopoDS_Shape &shape);
    void addFace(const TopoDS_Face &face, Primitive &primitive) const;
    void addEdge(const TopoDS_Shape &edge, double deviation, Primitive &primitive) const;
    void warnOnce(bool &wasWarned, const std::string &message);

    const Settings &m_settings;
    Report &m_report;
    bool m_deviationWarned = false;
    bool m_angleWarned = false;
    bool m_chordWarned = false;
    bool m_failureWarned = false;
};

} // namespace tnconvert
