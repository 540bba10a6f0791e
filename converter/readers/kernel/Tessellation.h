#pragma once

#include <Message_ProgressRange.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>

namespace tnconvert {

/// Gives the faces of @p shape triangles, on all threads that the kernel may use, with a chord
/// deviation in mm and an angle in radians. Faces where that fails stay bare, and stray ones.
void tessellate(const TopoDS_Shape &shape, double deviation, double angle,
                const Message_ProgressRange &progress = {});

/// Whether the surface has nothing to do with the edges that bound it, as when one number of it
/// is damaged. The kernel would fill the whole of it with triangles.
bool isStray(const TopoDS_Face &face);

/// Whether the triangles of each face fill it, and no solid is inside out. What fills a face looks
/// as large from every side as the polygons of its edges, and these do not depend on its surface.
bool isFilled(const TopoDS_Shape &tessellated);

} // namespace tnconvert
