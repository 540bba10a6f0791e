#include "readers/step/StepFaces.h"

#include <StepGeom_CartesianPoint.hxx>
#include <StepShape_BrepWithVoids.hxx>
#include <StepShape_ClosedShell.hxx>
#include <StepShape_EdgeLoop.hxx>
#include <StepShape_FaceBasedSurfaceModel.hxx>
#include <StepShape_FaceBound.hxx>
#include <StepShape_FacetedBrepAndBrepWithVoids.hxx>
#include <StepShape_HArray1OfConnectedFaceSet.hxx>
#include <StepShape_HArray1OfFace.hxx>
#include <StepShape_HArray1OfFaceBound.hxx>
#include <StepShape_HArray1OfOrientedClosedShell.hxx>
#include <StepShape_HArray1OfOrientedEdge.hxx>
#include <StepShape_HArray1OfShell.hxx>
#include <StepShape_OpenShell.hxx>
#include <StepShape_OrientedClosedShell.hxx>
#include <StepShape_OrientedEdge.hxx>
#include <StepShape_OrientedFace.hxx>
#include <StepShape_OrientedOpenShell.hxx>
#include <StepShape_ShellBasedSurfaceModel.hxx>
#include <StepShape_VertexPoint.hxx>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace tnconvert {

namespace {

using FaceSets = std::vector<Handle(StepShape_ConnectedFaceSet)>;

/// What an oriented shell turns; null when it is none.
Handle(StepShape_ConnectedFaceSet) turned(const Handle(StepShape_ConnectedFaceSet) & faces)
{
    if (const auto closed = Handle(StepShape_OrientedClosedShell)::DownCast(faces))
        return closed->ClosedShellElement();
    if (const auto open = Handle(StepShape_OrientedOpenShell)::DownCast(faces))
        return open->OpenShellElement();
    return {};
}

/// The faces of an oriented shell stand in the shell that it turns, which is no oriented one:
/// damaged ones turn themselves.
Handle(StepShape_ConnectedFaceSet) unturned(const Handle(StepShape_ConnectedFaceSet) & faces)
{
    const Handle(StepShape_ConnectedFaceSet) shell = turned(faces);
    if (shell.IsNull())
        return faces;
    return turned(shell).IsNull() ? shell : Handle(StepShape_ConnectedFaceSet)();
}

void add(FaceSets &sets, const Handle(Standard_Transient) & faces)
{
    const auto set = unturned(Handle(StepShape_ConnectedFaceSet)::DownCast(faces));
    if (!set.IsNull())
        sets.push_back(set);
}

template <typename List>
void addAll(FaceSets &sets, const List &list)
{
    if (list.IsNull())
        return;
    for (const auto &faces : *list)
        add(sets, faces);
}

using Point = std::array<double, 3>;
using Ends = std::pair<Point, Point>; ///< the lesser one first

Point pointOf(const Handle(StepShape_Vertex) & vertex)
{
    const auto corner = Handle(StepShape_VertexPoint)::DownCast(vertex);
    const auto point = corner.IsNull()
        ? Handle(StepGeom_CartesianPoint)()
        : Handle(StepGeom_CartesianPoint)::DownCast(corner->VertexGeometry());
    if (point.IsNull() || point->NbCoordinates() != 3)
        return {};
    return {point->CoordinatesValue(1), point->CoordinatesValue(2), point->CoordinatesValue(3)};
}

Ends endsOf(const StepShape_Edge &edge)
{
    const Point start = pointOf(edge.EdgeStart());
    const Point end = pointOf(edge.EdgeEnd());
    return {std::min(start, end), std::max(start, end)};
}

} // namespace

std::vector<Handle(StepShape_ConnectedFaceSet)> faceSetsOf(const Handle(StepRepr_RepresentationItem)
                                                           & item)
{
    FaceSets sets;
    if (const auto solid = Handle(StepShape_ManifoldSolidBrep)::DownCast(item))
        add(sets, solid->Outer());
    if (const auto hollow = Handle(StepShape_BrepWithVoids)::DownCast(item))
        addAll(sets, hollow->Voids());
    if (const auto hollow = Handle(StepShape_FacetedBrepAndBrepWithVoids)::DownCast(item))
        addAll(sets, hollow->Voids());
    add(sets, item); // when it is one itself
    if (const auto surfaces = Handle(StepShape_FaceBasedSurfaceModel)::DownCast(item))
        addAll(sets, surfaces->FbsmFaces());
    if (const auto shells = Handle(StepShape_ShellBasedSurfaceModel)::DownCast(item);
        shells && !shells->SbsmBoundary().IsNull()) {
        for (const StepShape_Shell &shell : *shells->SbsmBoundary())
            add(sets, shell.Value());
    }
    return sets;
}

std::vector<Handle(StepShape_Face)> facesOf(const Handle(StepRepr_RepresentationItem) & item)
{
    std::vector<Handle(StepShape_Face)> result;
    const auto addFace = [&result](Handle(StepShape_Face) face) {
        if (const auto turned = Handle(StepShape_OrientedFace)::DownCast(face))
            face = turned->FaceElement();
        if (!face.IsNull())
            result.push_back(face);
    };
    if (const auto face = Handle(StepShape_Face)::DownCast(item))
        addFace(face);
    for (const Handle(StepShape_ConnectedFaceSet) & set : faceSetsOf(item)) {
        if (set->CfsFaces().IsNull())
            continue;
        for (const Handle(StepShape_Face) & face : *set->CfsFaces())
            addFace(face);
    }
    return result;
}

double openShareOf(const StepShape_ConnectedFaceSet &faces)
{
    std::map<const StepShape_Edge *, int> uses;
    const auto addLoop = [&uses](const StepShape_EdgeLoop &loop) {
        if (loop.EdgeList().IsNull())
            return;
        for (const Handle(StepShape_OrientedEdge) & edge : *loop.EdgeList()) {
            if (!edge.IsNull() && !edge->EdgeElement().IsNull())
                ++uses[edge->EdgeElement().get()];
        }
    };
    if (faces.CfsFaces().IsNull())
        return 0;
    for (const Handle(StepShape_Face) & face : *faces.CfsFaces()) {
        if (face.IsNull() || face->Bounds().IsNull())
            continue;
        for (const Handle(StepShape_FaceBound) & bound : *face->Bounds()) {
            if (bound.IsNull())
                continue;
            if (const auto loop = Handle(StepShape_EdgeLoop)::DownCast(bound->Bound()))
                addLoop(*loop);
        }
    }
    // An edge that each of two faces has for itself is open only by name.
    std::map<Ends, int> open;
    for (const auto &[edge, count] : uses) {
        if (count == 1)
            ++open[endsOf(*edge)];
    }
    const auto alone =
        std::count_if(open.begin(), open.end(), [](const auto &ends) { return ends.second == 1; });
    if (alone == 0 && !open.empty())
        return 1;
    return uses.empty() ? 0 : double(alone) / double(uses.size());
}

} // namespace tnconvert
