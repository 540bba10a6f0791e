#pragma once

#include "scene/Scene.h"

#include <cstddef>
#include <cstdint>

namespace tnconvert {

/// Removes nodes that carry no mesh and have no children left.
void removeEmptyGroups(std::vector<Node> &nodes);

/// Gives every node a mesh of its own.
void unshareMeshes(std::vector<Node> &nodes);

/// Moves all transformations into the meshes' coordinates; meshes of several instances are copied.
void flushTransformations(std::vector<Node> &nodes);

/// Gathers siblings of the same layer below a group named after the layer. Siblings without a
/// layer stay where they are.
void createLayerGroups(std::vector<Node> &nodes);

/// Splits the edges of triangles and segments that are longer than @p maximum (mm), in a primitive
/// whose vertices have no colours. Neighbours are split alike, so no gaps arise. Stops early, and
/// returns false, when the mesh would grow past @p triangleBound.
bool limitEdgeLength(Primitive &primitive, double maximum, std::size_t triangleBound);

/// How many triangles are drawn by a mesh, or by all nodes with each instance counted.
std::uint64_t triangleCount(const Mesh &mesh);
std::uint64_t triangleCount(const std::vector<Node> &nodes);

/// Whether any node draws something.
bool hasGeometry(const std::vector<Node> &nodes);

/// How many nodes there are, descendants included.
std::size_t nodeCount(const std::vector<Node> &nodes);

} // namespace tnconvert
