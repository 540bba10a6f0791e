#pragma once

#include "core/Report.h"
#include "core/Settings.h"
#include "readers/kernel/FaceTally.h"
#include "scene/Scene.h"

#include <Message_ProgressRange.hxx>
#include <TopoDS_Shape.hxx>

#include <functional>
#include <optional>

namespace tnconvert {

class ShapeRepair;

/// Tessellates the shapes of the CAD kernel as the settings ask for.
class ShapeMesher {
public:
    /// The look of a face or edge of the shape; nothing when it is not to be drawn.
    using Look = std::function<std::optional<Material>(const TopoDS_Shape &)>;

    ShapeMesher(const Settings &settings, Report &report);

    /// Gives the faces of @p shape their triangles, which meshes() does as well. Tells whether
    /// these fill all of them.
    bool tessellate(const TopoDS_Shape &shape, const Message_ProgressRange &progress);

    /// The shape's faces, and its free edges when curves are wanted. One primitive for each
    /// material; when geometries are not merged, one mesh for each face. Throws ConversionError
    /// when all shapes together have too many triangles.
    std::vector<std::shared_ptr<const Mesh>> meshes(const TopoDS_Shape &shape, const Look &look,
                                                    const std::string &name);

    /// What became of the faces of all shapes so far.
    const FaceTally &faces() const { return m_faces; }

private:
    class Collector;

    double safeAngle() const; ///< radians
    double safeDeviation(const TopoDS_Shape &shape);
    void addFaces(const ShapeRepair &repair, const Look &look, Collector &collector,
                  FaceTally &tally);
    void addFreeEdges(const TopoDS_Shape &shape, const Look &look, Collector &collector,
                      FaceTally &tally);
    Primitive segments(const TopoDS_Shape &edge, double deviation) const;
    void limitChords(Primitive &primitive);
    void warnOnce(bool &wasWarned, const std::string &message);

    const Settings &m_settings;
    Report &m_report;
    FaceTally m_faces;
    TopoDS_Shape m_tessellated; ///< the last one
    std::uint64_t m_triangles = 0;
    bool m_deviationWarned = false;
    bool m_angleWarned = false;
    bool m_chordWarned = false;
};

} // namespace tnconvert
