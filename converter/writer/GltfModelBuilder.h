#pragma once

#include "scene/Scene.h"
#include "writer/GlbBuffer.h"

#include <tiny_gltf.h>

#include <deque>
#include <map>
#include <string>

namespace tnconvert {

/// Translates a scene into the model of the glTF library, without the buffer.
class GltfModelBuilder {
public:
    /// @p source and @p sourceId: see GlbWriter. @p scene must outlive the object.
    tinygltf::Model build(const Scene &scene, const std::string &source,
                          const std::string &sourceId);

    /// What the buffer of the model is to hold.
    const GlbBuffer &buffer() const { return m_buffer; }

private:
    int addNode(const Node &node);
    int addMesh(const Mesh &mesh);
    int addMaterial(const Material &material);
    void addPrimitive(const Primitive &stated, tinygltf::Mesh &mesh);
    int addAccessor(int view, std::uint64_t offset, std::size_t count, int componentType, int type);
    void addViews();

    tinygltf::Model m_model;
    GlbBuffer m_buffer;
    std::deque<Primitive> m_cleaned; ///< those of the scene that could not be taken as they are
    std::map<const Mesh *, int> m_meshes;
    std::map<Material, int> m_materials;
};

} // namespace tnconvert
