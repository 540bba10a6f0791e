#include "GlbFile.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>

using nlohmann::json;
using tnconvert::Transform;
using tnconvert::Vec3;

namespace {

int componentSize(int type)
{
    return type == 5121 ? 1 : type == 5123 ? 2 : 4;
}

int componentCount(const std::string &type)
{
    return type == "SCALAR" ? 1 : type == "VEC3" ? 3 : 4;
}

Transform localTransform(const json &node)
{
    Transform result;
    if (node.contains("matrix")) {
        for (int i = 0; i < 16; ++i)
            result.at(i % 4, i / 4) = node["matrix"][std::size_t(i)];
    } else if (node.contains("translation")) {
        for (int i = 0; i < 3; ++i)
            result.at(i, 3) = node["translation"][std::size_t(i)];
    }
    for (int i = 0; i < 3; ++i)
        result.at(i, 3) *= 1000;
    return result;
}

double srgb(double linear)
{
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

/// As long as the triangle is large, and at right angles to it.
Vec3 areaVector(const std::array<Vec3, 3> &corners)
{
    return (corners[1] - corners[0]).cross(corners[2] - corners[0]) * 0.5;
}

} // namespace

void GlbFile::Box::include(const Vec3 &point)
{
    const double coordinates[] = {point.x, point.y, point.z};
    for (std::size_t i = 0; i < 3; ++i) {
        least[i] = std::min(least[i], coordinates[i]);
        most[i] = std::max(most[i], coordinates[i]);
    }
}

bool GlbFile::Box::isNear(const Box &other, double tolerance) const
{
    const auto isClose = [tolerance](double a, double b) { return std::fabs(a - b) <= tolerance; };
    return std::equal(least.begin(), least.end(), other.least.begin(), isClose)
        && std::equal(most.begin(), most.end(), other.most.begin(), isClose);
}

QByteArray GlbFile::Box::text() const
{
    return QByteArray::fromStdString(json{least, most}.dump());
}

GlbFile::GlbFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_containerProblems << "cannot be opened: " + path;
        return;
    }
    const QByteArray bytes = file.readAll();
    const auto word = [&bytes](int at) {
        return at + 4 <= bytes.size() ? qFromLittleEndian<quint32>(bytes.constData() + at) : 0U;
    };
    if (!bytes.startsWith("glTF") || word(4) != 2 || word(8) != quint32(bytes.size()))
        m_containerProblems << "wrong header";
    const int jsonLength = int(word(12));
    m_json =
        json::parse(bytes.constData() + 20, bytes.constData() + 20 + jsonLength, nullptr, false);
    m_binary = bytes.mid(28 + jsonLength);
    if (m_json.is_discarded() || jsonLength % 4 != 0 || m_binary.size() % 4 != 0
        || int(word(20 + jsonLength)) != m_binary.size()) {
        m_containerProblems << "wrong chunks";
        return;
    }
    for (const json &child : m_json["nodes"][0].value("children", json::array()))
        collect(child, Transform(), QString());
}

void GlbFile::collect(int index, const Transform &above, const QString &path)
{
    const json &node = m_json["nodes"][std::size_t(index)];
    const QString name = QString::fromStdString(node.value("name", ""));
    const Instance instance{path.isEmpty() ? name : path + '/' + name, node.value("mesh", -1),
                            above * localTransform(node)};
    m_instances.push_back(instance);
    for (const json &child : node.value("children", json::array()))
        collect(child, instance.toFile, instance.path);
}

QStringList GlbFile::paths() const
{
    QStringList result;
    for (const Instance &instance : m_instances)
        result << instance.path;
    return result;
}

std::vector<double> GlbFile::accessorValues(int index) const
{
    if (index < 0)
        return {};
    const json &accessor = m_json["accessors"].at(std::size_t(index));
    const json &view = m_json["bufferViews"].at(accessor["bufferView"].get<std::size_t>());
    const int type = accessor["componentType"];
    const int width = componentCount(accessor["type"]);
    const int stride = view.value("byteStride", componentSize(type) * width);
    const int start = view.value("byteOffset", 0) + accessor.value("byteOffset", 0);
    std::vector<double> values;
    for (int i = 0; i < accessor["count"].get<int>() * width; ++i) {
        const int at = start + i / width * stride + i % width * componentSize(type);
        if (at + componentSize(type) > m_binary.size())
            return {};
        const char *bytes = m_binary.constData() + at;
        if (type == 5126)
            values.push_back(double(qFromLittleEndian<float>(bytes)));
        else if (type == 5125)
            values.push_back(qFromLittleEndian<quint32>(bytes));
        else
            values.push_back(type == 5123 ? qFromLittleEndian<quint16>(bytes) : quint8(*bytes));
    }
    return values;
}

std::vector<Vec3> GlbFile::vectors(int accessor) const
{
    const std::vector<double> values = accessorValues(accessor);
    std::vector<Vec3> result;
    for (std::size_t i = 0; i + 2 < values.size(); i += 3)
        result.push_back({values[i], values[i + 1], values[i + 2]});
    return result;
}

void GlbFile::checkAccessor(int index, QStringList &problems) const
{
    const json &accessor = m_json["accessors"][std::size_t(index)];
    const json &view = m_json["bufferViews"].at(accessor["bufferView"].get<std::size_t>());
    const QString name = QString("accessor %1 ").arg(index);
    const std::vector<double> values = accessorValues(index);
    const int width = componentCount(accessor["type"]);
    if (values.empty() || int(values.size()) != accessor["count"].get<int>() * width)
        problems << name + "is empty or exceeds its buffer";
    if ((view.value("byteOffset", 0) + accessor.value("byteOffset", 0))
            % componentSize(accessor["componentType"])
        != 0)
        problems << name + "is not aligned";
    if (!std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); }))
        problems << name + "has values that are no numbers";
}

void GlbFile::checkPrimitive(const json &primitive, QStringList &problems) const
{
    const json &attributes = primitive["attributes"];
    const json &accessors = m_json["accessors"];
    const int position = attributes["POSITION"];
    const json &accessor = accessors[std::size_t(position)];
    const int count = accessor["count"];
    Box box;
    for (const Vec3 &point : vectors(position))
        box.include(point);
    if (!box.isNear({accessor.value("min", box.most), accessor.value("max", box.least)}, 1e-6))
        problems << "wrong bounds";
    for (const auto &attribute : attributes.items()) {
        if (accessors.at(attribute.value().get<std::size_t>())["count"] != count)
            problems << "attributes of different length";
    }
    const std::vector<double> indices = accessorValues(primitive["indices"]);
    if (std::any_of(indices.begin(), indices.end(), [count](double i) { return i >= count; }))
        problems << "an index without a vertex";
    if (indices.size() % (primitive.value("mode", 4) == 4 ? 3 : 2) != 0)
        problems << "an unfinished element";
    if (!attributes.contains("NORMAL"))
        return;
    for (const Vec3 &normal : vectors(attributes["NORMAL"])) {
        if (std::fabs(normal.length() - 1) > 1e-3)
            problems << "a normal without unit length";
    }
}

QStringList GlbFile::problems() const
{
    QStringList problems = m_containerProblems;
    if (!problems.isEmpty())
        return problems;
    for (int i = 0; i < int(m_json.value("accessors", json::array()).size()); ++i)
        checkAccessor(i, problems);
    for (const json &mesh : m_json.value("meshes", json::array())) {
        if (mesh["primitives"].empty())
            problems << "an empty mesh";
        for (const json &primitive : mesh["primitives"])
            checkPrimitive(primitive, problems);
    }
    std::vector<int> parents(m_json["nodes"].size());
    for (const json &node : m_json["nodes"]) {
        for (const json &child : node.value("children", json::array()))
            ++parents.at(child.get<std::size_t>());
        if (node.contains("children") && node["children"].empty())
            problems << "an empty list of children";
        if (!localTransform(node).isDecomposable())
            problems << "a matrix that is no translation, rotation and scale";
    }
    if (parents[0] != 0
        || std::any_of(parents.begin() + 1, parents.end(), [](int n) { return n != 1; }))
        problems << "nodes that are no tree";
    if (m_json["buffers"][0]["byteLength"].get<int>() > m_binary.size())
        problems << "the buffer is too short";
    return problems;
}

void GlbFile::visitPrimitives(
    const std::function<void(const Instance &, const json &)> &visit) const
{
    for (const Instance &instance : m_instances) {
        if (instance.mesh < 0)
            continue;
        for (const json &primitive : m_json["meshes"][std::size_t(instance.mesh)]["primitives"])
            visit(instance, primitive);
    }
}

int GlbFile::elements(int mode) const
{
    int count = 0;
    visitPrimitives([&](const Instance &, const json &primitive) {
        if (primitive.value("mode", 4) == mode)
            count += int(accessorValues(primitive["indices"]).size()) / (mode == 4 ? 3 : 2);
    });
    return count;
}

GlbFile::Box GlbFile::box() const
{
    Box box;
    visitPrimitives([&](const Instance &instance, const json &primitive) {
        for (const Vec3 &position : vectors(primitive["attributes"]["POSITION"]))
            box.include(instance.toFile.point(position * 1000));
    });
    return box;
}

void GlbFile::visitTriangles(const std::function<void(const Triangle &)> &visit) const
{
    visitPrimitives([&](const Instance &instance, const json &primitive) {
        if (primitive.value("mode", 4) != 4)
            return;
        const json &attributes = primitive["attributes"];
        const std::vector<Vec3> positions = vectors(attributes["POSITION"]);
        const std::vector<Vec3> normals = vectors(attributes.value("NORMAL", -1));
        const std::vector<double> indices = accessorValues(primitive["indices"]);
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
            Triangle triangle;
            for (std::size_t c = 0; c < 3; ++c) {
                const auto index = std::size_t(indices[i + c]);
                triangle.local[c] = positions[index];
                triangle.corners[c] = instance.toFile.point(positions[index] * 1000);
                if (!normals.empty())
                    triangle.normals.push_back(normals[index]);
            }
            visit(triangle);
        }
    });
}

double GlbFile::area() const
{
    double sum = 0;
    visitTriangles([&sum](const Triangle &t) { sum += areaVector(t.corners).length(); });
    return sum;
}

double GlbFile::volume() const
{
    // Seen from a point within the plane of a face, nobody would notice that it is missing.
    const Vec3 viewpoint{-7, 23, 11};
    double sum = 0;
    visitTriangles([&](const Triangle &t) {
        sum += (t.corners[0] - viewpoint).dot(areaVector(t.corners)) / 3;
    });
    return sum;
}

double GlbFile::leastNormalAgreement() const
{
    double least = 1;
    visitTriangles([&least](const Triangle &t) {
        for (const Vec3 &normal : t.normals)
            least = std::min(least, areaVector(t.local).normalized().dot(normal));
    });
    return least;
}

QStringList GlbFile::colors(const QString &path) const
{
    QStringList result;
    visitPrimitives([&](const Instance &instance, const json &primitive) {
        if (instance.path != path)
            return;
        const json &material = m_json["materials"].at(primitive["material"].get<std::size_t>());
        // A factor of one is the format's default and may be left out.
        const json factor =
            material["pbrMetallicRoughness"].value("baseColorFactor", json::array({1, 1, 1, 1}));
        QStringList parts;
        for (std::size_t i = 0; i < 4; ++i)
            parts << QString::number(i < 3 ? srgb(factor[i]) : double(factor[i]), 'f', 2);
        result << parts.join(' ');
    });
    result.removeDuplicates();
    result.sort();
    return result;
}
