#pragma once

#include <StepRepr_RepresentationItem.hxx>
#include <StepShape_ConnectedFaceSet.hxx>
#include <StepShape_Face.hxx>

#include <vector>

namespace tnconvert {

/// The shells and other sets of faces that a solid or surface model consists of. Damaged files lack
/// some of them; these are left out.
std::vector<Handle(StepShape_ConnectedFaceSet)> faceSetsOf(const Handle(StepRepr_RepresentationItem)
                                                           & item);

/// The faces of these sets, or the item itself when it is a face. Null ones are left out.
std::vector<Handle(StepShape_Face)> facesOf(const Handle(StepRepr_RepresentationItem) & item);

/// The share of the set's edges that bound only one of its faces, as the file has it: 0 when it is
/// closed, little when a face is missing, and 1 when its faces meet, but in edges of their own.
double openShareOf(const StepShape_ConnectedFaceSet &faces);

} // namespace tnconvert
