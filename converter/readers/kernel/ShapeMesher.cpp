#include "readers/kernel/ShapeMesher.h"

#include "core/Limits.h"
#include "readers/kernel/FaceMesher.h"
#include "readers/kernel/ShapeRepair.h"
#include "readers/kernel/Tessellation.h"
#include "scene/SceneOperations.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Precision.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <algorithm>
#include <cmath>
#include <map>

namespace tnconvert {

namespace {

/// A deviation below this share of the shape's extent makes triangles nobody sees and keeps the
/// mesher busy for hours.
constexpr double leastRelativeDeviation = 2e-5;

/// Degrees. Below, a single sphere takes the kernel minutes and gigabytes.
constexpr double leastAngle = 1;

/// The subdivision by chord length stops at so many triangles of one face set.
constexpr std::size_t subdivisionBound = 500'000;

Vec3f floats(const gp_Pnt &p)
{
    return {float(p.X()), float(p.Y()), float(p.Z())};
}

} // namespace

/// Gathers the primitives of one shape.
class ShapeMesher::Collector {
public:
    explicit Collector(bool merges)
        : m_merges(merges)
    {
    }

    void add(Primitive &&primitive, const Material &material)
    {
        if (primitive.indices.empty())
            return;
        primitive.material = material;
        if (!m_merges) {
            m_meshes.push_back(std::make_shared<Mesh>());
            m_meshes.back()->primitives.push_back(std::move(primitive));
            return;
        }
        Primitive &merged = m_byMaterial[{primitive.mode, material}];
        const auto base = std::uint32_t(merged.positions.size());
        merged.mode = primitive.mode;
        merged.material = material;
        merged.positions.insert(merged.positions.end(), primitive.positions.begin(),
                                primitive.positions.end());
        merged.normals.insert(merged.normals.end(), primitive.normals.begin(),
                              primitive.normals.end());
        for (const std::uint32_t index : primitive.indices)
            merged.indices.push_back(base + index);
    }

    std::vector<std::shared_ptr<Mesh>> take()
    {
        if (!m_byMaterial.empty())
            m_meshes.push_back(std::make_shared<Mesh>());
        for (auto &entry : m_byMaterial)
            m_meshes.back()->primitives.push_back(std::move(entry.second));
        return std::move(m_meshes);
    }

private:
    const bool m_merges;
    std::vector<std::shared_ptr<Mesh>> m_meshes;
    std::map<std::pair<Primitive::Mode, Material>, Primitive> m_byMaterial;
};

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
    const double floor = extentOf(shape).value_or(0) * leastRelativeDeviation;
    if (m_settings.chordDeviation >= floor)
        return m_settings.chordDeviation;
    warnOnce(m_deviationWarned,
             "The chord deviation is too small for the size of the model and was raised.");
    return floor;
}

bool ShapeMesher::tessellate(const TopoDS_Shape &shape, const Message_ProgressRange &progress)
{
    if (m_settings.normalTolerance < leastAngle)
        warnOnce(m_angleWarned, "The normal tolerance was raised to 1 degree.");
    m_tessellated.Nullify();
    tnconvert::tessellate(shape, safeDeviation(shape), safeAngle(), progress);
    m_tessellated = shape;
    return isFilled(shape);
}

std::vector<std::shared_ptr<const Mesh>>
ShapeMesher::meshes(const TopoDS_Shape &original, const Look &look, const std::string &name)
{
    const ShapeRepair repair(original, m_settings);
    Collector collector(m_settings.mergeGeometries);
    FaceTally faces;
    addFaces(repair, look, collector, faces);
    addFreeEdges(repair.result(), look, collector, faces);
    std::vector<std::shared_ptr<const Mesh>> result;
    for (const std::shared_ptr<Mesh> &mesh : collector.take()) {
        mesh->name = name;
        for (Primitive &primitive : mesh->primitives)
            limitChords(primitive);
        m_triangles += triangleCount(*mesh);
        checkTriangleCount("The file", m_triangles);
        result.push_back(mesh);
    }
    // Not before: a shape that the kernel crashes over is tried again in parts.
    m_faces += faces;
    return result;
}

void ShapeMesher::addFaces(const ShapeRepair &repair, const Look &look, Collector &collector,
                           FaceTally &tally)
{
    TopExp_Explorer faces(repair.result(), TopAbs_FACE);
    if (!faces.More())
        return;
    if (!m_settings.importSurfaces) {
        tally.isFiltered = true;
        return;
    }
    if (!m_tessellated.IsSame(repair.result()))
        tessellate(repair.result(), {});
    FaceMesher mesher(safeDeviation(repair.result()), safeAngle(), tally);
    for (; faces.More(); faces.Next()) {
        const std::optional<Material> material = look(repair.origin(faces.Current()));
        if (material)
            collector.add(mesher.triangles(TopoDS::Face(faces.Current())), *material);
        else
            tally.isFiltered = true;
    }
}

void ShapeMesher::addFreeEdges(const TopoDS_Shape &shape, const Look &look, Collector &collector,
                               FaceTally &tally)
{
    TopExp_Explorer edges(shape, TopAbs_EDGE, TopAbs_FACE);
    if (!edges.More())
        return;
    if (!m_settings.importCurves) {
        tally.isFiltered = true;
        return;
    }
    const double deviation = safeDeviation(shape);
    for (; edges.More(); edges.Next()) {
        const std::optional<Material> material = look(edges.Current());
        if (material)
            collector.add(segments(edges.Current(), deviation), *material);
        else
            tally.isFiltered = true;
    }
}

Primitive ShapeMesher::segments(const TopoDS_Shape &edge, double deviation) const
{
    Primitive primitive;
    primitive.mode = Primitive::Mode::Lines;
    try {
        const BRepAdaptor_Curve curve(TopoDS::Edge(edge));
        if (BRep_Tool::Degenerated(TopoDS::Edge(edge))
            || Precision::IsInfinite(curve.FirstParameter())
            || Precision::IsInfinite(curve.LastParameter()))
            return primitive;
        const GCPnts_TangentialDeflection points(curve, safeAngle(), deviation);
        for (int i = 1; i <= points.NbPoints(); ++i) {
            primitive.positions.push_back(floats(points.Value(i)));
            if (i > 1)
                primitive.indices.insert(primitive.indices.end(),
                                         {std::uint32_t(i - 2), std::uint32_t(i - 1)});
        }
    } catch (const Standard_Failure &) {
        primitive.indices.clear();
    }
    return primitive;
}

void ShapeMesher::limitChords(Primitive &primitive)
{
    if (m_settings.maxChordLength > 0
        && !limitEdgeLength(primitive, m_settings.maxChordLength, subdivisionBound))
        warnOnce(m_chordWarned,
                 "The maximum chord length is too small for the size of the model; longer chords "
                 "remain.");
}

} // namespace tnconvert
