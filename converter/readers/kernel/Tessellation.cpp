#include "readers/kernel/Tessellation.h"

#include "readers/kernel/Kernel.h"
#include "readers/kernel/ShapeRepair.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <BndLib_AddSurface.hxx>
#include <Bnd_Box.hxx>
#include <GeomAdaptor_Surface.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>

#include <cmath>

namespace tnconvert {

namespace {

/// How many times as large as its edges the surface of a face may be, and the other way round. A
/// closed surface with a short seam is a few times as large.
constexpr double largestStray = 1000;

TopoDS_Shape withoutStray(const TopoDS_Shape &shape)
{
    TopoDS_Compound sound;
    BRep_Builder builder;
    builder.MakeCompound(sound);
    bool hasStray = false;
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        if (isStray(TopoDS::Face(faces.Current())))
            hasStray = true;
        else
            builder.Add(sound, faces.Current());
    }
    return hasStray ? sound : shape;
}

/// Twice the area of @p face, as a vector along its normal, and what it adds to six times the
/// volume around it.
struct Extent {
    gp_XYZ area = {0, 0, 0};
    double size = 0; ///< of the area when no part of it is turned away
    double volume = 0;
};

Extent extentOf(const TopoDS_Face &face, const Poly_Triangulation &triangulation)
{
    Extent extent;
    for (int i = 1; i <= triangulation.NbTriangles(); ++i) {
        int corners[3];
        triangulation.Triangle(i).Get(corners[0], corners[1], corners[2]);
        const gp_XYZ a = triangulation.Node(corners[0]).XYZ();
        const gp_XYZ b = triangulation.Node(corners[1]).XYZ();
        const gp_XYZ c = triangulation.Node(corners[2]).XYZ();
        const gp_XYZ area = (b - a) ^ (c - a);
        extent.area += area;
        extent.size += area.Modulus();
        extent.volume += a * (b ^ c);
    }
    if (face.Orientation() == TopAbs_REVERSED) {
        extent.area.Reverse();
        extent.volume = -extent.volume;
    }
    return extent;
}

/// Twice the area that the edges of @p face enclose, as a vector.
gp_XYZ enclosedBy(const TopoDS_Face &face, const Handle(Poly_Triangulation) & triangulation,
                  const TopLoc_Location &location)
{
    gp_XYZ area(0, 0, 0);
    for (TopExp_Explorer edges(face, TopAbs_EDGE); edges.More(); edges.Next()) {
        const TopoDS_Edge &edge = TopoDS::Edge(edges.Current());
        const Handle(Poly_PolygonOnTriangulation) polygon =
            BRep_Tool::PolygonOnTriangulation(edge, triangulation, location);
        if (polygon.IsNull())
            continue;
        const double sign = edge.Orientation() == TopAbs_REVERSED ? -1 : 1;
        for (int i = 1; i < polygon->NbNodes(); ++i)
            area += sign
                * (triangulation->Node(polygon->Node(i)).XYZ()
                   ^ triangulation->Node(polygon->Node(i + 1)).XYZ());
    }
    return area;
}

/// How much the two may differ as a share of the face's area; they are sums of the same nodes.
constexpr double largestMisfit = 1e-6;

bool isFilled(const TopoDS_Face &face, double &volume)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
    if (triangulation.IsNull())
        return false;
    const Extent extent = extentOf(face, *triangulation);
    volume += extent.volume;
    const gp_XYZ misfit = extent.area - enclosedBy(face, triangulation, location);
    return misfit.Modulus() <= largestMisfit * extent.size;
}

} // namespace

void tessellate(const TopoDS_Shape &shape, double deviation, double angle,
                const Message_ProgressRange &progress)
{
    IMeshTools_Parameters parameters;
    parameters.Deflection = deviation;
    parameters.Angle = angle;
    parameters.InParallel = kernelThreads() > 1;
    try {
        const BRepMesh_IncrementalMesh mesher(withoutStray(shape), parameters, progress);
    } catch (const Standard_Failure &) {
        // The faces without triangles are counted one by one.
    }
}

bool isStray(const TopoDS_Face &face)
{
    try {
        TopLoc_Location location;
        const Handle(Geom_Surface) &surface = BRep_Tool::Surface(face, location);
        const std::optional<double> extent = extentOf(face);
        if (surface.IsNull() || !extent)
            return false;
        double uMin = 0;
        double uMax = 0;
        double vMin = 0;
        double vMax = 0;
        BRepTools::UVBounds(face, uMin, uMax, vMin, vMax);
        Bnd_Box box;
        BndLib_AddSurface::Add(GeomAdaptor_Surface(surface), uMin, uMax, vMin, vMax, 0, box);
        if (box.IsVoid())
            return false;
        if (box.IsOpen())
            return true;
        const double size = std::sqrt(box.SquareExtent()) + Precision::Confusion();
        const double edges = *extent + Precision::Confusion();
        return size > largestStray * edges || edges > largestStray * size;
    } catch (const Standard_Failure &) {
        return false;
    }
}

bool isFilled(const TopoDS_Shape &tessellated)
{
    const auto areFilled = [](const TopoDS_Shape &shape, TopAbs_ShapeEnum avoided) {
        double volume = 0;
        for (TopExp_Explorer it(shape, TopAbs_FACE, avoided); it.More(); it.Next()) {
            if (!isFilled(TopoDS::Face(it.Current()), volume))
                return false;
        }
        return avoided != TopAbs_SHAPE || volume >= 0;
    };
    for (TopExp_Explorer it(tessellated, TopAbs_SOLID); it.More(); it.Next()) {
        if (!areFilled(it.Current(), TopAbs_SHAPE))
            return false;
    }
    return areFilled(tessellated, TopAbs_SOLID);
}

} // namespace tnconvert
