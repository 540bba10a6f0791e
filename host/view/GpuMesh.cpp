#include "host/view/GpuMesh.h"

#include "host/scene/SceneFragment.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

namespace tnhost {

namespace {

using Vectors = std::vector<QVector3D>;

GLsizeiptr bytes(const Vectors &vectors)
{
    return static_cast<GLsizeiptr>(vectors.size() * sizeof(QVector3D));
}

/// Leaves the buffer bound.
GLuint makeBuffer(GLenum target, GLsizeiptr size, const void *data)
{
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(target, buffer);
    glBufferData(target, size, data, GL_STATIC_DRAW);
    return buffer;
}

GLuint makeVertices(const Vectors &positions, const Vectors &normals)
{
    const GLuint buffer = makeBuffer(GL_ARRAY_BUFFER, bytes(positions) + bytes(normals), nullptr);
    glBufferSubData(GL_ARRAY_BUFFER, 0, bytes(positions), positions.data());
    glBufferSubData(GL_ARRAY_BUFFER, bytes(positions), bytes(normals), normals.data());
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return buffer;
}

} // namespace

GpuMesh::GpuMesh(const ScenePrimitive &primitive)
    : m_kind(primitive.kind == ScenePrimitive::Kind::Triangles ? GL_TRIANGLES : GL_LINES)
    , m_count(static_cast<int>(primitive.indices.size()))
{
    if (m_kind == GL_TRIANGLES && primitive.normals.empty()) {
        uploadFlat(primitive);
        return;
    }
    m_normals = primitive.normals.empty() ? 0 : bytes(primitive.positions);
    m_vertices = makeVertices(primitive.positions, primitive.normals);
    m_indices = makeBuffer(GL_ELEMENT_ARRAY_BUFFER,
                           static_cast<GLsizeiptr>(primitive.indices.size() * sizeof(GLuint)),
                           primitive.indices.data());
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
}

void GpuMesh::uploadFlat(const ScenePrimitive &primitive)
{
    Vectors positions;
    Vectors normals;
    positions.reserve(primitive.indices.size());
    for (const std::uint32_t index : primitive.indices)
        positions.push_back(primitive.positions[index]);
    normals.reserve(positions.size());
    for (std::size_t i = 0; i + 2 < positions.size(); i += 3)
        normals.insert(normals.end(), 3,
                       QVector3D::normal(positions[i], positions[i + 1], positions[i + 2]));
    m_normals = bytes(positions);
    m_vertices = makeVertices(positions, normals);
}

GpuMesh::~GpuMesh()
{
    glDeleteBuffers(1, &m_vertices);
    glDeleteBuffers(1, &m_indices);
}

void GpuMesh::draw() const
{
    glBindBuffer(GL_ARRAY_BUFFER, m_vertices);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    if (m_normals > 0) {
        glEnableClientState(GL_NORMAL_ARRAY);
        glNormalPointer(GL_FLOAT, 0, reinterpret_cast<const void *>(m_normals));
    }
    if (m_indices) {
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_indices);
        glDrawElements(m_kind, m_count, GL_UNSIGNED_INT, nullptr);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    } else {
        glDrawArrays(m_kind, 0, m_count);
    }
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

} // namespace tnhost
