#pragma once

#include <QtGui/QVector3D>

#include <cstdint>
#include <vector>

namespace tnhost {

struct ScenePrimitive;

/// The copy of a primitive or of lines that the graphics memory holds. All calls need the OpenGL
/// context of the first one.
class GpuMesh {
public:
    /// Copies the primitive. Triangles without normals get flat ones.
    explicit GpuMesh(const ScenePrimitive &primitive);
    /// Lines between each two of the points.
    explicit GpuMesh(const std::vector<QVector3D> &lines);
    ~GpuMesh();
    GpuMesh(const GpuMesh &) = delete;
    GpuMesh &operator=(const GpuMesh &) = delete;

    /// Draws it with the colours and the lights that are set.
    void draw() const;

private:
    void uploadFlat(const ScenePrimitive &primitive);

    std::uint32_t m_positions = 0;
    std::uint32_t m_normals = 0; ///< 0: there are none
    std::uint32_t m_indices = 0; ///< 0: none, the vertices stand in order
    unsigned int m_kind;
    int m_count; ///< of indices, else of vertices
};

} // namespace tnhost
