#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QtEndian>

/// Pieces of a small glTF binary: one triangle with the corners (0,0,0), (1,0,0), (0,2,3) in
/// metres, below a node that is moved by (1,0,0) metres.
namespace TriangleGlb {

inline QByteArray json()
{
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],)"
           R"("nodes":[{"name":"top","children":[1]},)"
           R"({"name":"part","mesh":0,"translation":[1,0,0]}],)"
           R"("materials":[{"name":"red","pbrMetallicRoughness":)"
           R"({"baseColorFactor":[1,0,0,0.5],"metallicFactor":0.25,"roughnessFactor":0.75}}],)"
           R"("meshes":[{"name":"tri","primitives":)"
           R"([{"attributes":{"POSITION":0},"indices":1,"material":0,"mode":4}]}],)"
           R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"},)"
           R"({"bufferView":1,"componentType":5123,"count":3,"type":"SCALAR"}],)"
           R"("bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":36},)"
           R"({"buffer":0,"byteOffset":36,"byteLength":6}],)"
           R"("buffers":[{"byteLength":42}]})";
}

inline QByteArray data()
{
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 2, 3};
    const quint16 indices[] = {0, 1, 2};
    return QByteArray(reinterpret_cast<const char *>(positions), sizeof positions)
        + QByteArray(reinterpret_cast<const char *>(indices), sizeof indices);
}

inline QByteArray word(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

inline QByteArray chunk(const char *type, QByteArray content, char padding)
{
    while (content.size() % 4 != 0)
        content += padding;
    return word(static_cast<quint32>(content.size())) + QByteArray(type, 4) + content;
}

inline QByteArray glb(const QByteArray &json = TriangleGlb::json(),
                      const QByteArray &data = TriangleGlb::data())
{
    QByteArray chunks = chunk("JSON", json, ' ');
    if (!data.isEmpty())
        chunks += chunk("BIN\0", data, '\0');
    return "glTF" + word(2) + word(static_cast<quint32>(12 + chunks.size())) + chunks;
}

inline bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace TriangleGlb
