#include "ConvertedFile.h"

#include "host/scene/GlbReader.h"
#include "scene/Transform.h"

#include <QFile>
#include <QtDebug>
#include <QtEndian>

#include <cmath>

using namespace tnhost;
using nlohmann::json;
using tnconvert::Vec3;

namespace {

Vec3 vec(const QVector3D &v)
{
    return {double(v.x()), double(v.y()), double(v.z())};
}

/// As long as the triangle is large, and at right angles to it.
Vec3 areaVector(const Vec3 *corners)
{
    return (corners[1] - corners[0]).cross(corners[2] - corners[0]) * 0.5;
}

bool isNear(const BoundingBox &a, const BoundingBox &b, float tolerance)
{
    for (const QVector3D &d : {a.min - b.min, a.max - b.max}) {
        if (std::max({std::fabs(d.x()), std::fabs(d.y()), std::fabs(d.z())}) > tolerance)
            return false;
    }
    return true;
}

QString colorText(const std::array<float, 4> &linear)
{
    QStringList parts;
    for (std::size_t i = 0; i < 4; ++i) {
        const double c = double(linear[i]);
        const double srgb = c <= 0.0031308 ? c * 12.92 : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
        parts << QString::number(i < 3 ? srgb : c, 'f', 2);
    }
    return parts.join(' ');
}

} // namespace

ConvertedFile::ConvertedFile(const QString &path)
{
    QString error;
    const auto fragment = GlbReader::read(path, &error);
    QFile file(path);
    if (!fragment || !file.open(QIODevice::ReadOnly)) {
        problems << path + ": " + error;
        return;
    }
    const QByteArray bytes = file.readAll();
    const char *const text = bytes.constData() + 20;
    document = json::parse(text, text + qFromLittleEndian<quint32>(text - 8));
    meshCount = int(fragment->meshes.size());
    for (const int root : fragment->roots)
        collect(*fragment, root, {});
    for (const Instance &instance : instances)
        paths << instance.path;
    check(*fragment);
}

void ConvertedFile::collect(const SceneFragment &fragment, int index, const Instance &above)
{
    const SceneFragment::Node &node = fragment.nodes[std::size_t(index)];
    const Instance instance{above.path.isEmpty() ? node.name : above.path + '/' + node.name,
                            node.mesh, above.toFile * node.transform};
    instances.push_back(instance);
    if (node.mesh >= 0) {
        QStringList &shades = colors[instance.path];
        for (const auto &primitive : fragment.meshes[std::size_t(node.mesh)]->primitives) {
            measure(primitive, instance.toFile);
            shades << colorText(fragment.materials.at(std::size_t(primitive.material)).baseColor);
        }
        shades.removeDuplicates();
        shades.sort();
    }
    for (const int child : node.children)
        collect(fragment, child, instance);
}

void ConvertedFile::measure(const ScenePrimitive &primitive, const QMatrix4x4 &toFile)
{
    for (const QVector3D &position : primitive.positions)
        box.add(toFile.map(position));
    if (primitive.kind == ScenePrimitive::Kind::Lines) {
        segments += int(primitive.indices.size() / 2);
        return;
    }
    // Seen from a point within the plane of a face, nobody would notice that it is missing.
    const Vec3 viewpoint{-7, 23, 11};
    for (std::size_t i = 0; i < primitive.indices.size(); i += 3) {
        Vec3 own[3];
        Vec3 placed[3];
        for (std::size_t c = 0; c < 3; ++c) {
            const QVector3D &position = primitive.positions[primitive.indices[i + c]];
            own[c] = vec(position);
            placed[c] = vec(toFile.map(position));
        }
        ++triangles;
        area += areaVector(placed).length();
        volume += (placed[0] - viewpoint).dot(areaVector(placed)) / 3;
        for (std::size_t c = 0; c < 3 && !primitive.normals.empty(); ++c) {
            const Vec3 normal = vec(primitive.normals[primitive.indices[i + c]]);
            leastNormalAgreement =
                std::min(leastNormalAgreement, areaVector(own).normalized().dot(normal));
        }
    }
}

/// What the host's reader takes, but others need not.
void ConvertedFile::check(const SceneFragment &fragment)
{
    const auto complain = [this](bool isWrong, const char *what) {
        if (isWrong)
            problems << what;
    };
    const json accessors = document.value("accessors", json::array());
    for (const json &accessor : accessors) {
        const json &view = document["bufferViews"][accessor["bufferView"].get<std::size_t>()];
        const int type = accessor["componentType"];
        const int offset = view.value("byteOffset", 0) + accessor.value("byteOffset", 0);
        complain(offset % (type == 5121 ? 1 : type == 5123 ? 2 : 4) != 0, "unaligned data");
    }
    for (std::size_t m = 0; m < fragment.meshes.size(); ++m) {
        const auto &primitives = fragment.meshes[m]->primitives;
        complain(primitives.empty(), "an empty mesh");
        for (std::size_t p = 0; p < primitives.size(); ++p) {
            const json &primitive = document["meshes"][m]["primitives"][p];
            BoundingBox real;
            for (const QVector3D &position : primitives[p].positions)
                real.add(position);
            const json &position = accessors.at(primitive["attributes"]["POSITION"].get<int>());
            BoundingBox stated;
            for (const std::vector<float> corner : {position["min"], position["max"]})
                stated.add(QVector3D(corner[0], corner[1], corner[2]) * 1000);
            complain(!isNear(real, stated, 1e-3F), "wrong bounds");
            for (const json &attribute : primitive["attributes"])
                complain(accessors.at(attribute.get<int>())["count"] != position["count"],
                         "attributes of different length");
            const int indices = accessors.at(primitive["indices"].get<int>())["count"];
            complain(indices == 0 || indices % (primitive.value("mode", 4) == 4 ? 3 : 2) != 0,
                     "an unfinished element");
            for (const QVector3D &normal : primitives[p].normals)
                complain(std::fabs(normal.length() - 1) > 1e-3F, "a normal without unit length");
        }
    }
    for (const SceneFragment::Node &node : fragment.nodes) {
        for (int i = 0; i < 3; ++i) {
            const auto axis = [&](int a) { return QVector3D(node.transform.column(a % 3)); };
            const float cosine =
                QVector3D::dotProduct(axis(i).normalized(), axis(i + 1).normalized());
            complain(std::fabs(cosine) > 1e-4F, "a matrix that is no rotation and scale");
        }
    }
}

bool ConvertedFile::fills(const BoundingBox &expected, float tolerance) const
{
    if (isNear(box, expected, tolerance))
        return true;
    qWarning() << "The box is" << box.min << box.max;
    return false;
}
