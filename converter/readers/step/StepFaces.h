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

/// Whether each edge of the set lies between two of its faces, so that it encloses a volume, as the
/// file has it.
bool isClosed(const StepShape_ConnectedFaceSet &faces);

} // namespace tnconvert
