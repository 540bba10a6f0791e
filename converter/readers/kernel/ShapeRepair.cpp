#include "readers/kernel/ShapeRepair.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRepLib.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <ShapeFix_Shell.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>

#include <algorithm>
#include <cmath>

namespace tnconvert {

namespace {

/// A stitching tolerance above this share of the shape's extent would sew the whole shape together,
/// and takes minutes over it.
constexpr double largestRelativeTolerance = 1e-3;

/// Puts shapes together, whatever they are.
class Collection {
public:
    Collection() { m_builder.MakeCompound(m_all); }

    void add(const TopoDS_Shape &shape) { m_builder.Add(m_all, shape); }
    /// The sub-shapes of a kind, but those below another kind.
    void add(const TopoDS_Shape &shape, TopAbs_ShapeEnum kind, TopAbs_ShapeEnum avoided)
    {
        for (TopExp_Explorer it(shape, kind, avoided); it.More(); it.Next())
            add(it.Current());
    }
    const TopoDS_Shape &shape() const { return m_all; }

private:
    BRep_Builder m_builder;
    TopoDS_Compound m_all;
};

/// A closed shell becomes a solid, which has an outside.
TopoDS_Shape oriented(const TopoDS_Shell &shell)
{
    ShapeFix_Shell fix(shell);
    fix.FixFaceOrientation(shell);
    const TopoDS_Shape result = fix.Shape();
    if (!BRep_Tool::IsClosed(result) || result.ShapeType() != TopAbs_SHELL)
        return result;
    BRep_Builder builder;
    TopoDS_Solid solid;
    builder.MakeSolid(solid);
    builder.Add(solid, result);
    BRepLib::OrientClosedSolid(solid);
    return solid;
}

} // namespace

std::optional<double> extentOf(const TopoDS_Shape &shape)
{
    Bnd_Box box;
    BRepBndLib::AddClose(shape, box);
    if (box.IsVoid() || box.IsOpen())
        return std::nullopt;
    return std::sqrt(box.SquareExtent());
}

ShapeRepair::ShapeRepair(const TopoDS_Shape &shape, const Settings &settings)
    : m_result(shape)
{
    if (settings.useStitching)
        stitch(settings.stitchingTolerance);
    if (settings.fixSurfaceOrientation)
        orient();
}

const TopoDS_Shape &ShapeRepair::origin(const TopoDS_Shape &face) const
{
    const int *index = m_originOf.Seek(face);
    return index ? m_origins[std::size_t(*index)] : face;
}

void ShapeRepair::stitch(double tolerance)
{
    const TopoDS_Shape shape = m_result;
    const double bound =
        extentOf(shape).value_or(tolerance / largestRelativeTolerance) * largestRelativeTolerance;
    BRepBuilderAPI_Sewing sewing(std::min(tolerance, bound));
    sewing.Add(shape);
    sewing.Perform();
    const TopoDS_Shape sewn = sewing.SewedShape();
    if (sewn.IsNull())
        return;
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        if (!sewing.IsModifiedSubShape(faces.Current()))
            continue;
        m_originOf.Bind(sewing.ModifiedSubShape(faces.Current()), int(m_origins.size()));
        m_origins.push_back(faces.Current());
    }
    // Sewing drops what is no face.
    Collection all;
    all.add(sewn);
    all.add(shape, TopAbs_EDGE, TopAbs_FACE);
    m_result = all.shape();
}

void ShapeRepair::orient()
{
    Collection all;
    for (TopExp_Explorer solids(m_result, TopAbs_SOLID); solids.More(); solids.Next()) {
        TopoDS_Solid solid = TopoDS::Solid(solids.Current());
        BRepLib::OrientClosedSolid(solid);
        all.add(solid);
    }
    for (TopExp_Explorer it(m_result, TopAbs_SHELL, TopAbs_SOLID); it.More(); it.Next())
        all.add(oriented(TopoDS::Shell(it.Current())));
    all.add(m_result, TopAbs_FACE, TopAbs_SHELL);
    all.add(m_result, TopAbs_EDGE, TopAbs_FACE);
    m_result = all.shape();
}

} // namespace tnconvert
