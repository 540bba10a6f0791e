#include "readers/kernel/FaceMesher.h"

#include "readers/kernel/KernelGuard.h"
#include "readers/kernel/ShapeRepair.h"
#include "readers/kernel/Tessellation.h"

#include <BRepAdaptor_Surface.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <BRepGProp.hxx>
#include <BRepLProp_SLProps.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <ShapeFix_Face.hxx>
#include <ShapeFix_ShapeTolerance.hxx>
#include <ShapeUpgrade_ShapeDivideAngle.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <cmath>

namespace tnconvert {

namespace {

/// Mends wires that are open, turned or in disorder. The mesher drops what lies within the
/// tolerance of a corner, which can be all of a small hole.
TopoDS_Shape withSoundEdges(const TopoDS_Face &face)
{
    constexpr double largestTolerance = 1e-5;
    ShapeFix_ShapeTolerance().LimitTolerance(face, Precision::Confusion(), largestTolerance);
    ShapeFix_Face fix(face);
    fix.Perform();
    return fix.Result();
}

/// Cuts what goes round: the mesher loses some of the seams that end in the tip of a cone.
TopoDS_Shape inQuarters(const TopoDS_Face &face)
{
    ShapeUpgrade_ShapeDivideAngle divide(M_PI / 2, face);
    divide.Perform();
    return divide.Result();
}

/// The area within the edges in mm²; nothing when there is no telling.
std::optional<double> areaOf(const TopoDS_Face &face)
{
    try {
        const std::optional<double> extent = extentOf(face);
        GProp_GProps properties;
        BRepGProp::SurfaceProperties(face, properties);
        const double area = std::fabs(properties.Mass());
        // A sphere has no more than this around its seam.
        if (extent && area <= 10 * *extent * *extent)
            return area;
    } catch (const Standard_Failure &) {
        // As with an area that cannot be right.
    }
    return std::nullopt;
}

Vec3f floats(const gp_XYZ &v)
{
    return {float(v.X()), float(v.Y()), float(v.Z())};
}

/// Normals of the surface at the nodes of its triangulation, in the triangulation's coordinates;
/// null where the surface has none.
std::vector<gp_XYZ> surfaceNormals(const TopoDS_Face &face, const Poly_Triangulation &triangulation)
{
    std::vector<gp_XYZ> normals(std::size_t(triangulation.NbNodes()), gp_XYZ(0, 0, 0));
    if (triangulation.HasNormals()) {
        for (int i = 1; i <= triangulation.NbNodes(); ++i)
            normals[std::size_t(i - 1)] = triangulation.Normal(i).XYZ();
        return normals;
    }
    TopoDS_Face local = face;
    local.Location(TopLoc_Location());
    TopLoc_Location location;
    if (!triangulation.HasUVNodes() || BRep_Tool::Surface(local, location).IsNull())
        return normals;
    const BRepAdaptor_Surface surface(local, Standard_False);
    BRepLProp_SLProps properties(surface, 1, 1e-9);
    for (int i = 1; i <= triangulation.NbNodes(); ++i) {
        const gp_Pnt2d uv = triangulation.UVNode(i);
        try {
            properties.SetParameters(uv.X(), uv.Y());
            if (properties.IsNormalDefined())
                normals[std::size_t(i - 1)] = properties.Normal().XYZ();
        } catch (const Standard_Failure &) {
            // Left null: the facets decide.
        }
    }
    return normals;
}

/// Adds the triangles that the kernel made of @p face; none when it made none.
void append(const TopoDS_Face &face, Primitive &primitive)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) &triangulation = BRep_Tool::Triangulation(face, location);
    if (triangulation.IsNull() || triangulation->NbTriangles() == 0)
        return;
    const gp_Trsf toPart = location.Transformation();
    const bool isTurned = face.Orientation() == TopAbs_REVERSED;
    // The scale factor does not tell mirrors in transformations that come from Iges files.
    const bool isMirrored = toPart.VectorialPart().Determinant() < 0;
    std::vector<gp_XYZ> normals = surfaceNormals(face, *triangulation);

    const auto base = std::uint32_t(primitive.positions.size());
    for (int i = 1; i <= triangulation->NbTriangles(); ++i) {
        int corners[3];
        triangulation->Triangle(i).Get(corners[0], corners[1], corners[2]);
        const gp_XYZ a = triangulation->Node(corners[0]).XYZ();
        const gp_XYZ facetNormal = (triangulation->Node(corners[1]).XYZ() - a)
            ^ (triangulation->Node(corners[2]).XYZ() - a);
        // Where the surface has no normal (the tip of a cone) the facets around it are summed up.
        for (const int corner : corners) {
            gp_XYZ &normal = normals[std::size_t(corner - 1)];
            if (normal.SquareModulus() < 0.9 || normal.SquareModulus() > 1.1)
                normal += facetNormal.SquareModulus() > 0 ? facetNormal.Normalized() * 2
                                                          : gp_XYZ(0, 0, 0);
        }
        if (isTurned)
            std::swap(corners[1], corners[2]);
        for (const int corner : corners)
            primitive.indices.push_back(base + std::uint32_t(corner - 1));
    }
    for (int i = 1; i <= triangulation->NbNodes(); ++i) {
        primitive.positions.push_back(floats(triangulation->Node(i).Transformed(toPart).XYZ()));
        gp_XYZ normal = normals[std::size_t(i - 1)];
        if (normal.SquareModulus() > 0)
            normal = gp_Dir(normal).Transformed(toPart).XYZ();
        // A mirrored surface has the normal of its mirrored tangents, which is the opposite one.
        primitive.normals.push_back(floats(isTurned != isMirrored ? normal.Reversed() : normal));
    }
}

double areaOf(const Primitive &primitive)
{
    double area = 0;
    const auto point = [&](std::size_t i) {
        const Vec3f &p = primitive.positions[primitive.indices[i]];
        return Vec3{p[0], p[1], p[2]};
    };
    for (std::size_t i = 0; i + 2 < primitive.indices.size(); i += 3)
        area += (point(i + 1) - point(i)).cross(point(i + 2) - point(i)).length() / 2;
    return area;
}

/// Whether triangles of a repaired face fill it. Of a face that goes round twice by mistake the
/// kernel states twice the area.
bool isPlausible(double area, const std::optional<double> &stated)
{
    return stated && area > 0.4 * *stated && area < 1.5 * *stated;
}

} // namespace

FaceMesher::FaceMesher(double deviation, double angle, FaceTally &tally)
    : m_deviation(deviation)
    , m_angle(angle)
    , m_tally(tally)
{
}

Primitive FaceMesher::triangles(const TopoDS_Face &face)
{
    ++m_tally.faces;
    Primitive result;
    append(face, result);
    if (result.indices.empty() && !isStray(face))
        result = trianglesOfRepaired(face);
    if (result.indices.empty())
        countLost(face);
    m_tally.area += areaOf(result);
    return result;
}

Primitive FaceMesher::trianglesOfRepaired(const TopoDS_Face &face) const
{
    for (const auto repaired : {&withSoundEdges, &inQuarters}) {
        Primitive result;
        const bool isDone = KernelGuard::run([&] {
            const TopoDS_Shape faces = repaired(TopoDS::Face(BRepBuilderAPI_Copy(face).Shape()));
            tessellate(faces, m_deviation, m_angle);
            for (TopExp_Explorer it(faces, TopAbs_FACE); it.More(); it.Next())
                append(TopoDS::Face(it.Current()), result);
        });
        if (isDone && isPlausible(areaOf(result), areaOf(face)))
            return result;
    }
    return {};
}

void FaceMesher::countLost(const TopoDS_Face &face)
{
    const std::optional<double> area = areaOf(face);
    ++m_tally.lost;
    if (!area)
        m_tally.lostArea.reset();
    else if (m_tally.lostArea)
        *m_tally.lostArea += *area;
}

} // namespace tnconvert
