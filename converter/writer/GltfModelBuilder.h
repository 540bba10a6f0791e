#pragma once

#include "scene/Scene.h"

#include <tiny_gltf.h>

#include <map>
#include <string>

namespace tnconvert {

/// Translates a scene into the model of the glTF library.
class GltfModelBuilder {
public:
    /// @p source and @p sourceId: see GlbWriter.
    tinygltf::Model build(const Scene &scene, const std::string &source,
                          const std::string &sourceId);

private:
    int addNode(const Node &node);
    int addMesh(const Mesh &mesh);
    int addMaterial(const Material &material);
    void addPrimitive(const Primitive &primitive, tinygltf::Mesh &mesh);
    int addAccessor(int view, std::size_t offset, std::size_t count, int componentType, int type);
    void addBuffer();

    tinygltf::Model m_model;
    std::string m_indices; ///< bytes of the views, joined at the end
    std::string m_vertices;
    std::string m_colors;
    std::map<const Mesh *, int> m_meshes;
    std::map<Material, int> m_materials;
};

} // namespace tnconvert
