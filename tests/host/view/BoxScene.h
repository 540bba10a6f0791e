#pragma once

#include "host/scene/Scene.h"

#include <utility>

namespace tnhost {

/// A file with a group of cubes of the given places and edges of 10 mm, all one mesh of two
/// primitives: the lower half is red, the upper one green, each with its four sides and its end.
inline std::shared_ptr<SceneFragment> cubes(const std::vector<QVector3D> &places)
{
    auto mesh = std::make_shared<SceneMesh>();
    for (int half = 0; half < 2; ++half) {
        ScenePrimitive primitive;
        const auto z = static_cast<float>(5 * half);
        for (const float height : {z, z + 5})
            for (const auto &[x, y] : {std::pair(0, 0), {10, 0}, {10, 10}, {0, 10}})
                primitive.positions.emplace_back(x, y, height);
        for (const std::uint32_t i : {0U, 1U, 2U, 3U}) {
            const std::uint32_t next = (i + 1) % 4;
            primitive.indices.insert(primitive.indices.end(),
                                     {i, next, next + 4, i, next + 4, i + 4});
        }
        if (half == 0)
            primitive.indices.insert(primitive.indices.end(), {0, 2, 1, 0, 3, 2});
        else
            primitive.indices.insert(primitive.indices.end(), {4, 5, 6, 4, 6, 7});
        primitive.material = half;
        for (const QVector3D &position : primitive.positions)
            mesh->box.add(position);
        mesh->triangles += primitive.indices.size() / 3;
        mesh->primitives.push_back(std::move(primitive));
    }
    auto fragment = std::make_shared<SceneFragment>();
    fragment->materials = {{"red", {1, 0, 0, 1}}, {"green", {0, 1, 0, 1}}};
    fragment->meshes.push_back(mesh);
    fragment->nodes.resize(places.size() + 1);
    for (std::size_t i = 0; i < places.size(); ++i) {
        fragment->nodes[i + 1].mesh = 0;
        fragment->nodes[i + 1].transform.translate(places[i]);
        fragment->nodes[0].children.push_back(static_cast<int>(i) + 1);
    }
    fragment->roots = {0};
    return fragment;
}

} // namespace tnhost
