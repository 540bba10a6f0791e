#include "readers/kernel/ShapeMesher.h"

#include "scene/SceneOperations.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRepLProp_SLProps.hxx>
#include <BRepLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Poly_Triangulation.hxx>
#include <ShapeFix_Shell.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

namespace tnconvert {

namespace {

/// A deviation below this share of the shape's extent makes triangles nobody sees and keeps the
/// mesher busy for hours.
constexpr double leastRelativeDeviation = 2e-5;

/// A stitching tolerance above this share of the shape's extent would sew the whole shape together,
/// and takes minutes over it.
constexpr double largestRelativeTolerance = 1e-3;

/// Degrees. Below, a single sphere takes the kernel minutes and gigabytes.
constexpr double leastAngle = 1;

/// The subdivision by chord length stops at so many triangles of one face set.
constexpr std::size_t triangleBound = 500'000;

/// The diagonal of the shape's box in mm; nothing for a shape without bounds.
std::optional<double> extentOf(const TopoDS_Shape &shape)
{
    Bnd_Box box;
    BRepBndLib::AddClose(shape, box);
    if (box.IsVoid() || box.IsOpen())
        return std::nullopt;
    return std::sqrt(box.SquareExtent());
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

} // namespace

ShapeMesher::ShapeMesher(const Settings &settings, Report &report)
    : m_settings(settings)
    , m_report(report)
{
}

void ShapeMesher::warnOnce(bool &wasWarned, const std::string &message)
{
    if (!wasWarned)
        m_report.warning(message);
    wasWarned = true;
}

double ShapeMesher::safeAngle() const
{
    return std::max(m_settings.normalTolerance, leastAngle) * M_PI / 180;
}

double ShapeMesher::safeDeviation(const TopoDS_Shape &shape)
{
    const std::optional<double> extent = extentOf(shape);
    if (!extent)
        return m_settings.chordDeviation;
    const double floor = *extent * leastRelativeDeviation;
    if (m_settings.chordDeviation >= floor)
        return m_settings.chordDeviation;
    warnOnce(m_deviationWarned,
             "The chord deviation is too small for the size of the model and was raised.");
    return floor;
}

TopoDS_Shape ShapeMesher::repaired(const TopoDS_Shape &shape,
                                   TopTools_DataMapOfShapeInteger &originOf,
                                   std::vector<TopoDS_Shape> &origins) const
{
    const auto noteOrigin = [&](const TopoDS_Shape &result, const TopoDS_Shape &origin) {
        originOf.Bind(result, int(origins.size()));
        origins.push_back(origin);
    };
    TopoDS_Shape result = shape;
    if (m_settings.useStitching) {
        const double bound =
            extentOf(shape).value_or(m_settings.stitchingTolerance / largestRelativeTolerance)
            * largestRelativeTolerance;
        BRepBuilderAPI_Sewing sewing(std::min(m_settings.stitchingTolerance, bound));
        sewing.Add(shape);
        sewing.Perform();
        const TopoDS_Shape sewn = sewing.SewedShape();
        if (!sewn.IsNull()) {
            for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
                if (sewing.IsModifiedSubShape(faces.Current()))
                    noteOrigin(sewing.ModifiedSubShape(faces.Current()), faces.Current());
            }
            // Sewing drops what is no face.
            BRep_Builder builder;
            TopoDS_Compound all;
            builder.MakeCompound(all);
            builder.Add(all, sewn);
            for (TopExp_Explorer edges(shape, TopAbs_EDGE, TopAbs_FACE); edges.More(); edges.Next())
                builder.Add(all, edges.Current());
            result = all;
        }
    }
    if (m_settings.fixSurfaceOrientation) {
        BRep_Builder builder;
        TopoDS_Compound all;
        builder.MakeCompound(all);
        for (TopExp_Explorer solids(result, TopAbs_SOLID); solids.More(); solids.Next()) {
            TopoDS_Solid solid = TopoDS::Solid(solids.Current());
            BRepLib::OrientClosedSolid(solid);
            builder.Add(all, solid);
        }
        for (TopExp_Explorer shells(result, TopAbs_SHELL, TopAbs_SOLID); shells.More();
             shells.Next()) {
            ShapeFix_Shell fix(TopoDS::Shell(shells.Current()));
            fix.FixFaceOrientation(TopoDS::Shell(shells.Current()));
            TopoDS_Shape oriented = fix.Shape();
            if (BRep_Tool::IsClosed(oriented) && oriented.ShapeType() == TopAbs_SHELL) {
                TopoDS_Solid solid;
                builder.MakeSolid(solid);
                builder.Add(solid, oriented);
                BRepLib::OrientClosedSolid(solid);
                oriented = solid;
            }
            builder.Add(all, oriented);
        }
        for (TopExp_Explorer faces(result, TopAbs_FACE, TopAbs_SHELL); faces.More(); faces.Next())
            builder.Add(all, faces.Current());
        for (TopExp_Explorer edges(result, TopAbs_EDGE, TopAbs_FACE); edges.More(); edges.Next())
            builder.Add(all, edges.Current());
        result = all;
    }
    return result;
}

std::vector<std::shared_ptr<const Mesh>>
ShapeMesher::meshes(const TopoDS_Shape &original, const Look &look, const std::string &name)
{
    TopTools_DataMapOfShapeInteger originOf;
    std::vector<TopoDS_Shape> origins;
    const TopoDS_Shape shape = repaired(original, originOf, origins);
    const double deviation = safeDeviation(shape);

    std::vector<std::shared_ptr<Mesh>> result;
    std::map<Material, Primitive> byMaterial[2];
    const auto add = [&](Primitive &&primitive, const Material &material) {
        primitive.material = material;
        if (!m_settings.mergeGeometries) {
            result.push_back(std::make_shared<Mesh>());
            result.back()->primitives.push_back(std::move(primitive));
            return;
        }
        Primitive &merged = byMaterial[primitive.mode == Primitive::Mode::Lines][material];
        const auto base = std::uint32_t(merged.positions.size());
        merged.mode = primitive.mode;
        merged.material = material;
        merged.positions.insert(merged.positions.end(), primitive.positions.begin(),
                                primitive.positions.end());
        merged.normals.insert(merged.normals.end(), primitive.normals.begin(),
                              primitive.normals.end());
        for (const std::uint32_t index : primitive.indices)
            merged.indices.push_back(base + index);
    };

    if (m_settings.importSurfaces && TopExp_Explorer(shape, TopAbs_FACE).More()) {
        if (m_settings.normalTolerance < leastAngle)
            warnOnce(m_angleWarned, "The normal tolerance was raised to 1 degree.");
        try {
            const BRepMesh_IncrementalMesh mesher(shape, deviation, Standard_False, safeAngle(),
                                                  Standard_False);
        } catch (const Standard_Failure &) {
            warnOnce(m_failureWarned, "Some surfaces could not be tessellated and are left out.");
        }
        for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
            const int *origin = originOf.Seek(faces.Current());
            const std::optional<Material> material =
                look(origin ? origins[std::size_t(*origin)] : faces.Current());
            if (!material)
                continue;
            Primitive primitive;
            addFace(TopoDS::Face(faces.Current()), primitive);
            if (primitive.indices.empty()) {
                warnOnce(m_failureWarned,
                         "Some surfaces could not be tessellated and are left out.");
                continue;
            }
            add(std::move(primitive), *material);
        }
    }
    if (m_settings.importCurves) {
        for (TopExp_Explorer edges(shape, TopAbs_EDGE, TopAbs_FACE); edges.More(); edges.Next()) {
            const std::optional<Material> material = look(edges.Current());
            Primitive primitive;
            primitive.mode = Primitive::Mode::Lines;
            if (material)
                addEdge(edges.Current(), deviation, primitive);
            if (!primitive.indices.empty())
                add(std::move(primitive), *material);
        }
    }
    if (m_settings.mergeGeometries) {
        auto mesh = std::make_shared<Mesh>();
        for (auto &ofMode : byMaterial) {
            for (auto &entry : ofMode)
                mesh->primitives.push_back(std::move(entry.second));
        }
        if (!mesh->primitives.empty())
            result.push_back(std::move(mesh));
    }
    for (const std::shared_ptr<Mesh> &mesh : result) {
        mesh->name = name;
        for (Primitive &primitive : mesh->primitives) {
            if (m_settings.maxChordLength > 0
                && !limitEdgeLength(primitive, m_settings.maxChordLength, triangleBound))
                warnOnce(m_chordWarned,
                         "The maximum chord length is too small for the size of the model; longer "
                         "chords remain.");
        }
    }
    return {result.begin(), result.end()};
}

void ShapeMesher::addFace(const TopoDS_Face &face, Primitive &primitive) const
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
            primitive.indices.push_back(std::uint32_t(corner - 1));
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

void ShapeMesher::addEdge(const TopoDS_Shape &edge, double deviation, Primitive &primitive) const
{
    try {
        const BRepAdaptor_Curve curve(TopoDS::Edge(edge));
        if (BRep_Tool::Degenerated(TopoDS::Edge(edge))
            || Precision::IsInfinite(curve.FirstParameter())
            || Precision::IsInfinite(curve.LastParameter()))
            return;
        const GCPnts_TangentialDeflection points(curve, safeAngle(), deviation);
        for (int i = 1; i <= points.NbPoints(); ++i) {
            primitive.positions.push_back(floats(points.Value(i).XYZ()));
            if (i > 1)
                primitive.indices.insert(primitive.indices.end(),
                                         {std::uint32_t(i - 2), std::uint32_t(i - 1)});
        }
    } catch (const Standard_Failure &) {
        primitive = Primitive();
        primitive.mode = Primitive::Mode::Lines;
    }
}

} // namespace tnconvert
