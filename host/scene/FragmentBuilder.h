#pragma once

#include "host/scene/SceneFragment.h"

#include <tiny_gltf.h>

#include <vector>

namespace tnhost {

/// Turns a parsed glTF model into a scene fragment. The parser takes indices and sizes as they
/// stand in the file, so every one of them is checked here before it is used.
class FragmentBuilder {
public:
    explicit FragmentBuilder(tinygltf::Model model);

    /// Once per builder. Throws GlbError.
    SceneFragment build();

private:
    void checkExtensions() const;
    void addMaterial(const tinygltf::Material &material);
    void addMesh(const tinygltf::Mesh &mesh);
    void addPrimitive(SceneMesh &mesh, const tinygltf::Primitive &primitive) const;
    void addNode(const tinygltf::Node &node);
    void checkTree();
    void chooseRoots();
    void dropAxisNode();

    tinygltf::Model m_model;
    SceneFragment m_fragment;
    std::vector<int> m_parents; ///< by node; -1: none
};

} // namespace tnhost
