#pragma once

#include <TopoDS_Shape.hxx>

#include <cstddef>
#include <functional>
#include <vector>

namespace tnconvert {

/// Makes @p count shapes, one by one, in a child process, so that what crashes the kernel or keeps
/// it busy for more than 10 s costs that shape alone; after 60 s the remaining ones are lost. Gives
/// as many shapes as were asked for, with their triangulation; those that could not be made are
/// null. A fork is some milliseconds, and there is one for each shape that is lost.
std::vector<TopoDS_Shape> makeForked(std::size_t count,
                                     const std::function<TopoDS_Shape(std::size_t)> &make);

} // namespace tnconvert
