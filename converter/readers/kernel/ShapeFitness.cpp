#include "readers/kernel/ShapeFitness.h"

#include <BRep_Tool.hxx>
#include <Geom_Curve.hxx>
#include <NCollection_DataMap.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Vertex.hxx>

#include <algorithm>
#include <cstdlib>

namespace tnconvert {

namespace {

/// How often a shape is used one way, and how often in all.
struct Uses {
    int balance = 0;
    int count = 0;
};
using UsesOfShapes = NCollection_DataMap<TopoDS_Shape, Uses, TopTools_ShapeMapHasher>;

void use(UsesOfShapes &shapes, const TopoDS_Shape &shape, int balance)
{
    if (!shapes.IsBound(shape))
        shapes.Bind(shape, {});
    Uses &uses = shapes.ChangeFind(shape);
    uses.balance += balance;
    ++uses.count;
}

double gapAt(const TopoDS_Edge &edge)
{
    double first = 0;
    double last = 0;
    const Handle(Geom_Curve) curve = BRep_Tool::Curve(edge, first, last);
    const TopoDS_Vertex from = TopExp::FirstVertex(edge);
    const TopoDS_Vertex to = TopExp::LastVertex(edge);
    if (curve.IsNull() || from.IsNull() || to.IsNull())
        return 0;
    return std::max(curve->Value(first).Distance(BRep_Tool::Pnt(from)),
                    curve->Value(last).Distance(BRep_Tool::Pnt(to)));
}

/// Whether each vertex is left as often as it is reached.
bool isClosed(const TopoDS_Shape &wire)
{
    UsesOfShapes vertices;
    for (TopoDS_Iterator it(wire); it.More(); it.Next()) {
        const TopoDS_Edge &edge = TopoDS::Edge(it.Value());
        const TopoDS_Vertex from = TopExp::FirstVertex(edge, true);
        const TopoDS_Vertex to = TopExp::LastVertex(edge, true);
        if (from.IsNull() || to.IsNull())
            return false;
        use(vertices, from, -1);
        use(vertices, to, 1);
    }
    for (UsesOfShapes::Iterator it(vertices); it.More(); it.Next()) {
        if (it.Value().balance != 0)
            return false;
    }
    return !vertices.IsEmpty();
}

/// Whether no two faces of a shell use an edge in the same direction.
bool isTurnedAlike(const TopoDS_Shape &shell)
{
    UsesOfShapes edges;
    for (TopExp_Explorer it(shell, TopAbs_EDGE); it.More(); it.Next())
        use(edges, it.Current(), it.Current().Orientation() == TopAbs_REVERSED ? -1 : 1);
    for (UsesOfShapes::Iterator it(edges); it.More(); it.Next()) {
        if (it.Value().count > 1 && std::abs(it.Value().balance) == it.Value().count)
            return false;
    }
    return true;
}

} // namespace

double largestGapOf(const TopoDS_Shape &shape)
{
    double gap = 0;
    for (TopExp_Explorer edges(shape, TopAbs_EDGE); edges.More(); edges.Next())
        gap = std::max(gap, gapAt(TopoDS::Edge(edges.Current())));
    return gap;
}

bool fitsTogether(const TopoDS_Shape &shape)
{
    for (TopExp_Explorer wires(shape, TopAbs_WIRE); wires.More(); wires.Next()) {
        if (!isClosed(wires.Current()))
            return false;
    }
    for (TopExp_Explorer shells(shape, TopAbs_SHELL); shells.More(); shells.Next()) {
        if (!isTurnedAlike(shells.Current()))
            return false;
    }
    return largestGapOf(shape) <= harmlessGap;
}

} // namespace tnconvert
