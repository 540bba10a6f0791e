#include "host/view/GpuMesh.h"

#include "host/scene/SceneFragment.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

namespace tnhost {

namespace {

template <typename Value>
GLuint makeBuffer(GLenum target, const std::vector<Value> &values)
{
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(target, buffer);
    glBufferData(target, static_cast<GLsizeiptr>(values.size() * sizeof(Value)), values.data(),
                 GL_STATIC_DRAW);
    glBindBuffer(target, 0);
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
    m_positions = makeBuffer(GL_ARRAY_BUFFER, primitive.positions);
    if (!primitive.normals.empty())
        m_normals = makeBuffer(GL_ARRAY_BUFFER, primitive.normals);
    m_indices = makeBuffer(GL_ELEMENT_ARRAY_BUFFER, primitive.indices);
}

GpuMesh::GpuMesh(const std::vector<QVector3D> &lines)
    : m_positions(makeBuffer(GL_ARRAY_BUFFER, lines))
    , m_kind(GL_LINES)
    , m_count(static_cast<int>(lines.size()))
{
}

void GpuMesh::uploadFlat(const ScenePrimitive &primitive)
{
    std::vector<QVector3D> positions;
    std::vector<QVector3D> normals;
    positions.reserve(primitive.indices.size());
    for (const std::uint32_t index : primitive.indices)
        positions.push_back(primitive.positions[index]);
    normals.reserve(positions.size());
    for (std::size_t i = 0; i + 2 < positions.size(); i += 3)
        normals.insert(normals.end(), 3,
                       QVector3D::normal(positions[i], positions[i + 1], positions[i + 2]));
    m_positions = makeBuffer(GL_ARRAY_BUFFER, positions);
    m_normals = makeBuffer(GL_ARRAY_BUFFER, normals);
}

GpuMesh::~GpuMesh()
{
    glDeleteBuffers(1, &m_positions);
    glDeleteBuffers(1, &m_normals);
    glDeleteBuffers(1, &m_indices);
}

void GpuMesh::draw() const
{
    glBindBuffer(GL_ARRAY_BUFFER, m_positions);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    if (m_normals) {
        glEnableClientState(GL_NORMAL_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, m_normals);
        glNormalPointer(GL_FLOAT, 0, nullptr);
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
