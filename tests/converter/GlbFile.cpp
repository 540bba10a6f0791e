#include "GlbFile.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>

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

} // namespace

bool GlbFile::Box::isNear(const Box &other, double tolerance) const
{
    for (std::size_t i = 0; i < 3; ++i) {
        if (!(std::fabs(least[i] - other.least[i]) <= tolerance)
            || !(std::fabs(most[i] - other.most[i]) <= tolerance))
            return false;
    }
    return true;
}

QByteArray GlbFile::Box::text() const
{
    QByteArray result;
    for (const auto *corner : {&least, &most}) {
        for (const double c : *corner)
            result += QByteArray::number(c) + ' ';
    }
    return result;
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
    const Instance instance{path.isEmpty() ? name : path + '/' + name, index,
                            node.value("mesh", -1), above * localTransform(node)};
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

GlbFile::Instance GlbFile::instance(const QString &path) const
{
    for (const Instance &candidate : m_instances) {
        if (candidate.path == path)
            return candidate;
    }
    return {};
}

std::vector<double> GlbFile::accessorValues(int index) const
{
    const json &accessor = m_json["accessors"].at(std::size_t(index));
    const json &view = m_json["bufferViews"].at(accessor["bufferView"].get<std::size_t>());
    const int type = accessor["componentType"];
    const int width = componentCount(accessor["type"]);
    const int stride = view.value("byteStride", componentSize(type) * width);
    const int start = view.value("byteOffset", 0) + accessor.value("byteOffset", 0);
    std::vector<double> values;
    for (int i = 0; i < accessor["count"].get<int>(); ++i) {
        for (int c = 0; c < width; ++c) {
            const int at = start + i * stride + c * componentSize(type);
            if (at + componentSize(type) > m_binary.size())
                return {};
            const char *bytes = m_binary.constData() + at;
            float number = 0;
            std::memcpy(&number, bytes, std::size_t(componentSize(type)));
            if (type == 5126)
                values.push_back(double(number));
            else if (type == 5125)
                values.push_back(qFromLittleEndian<quint32>(bytes));
            else
                values.push_back(type == 5123 ? qFromLittleEndian<quint16>(bytes) : quint8(*bytes));
        }
    }
    return values;
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
    for (int c = 0; accessor.contains("min") && c < width; ++c) {
        double least = 1e300;
        double most = -1e300;
        for (std::size_t i = std::size_t(c); i < values.size(); i += std::size_t(width)) {
            least = std::min(least, values[i]);
            most = std::max(most, values[i]);
        }
        if (float(least) != accessor["min"][std::size_t(c)].get<float>()
            || float(most) != accessor["max"][std::size_t(c)].get<float>())
            problems << name + "states wrong bounds";
    }
}

void GlbFile::checkPrimitive(const json &primitive, QStringList &problems) const
{
    const json &attributes = primitive["attributes"];
    const json &accessors = m_json["accessors"];
    const int position = attributes["POSITION"];
    const int count = accessors[std::size_t(position)]["count"];
    if (!accessors[std::size_t(position)].contains("min"))
        problems << "positions without bounds";
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
    const std::vector<double> normals = accessorValues(attributes["NORMAL"]);
    for (std::size_t i = 0; i + 2 < normals.size(); i += 3) {
        if (std::fabs(Vec3{normals[i], normals[i + 1], normals[i + 2]}.length() - 1) > 1e-3)
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

int GlbFile::elements(int mode) const
{
    int count = 0;
    for (const Instance &instance : m_instances) {
        if (instance.mesh < 0)
            continue;
        for (const json &primitive : m_json["meshes"][std::size_t(instance.mesh)]["primitives"]) {
            if (primitive.value("mode", 4) == mode)
                count += int(accessorValues(primitive["indices"]).size()) / (mode == 4 ? 3 : 2);
        }
    }
    return count;
}

GlbFile::Box GlbFile::box() const
{
    Box box;
    for (const Instance &instance : m_instances) {
        if (instance.mesh < 0)
            continue;
        for (const json &primitive : m_json["meshes"][std::size_t(instance.mesh)]["primitives"]) {
            const std::vector<double> values = accessorValues(primitive["attributes"]["POSITION"]);
            for (std::size_t i = 0; i + 2 < values.size(); i += 3) {
                const Vec3 p =
                    instance.toFile.point(Vec3{values[i], values[i + 1], values[i + 2]} * 1000);
                const double coordinates[] = {p.x, p.y, p.z};
                for (std::size_t c = 0; c < 3; ++c) {
                    box.least[c] = std::min(box.least[c], coordinates[c]);
                    box.most[c] = std::max(box.most[c], coordinates[c]);
                }
            }
        }
    }
    return box;
}

std::vector<GlbFile::Triangle> GlbFile::allTriangles() const
{
    std::vector<Triangle> result;
    for (const Instance &instance : m_instances) {
        if (instance.mesh < 0)
            continue;
        for (const json &primitive : m_json["meshes"][std::size_t(instance.mesh)]["primitives"]) {
            if (primitive.value("mode", 4) != 4)
                continue;
            const std::vector<double> values = accessorValues(primitive["attributes"]["POSITION"]);
            const std::vector<double> indices = accessorValues(primitive["indices"]);
            for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
                Triangle triangle;
                for (std::size_t c = 0; c < 3; ++c) {
                    const std::size_t start = std::size_t(indices[i + c]) * 3;
                    triangle[c] = instance.toFile.point(
                        Vec3{values[start], values[start + 1], values[start + 2]} * 1000);
                }
                result.push_back(triangle);
            }
        }
    }
    return result;
}

double GlbFile::area() const
{
    double sum = 0;
    for (const Triangle &t : allTriangles())
        sum += (t[1] - t[0]).cross(t[2] - t[0]).length() / 2;
    return sum;
}

double GlbFile::volume() const
{
    double sum = 0;
    for (const Triangle &t : allTriangles())
        sum += t[0].dot(t[1].cross(t[2])) / 6;
    return sum;
}

QStringList GlbFile::colors(const QString &path) const
{
    QStringList result;
    const Instance found = instance(path);
    if (found.mesh < 0)
        return result;
    for (const json &primitive : m_json["meshes"][std::size_t(found.mesh)]["primitives"]) {
        const json &material = m_json["materials"].at(primitive["material"].get<std::size_t>());
        // A factor of one is the format's default and may be left out.
        const json factor =
            material["pbrMetallicRoughness"].value("baseColorFactor", json::array({1, 1, 1, 1}));
        QStringList parts;
        for (std::size_t i = 0; i < 4; ++i) {
            const double value = factor[i];
            parts << QString::number(i < 3 ? srgb(value) : value, 'f', 2);
        }
        result << parts.join(' ');
    }
    result.sort();
    return result;
}

double GlbFile::leastNormalAgreement() const
{
    double least = 1;
    for (const json &mesh : m_json["meshes"]) {
        for (const json &primitive : mesh["primitives"]) {
            if (!primitive["attributes"].contains("NORMAL"))
                continue;
            const std::vector<double> p = accessorValues(primitive["attributes"]["POSITION"]);
            const std::vector<double> n = accessorValues(primitive["attributes"]["NORMAL"]);
            const std::vector<double> indices = accessorValues(primitive["indices"]);
            const auto at = [](const std::vector<double> &values, double index) {
                const std::size_t i = std::size_t(index) * 3;
                return Vec3{values[i], values[i + 1], values[i + 2]};
            };
            for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
                const Vec3 a = at(p, indices[i]);
                const Vec3 facet =
                    (at(p, indices[i + 1]) - a).cross(at(p, indices[i + 2]) - a).normalized();
                for (std::size_t c = 0; c < 3; ++c)
                    least = std::min(least, facet.dot(at(n, indices[i + c])));
            }
        }
    }
    return least;
}
