#include "readers/kernel/ShapeHealing.h"

#include <BRep_Tool.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <ShapeFix_Face.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

namespace tnconvert {

namespace {

bool isCurved(const TopoDS_Face &face)
{
    TopLoc_Location location;
    Handle(Geom_Surface) surface = BRep_Tool::Surface(face, location);
    if (const auto trimmed = Handle(Geom_RectangularTrimmedSurface)::DownCast(surface))
        surface = trimmed->BasisSurface();
    return !surface.IsNull() && !surface->IsKind(STANDARD_TYPE(Geom_Plane));
}

} // namespace

ShapeHealing::ShapeHealing(const TopoDS_Shape &shape)
    : m_changes(new ShapeBuild_ReShape)
{
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        const TopoDS_Face &face = TopoDS::Face(faces.Current());
        if (!isCurved(face))
            continue;
        ShapeFix_Face fix(face);
        fix.Perform();
        if (!fix.Result().IsSame(face))
            m_changes->Replace(face, fix.Result());
    }
}

} // namespace tnconvert
