#include "host/scene/GlbReader.h"

#include <QtTest/QtTest>

using namespace tnhost;

namespace {

/// One triangle with the corners (0,0,0), (1,0,0), (0,2,3) in metres, below a node that is moved by
/// (1,0,0) metres.
const QByteArray triangle =
    R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],)"
    R"("nodes":[{"name":"top","children":[1]},{"name":"part","mesh":0,"translation":[1,0,0]}],)"
    R"("materials":[{"name":"red","pbrMetallicRoughness":)"
    R"({"baseColorFactor":[1,0,0,0.5],"metallicFactor":0.25,"roughnessFactor":0.75}}],)"
    R"("meshes":[{"name":"tri","primitives":)"
    R"([{"attributes":{"POSITION":0},"indices":1,"material":0,"mode":4}]}],)"
    R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"},)"
    R"({"bufferView":1,"componentType":5123,"count":3,"type":"SCALAR"}],)"
    R"("bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":36},)"
    R"({"buffer":0,"byteOffset":36,"byteLength":6}],"buffers":[{"byteLength":42}]})";

QByteArray triangleData()
{
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 2, 3};
    const quint16 indices[] = {0, 1, 2};
    return QByteArray(reinterpret_cast<const char *>(positions), sizeof positions)
        + QByteArray(reinterpret_cast<const char *>(indices), sizeof indices);
}

QByteArray word(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray chunk(const QByteArray &type, QByteArray content)
{
    content.append((4 - content.size() % 4) % 4, ' ');
    return word(quint32(content.size())) + type + content;
}

QByteArray glb(const QByteArray &json = triangle, const QByteArray &data = triangleData())
{
    QByteArray chunks = chunk("JSON", json);
    if (!data.isEmpty())
        chunks += chunk({"BIN\0", 4}, data);
    return "glTF" + word(2) + word(quint32(12 + chunks.size())) + chunks;
}

QByteArray with(const QByteArray &from, const QByteArray &to)
{
    if (!triangle.contains(from))
        qFatal("%s is to be replaced, but not there", from.constData());
    return QByteArray(triangle).replace(from, to);
}

} // namespace

class tst_GlbReader : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<const SceneFragment> read(const QByteArray &bytes)
    {
        m_error.clear();
        QFile file(m_dir.filePath(QString::fromUtf8("täst.glb")));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("%s cannot be written", qUtf8Printable(file.fileName()));
        file.close();
        return GlbReader::read(file.fileName(), &m_error);
    }

    QTemporaryDir m_dir;
    QString m_error;

private slots:
    void readsNamesAndMaterials()
    {
        const auto fragment = read(glb());
        QVERIFY2(fragment, qPrintable(m_error));
        QCOMPARE(fragment->nodes[1].name, QString("part"));
        QCOMPARE(fragment->meshes.at(0)->triangles, std::size_t(1));
        QCOMPARE(fragment->meshes[0]->box.max, QVector3D(1000, 2000, 3000));
        const SceneMaterial expected{"red", {1.0F, 0.0F, 0.0F, 0.5F}, 0.25F, 0.75F};
        QVERIFY(fragment->materials.at(0) == expected);
    }

    void takesBackTheTurnOfTheAxes()
    {
        const QByteArray turned = R"("rotation":[-0.70710678,0,0,0.70710678],)";
        const QByteArray matrix = R"("matrix":[1,0,0,0, 0,0,-1,0, 0,1,0,0, 0,0,0,1],)";
        const QByteArray zUp = R"("extras":{"sourceAxes":"Z-up"},)";
        const struct {
            QByteArray top;
            int root;
            QVector3D tip; // where the triangle's last corner (0,2,3) comes to be
        } rows[] = {
            {turned + zUp, 1, {1000, 2000, 3000}},
            {matrix + zUp, 1, {1000, 2000, 3000}},
            {turned + R"("translation":[0,0,1],)" + zUp, 0, {1000, 2000, 4000}}, // the node stays
            {turned, 0, {1000, 3000, -2000}}, // somebody else's
        };
        for (const auto &[top, root, tip] : rows) {
            const auto fragment = read(glb(with(R"("name":"top",)", top)));
            QVERIFY2(fragment, qPrintable(m_error));
            QCOMPARE(fragment->roots, std::vector<int>{root});
            QMatrix4x4 world = fragment->nodes[1].transform;
            if (root == 0)
                world = fragment->nodes[0].transform * world;
            const QVector3D corner = world.map(fragment->meshes[0]->primitives[0].positions[2]);
            QVERIFY2((corner - tip).length() < 0.001F, top);
        }
    }

    void separatesStripsAndFans()
    {
        const std::vector<std::uint32_t> expected[] = {
            // of five corners, from mode 1 on; what is too much is left out
            {0, 1, 2, 3}, {0, 1, 1, 2, 2, 3, 3, 4, 4, 0}, {0, 1, 1, 2, 2, 3, 3, 4},
            {0, 1, 2},    {0, 1, 2, 1, 3, 2, 2, 3, 4},    {0, 1, 2, 0, 2, 3, 0, 3, 4},
        };
        for (int mode = 1; mode <= 6; ++mode) {
            QByteArray json = with(R"("indices":1,)", "");
            json.replace(R"("mode":4)", "\"mode\":" + QByteArray::number(mode));
            json.replace(R"("count":3,"type":"VEC3")", R"("count":5,"type":"VEC3")");
            json.replace("36", "60").replace("\"byteLength\":42", "\"byteLength\":66");
            const auto fragment = read(glb(json, QByteArray(66, '\0')));
            QVERIFY2(fragment, qPrintable(m_error));
            const std::vector<std::uint32_t> &indices = expected[mode - 1];
            QCOMPARE(fragment->meshes.at(0)->primitives.at(0).indices, indices);
            QCOMPARE(fragment->meshes[0]->triangles, mode < 4 ? 0 : indices.size() / 3);
        }
    }

    void acceptsUnusualFiles()
    {
        for (const QByteArray &json :
             {with(R"("scene":0,"scenes":[{"nodes":[0]}],)", ""), with("\"mode\":4", "\"mode\":0"),
              with(R"("materials")", R"("images":[{"uri":"picture.png"}],"materials")"),
              with(R"("scene":0)", R"("extensionsRequired":["KHR_materials_unlit"],"scene":0)"),
              with("top", "\\\"" + QByteArray(900, '['))}) {
            const auto fragment = read(glb(json));
            QVERIFY2(fragment, qPrintable(m_error + json));
            QCOMPARE(fragment->roots, std::vector<int>{0});
        }
        const auto empty = read(glb(R"({"asset":{"version":"2.0"}})"));
        QVERIFY(empty && empty->roots.empty());
    }

    void refusesDamage()
    {
        const QByteArray whole = glb();
        const auto check = [this](const QByteArray &bytes, const QString &message) {
            QVERIFY2(!read(bytes), qPrintable(message));
            QVERIFY2(m_error.contains(message), qPrintable(m_error));
        };
        const auto patch = [&](int offset, const QByteArray &bytes, const char *message) {
            check(QByteArray(whole).replace(offset, bytes.size(), bytes), message);
        };
        check({}, "not a glTF binary");
        check("glTF" + word(2) + word(12), "no content");
        check(whole.chopped(1), "ends after");
        check(glb(triangle, {}), "no valid glTF");
        patch(4, word(1), "version 1");
        patch(8, word(0xFFFFFFFFU), "ends after");
        patch(12, word(0xFFFFFFF0U), "beyond its end");
        patch(16, "BIN", "not JSON");
        // The chunk's end lies exactly as far behind the file's as its header is long.
        patch(whole.size() - 44 - 8, word(52), "beyond its end");

        const auto change = [&](const QByteArray &from, const QByteArray &to, const char *message) {
            check(glb(with(from, to)), message);
        };
        change("{\"asset\"", "{\"asset", "no valid glTF");
        change("\"POSITION\":0", "\"POSITION\":7", "does not have");
        change("\"POSITION\":0", "\"POSITION\":-3", "does not have");
        change("\"indices\":1", "\"indices\":9", "no valid glTF");
        const QByteArray positions = R"("count":3,"type":"VEC3")";
        change(positions, R"("count":4,"type":"VEC3")", "beyond");
        change(positions, R"("count":18446744073709551615,"type":"VEC3")", "beyond");
        change(positions, R"("byteOffset":18446744073709551612,)" + positions, "beyond");
        change("\"byteOffset\":36", "\"byteOffset\":18446744073709551600", "beyond");
        change("\"byteLength\":36", "\"byteLength\":36,\"byteStride\":4", "beyond");
        change("\"bufferView\":0,", "\"name\":\"\",", "no data");
        change("\"buffer\":0,\"byteOffset\":0", "\"buffer\":4,\"byteOffset\":0", "no buffer");
        change("\"byteLength\":42", "\"byteLength\":0", "no valid glTF");
        change("\"byteLength\":42", "\"byteLength\":42,\"uri\":\"/etc/passwd\"", "outside");
        change(positions, R"("count":2,"type":"VEC3")", "larger than its vertex count");
        change("\"componentType\":5123", "\"componentType\":5122", "unsigned integers");
        change("\"type\":\"VEC3\"", "\"type\":\"VEC2\"", "type float");
        change(positions,
               positions + R"(,"sparse":{"count":1,"indices":{"bufferView":1,"byteOffset":0,)"
                   + R"("componentType":5123},"values":{"bufferView":0,"byteOffset":0}})",
               "Sparse");
        change("\"mesh\":0", "\"mesh\":3", "mesh that the file");
        change("\"material\":0", "\"material\":3", "material that the file");
        change("\"children\":[1]", "\"children\":[17]", "child that the file");
        change("\"children\":[1]", "\"children\":[0]", "ring");
        change("\"children\":[1]", "\"children\":[1,1]", "more than one parent");
        change("\"nodes\":[0]", "\"nodes\":[1]", "no root");
        change("\"nodes\":[0]", "\"nodes\":[0,0]", "twice");
        change("\"nodes\":[0]", "\"nodes\":[-1]", "no root");
        change("[1,0,0]}", "[1e300,0,0]}", "none of 3D space");
        change("\"translation\":[1,0,0]", "\"matrix\":[1,0,0,1,0,1,0,0,0,0,1,0,0,0,0,1]",
               "none of 3D space");
        change("\"translation\":[1,0,0]", "\"matrix\":[1,0,0]", "incomplete");
        const QByteArray compression = "KHR_draco_mesh_compression";
        change("\"scene\":0", "\"extensionsRequired\":[\"" + compression + "\"]", compression);
        change("\"scene\":0", "\"extras\":" + QByteArray(500000, '[') + QByteArray(500000, ']'),
               "nested");
        QByteArray chain;
        for (int i = 1; i < 100000; ++i)
            chain += "{\"children\":[" + QByteArray::number(i) + "]},";
        check(glb(R"({"asset":{"version":"2.0"},"nodes":[)" + chain + "{}]}"), "nested");
    }

    void survivesRandomDamage()
    {
        // Whatever comes out must be consistent, since the scene trusts it. The sanitizers watch.
        QRandomGenerator random(20240607);
        int readable = 0;
        for (int round = 0; round < 2000; ++round) {
            QByteArray bytes = glb();
            for (int i = random.bounded(1, 4); i > 0; --i)
                bytes[random.bounded(bytes.size())] = static_cast<char>(random.bounded(256));
            const auto fragment = read(bytes);
            QCOMPARE(fragment != nullptr, m_error.isEmpty());
            if (!fragment)
                continue;
            ++readable;
            for (const auto &mesh : fragment->meshes) {
                for (const ScenePrimitive &primitive : mesh->primitives) {
                    for (const std::uint32_t index : primitive.indices)
                        QVERIFY(index < primitive.positions.size());
                    QVERIFY(primitive.material < static_cast<int>(fragment->materials.size()));
                }
            }
        }
        // Damage to names and numbers leaves the file readable, so both kinds must have come up.
        QVERIFY(readable > 0 && readable < 2000);
    }
};

QTEST_GUILESS_MAIN(tst_GlbReader)
#include "tst_GlbReader.moc"
