#include "host/scene/GlbReader.h"
#include "host/scene/TriangleGlb.h"

#include <QtCore/QRandomGenerator>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <cmath>

class TestGlbReader : public QObject {
    Q_OBJECT

private slots:
    void readsGeometryInMillimetres();
    void takesBackTheTurnOfTheAxes_data();
    void takesBackTheTurnOfTheAxes();
    void separatesStripsAndFans_data();
    void separatesStripsAndFans();
    void acceptsUnusualFiles_data();
    void acceptsUnusualFiles();
    void refusesDamagedContainers_data();
    void refusesDamagedContainers();
    void refusesDamagedContent_data();
    void refusesDamagedContent();
    void refusesChainsAndDeepJson();
    void survivesRandomDamage();

private:
    std::shared_ptr<const SceneFragment> read(const QByteArray &bytes)
    {
        m_error.clear();
        const QString path = m_dir.filePath(QString::fromUtf8("täst.glb"));
        return TriangleGlb::write(path, bytes) ? GlbReader::read(path, &m_error) : nullptr;
    }

    QTemporaryDir m_dir;
    QString m_error;
};

void TestGlbReader::readsGeometryInMillimetres()
{
    const auto fragment = read(TriangleGlb::glb());
    QVERIFY2(fragment, qPrintable(m_error));
    QCOMPARE(fragment->roots, std::vector<int>{0});
    QCOMPARE(fragment->nodes.size(), std::size_t(2));
    QCOMPARE(fragment->nodes[0].children, std::vector<int>{1});
    QCOMPARE(fragment->nodes[0].mesh, -1);
    QCOMPARE(fragment->nodes[1].name, QStringLiteral("part"));
    QCOMPARE(fragment->nodes[1].transform.column(3), QVector4D(1000, 0, 0, 1));

    const SceneMesh &mesh = *fragment->meshes.at(0);
    QCOMPARE(mesh.name, QStringLiteral("tri"));
    QCOMPARE(mesh.triangles, std::size_t(1));
    QCOMPARE(mesh.box.min, QVector3D(0, 0, 0));
    QCOMPARE(mesh.box.max, QVector3D(1000, 2000, 3000));
    QCOMPARE(mesh.primitives.at(0).indices, (std::vector<std::uint32_t>{0, 1, 2}));

    const SceneMaterial expected{QStringLiteral("red"), {1.0F, 0.0F, 0.0F, 0.5F}, 0.25F, 0.75F};
    QVERIFY(fragment->materials.at(0) == expected);
}

void TestGlbReader::takesBackTheTurnOfTheAxes_data()
{
    QTest::addColumn<QByteArray>("top");
    QTest::addColumn<int>("root");
    QTest::addColumn<QVector3D>("tip"); // where the triangle's last corner (0,2,3) comes to be

    const QByteArray turned = R"("rotation":[-0.70710678,0,0,0.70710678])";
    const QByteArray matrix = R"("matrix":[1,0,0,0, 0,0,-1,0, 0,1,0,0, 0,0,0,1])";
    QTest::newRow("z upwards, quaternion")
        << turned + R"(,"extras":{"sourceAxes":"Z-up"},)" << 1 << QVector3D(1000, 2000, 3000);
    QTest::newRow("z upwards, matrix")
        << matrix + R"(,"extras":{"sourceAxes":"Z-up"},)" << 1 << QVector3D(1000, 2000, 3000);
    QTest::newRow("z upwards, moved: the node stays")
        << turned + R"(,"translation":[0,0,1],"extras":{"sourceAxes":"Z-up"},)" << 0
        << QVector3D(1000, 2000, 4000);
    QTest::newRow("y upwards") << QByteArray(R"("extras":{"sourceAxes":"Y-up"},)") << 1
                               << QVector3D(1000, 2000, 3000);
    QTest::newRow("rotation of somebody else's")
        << turned + "," << 0 << QVector3D(1000, 3000, -2000);
}

void TestGlbReader::takesBackTheTurnOfTheAxes()
{
    QFETCH(QByteArray, top);
    QFETCH(int, root);
    QFETCH(QVector3D, tip);
    const auto fragment =
        read(TriangleGlb::glb(TriangleGlb::json().replace(R"("name":"top",)", top)));
    QVERIFY2(fragment, qPrintable(m_error));
    QCOMPARE(fragment->roots, std::vector<int>{root});
    QMatrix4x4 world = fragment->nodes[1].transform;
    if (root == 0)
        world = fragment->nodes[0].transform * world;
    const QVector3D corner = world.map(fragment->meshes[0]->primitives[0].positions[2]);
    QVERIFY2(
        (corner - tip).length() < 0.001F,
        qPrintable(QStringLiteral("%1 %2 %3").arg(corner.x()).arg(corner.y()).arg(corner.z())));
}

void TestGlbReader::separatesStripsAndFans_data()
{
    using Indices = std::vector<std::uint32_t>;
    QTest::addColumn<int>("mode");
    QTest::addColumn<Indices>("expected");
    QTest::newRow("lines, one corner too many") << 1 << Indices{0, 1, 2, 3};
    QTest::newRow("line loop") << 2 << Indices{0, 1, 1, 2, 2, 3, 3, 4, 4, 0};
    QTest::newRow("line strip") << 3 << Indices{0, 1, 1, 2, 2, 3, 3, 4};
    QTest::newRow("triangles, two corners too many") << 4 << Indices{0, 1, 2};
    QTest::newRow("triangle strip") << 5 << Indices{0, 1, 2, 1, 3, 2, 2, 3, 4};
    QTest::newRow("triangle fan") << 6 << Indices{0, 1, 2, 0, 2, 3, 0, 3, 4};
}

void TestGlbReader::separatesStripsAndFans()
{
    QFETCH(int, mode);
    QFETCH(std::vector<std::uint32_t>, expected);
    QByteArray json = TriangleGlb::json();
    json.replace(R"("indices":1,)", "")
        .replace(R"("mode":4)", "\"mode\":" + QByteArray::number(mode));
    json.replace(R"("count":3,"type":"VEC3")", R"("count":5,"type":"VEC3")");
    json.replace("36", "60").replace("\"byteLength\":42", "\"byteLength\":66");
    const auto fragment = read(TriangleGlb::glb(json, QByteArray(66, '\0')));
    QVERIFY2(fragment, qPrintable(m_error));
    const SceneMesh &mesh = *fragment->meshes.at(0);
    QCOMPARE(mesh.primitives.at(0).indices, expected);
    QCOMPARE(mesh.triangles, mode < 4 ? 0 : expected.size() / 3);
}

void TestGlbReader::acceptsUnusualFiles_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("meshes");
    const QByteArray json = TriangleGlb::json();
    QTest::newRow("nothing inside") << QByteArray(R"({"asset":{"version":"2.0"}})") << 0;
    QTest::newRow("no scene") << QByteArray(json).replace(R"("scene":0,"scenes":[{"nodes":[0]}],)",
                                                          "")
                              << 1;
    QTest::newRow("points") << QByteArray(json).replace("\"mode\":4", "\"mode\":0") << 1;
    QTest::newRow("external picture") << QByteArray(json).replace(
        R"("materials")", R"("images":[{"uri":"picture.png"}],"materials")")
                                      << 1;
    QTest::newRow("required look") << QByteArray(json).replace(
        R"("scene":0)", R"("extensionsRequired":["KHR_materials_unlit"],"scene":0)")
                                   << 1;
}

void TestGlbReader::acceptsUnusualFiles()
{
    QFETCH(QByteArray, json);
    QFETCH(int, meshes);
    const auto fragment = read(TriangleGlb::glb(json));
    QVERIFY2(fragment, qPrintable(m_error));
    QCOMPARE(int(fragment->meshes.size()), meshes);
    QCOMPARE(fragment->roots.size(), fragment->nodes.empty() ? std::size_t(0) : std::size_t(1));
}

void TestGlbReader::refusesDamagedContainers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray whole = TriangleGlb::glb();
    const auto with = [&whole](int offset, const QByteArray &bytes) {
        return QByteArray(whole).replace(offset, bytes.size(), bytes);
    };
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("solid nothing\nendsolid\n");
    QTest::newRow("header only") << "glTF" + TriangleGlb::word(2) + TriangleGlb::word(12);
    QTest::newRow("cut off") << whole.left(whole.size() / 2);
    QTest::newRow("last byte missing") << whole.left(whole.size() - 1);
    QTest::newRow("version 1") << with(4, TriangleGlb::word(1));
    QTest::newRow("length too large") << with(8, TriangleGlb::word(0xFFFFFFFFU));
    QTest::newRow("json chunk too large") << with(12, TriangleGlb::word(0xFFFFFFF0U));
    QTest::newRow("json chunk too small") << with(12, TriangleGlb::word(8));
    QTest::newRow("first chunk no json") << with(16, "BIN");
    // The chunk's end lies exactly as far behind the file's as its header is long.
    const int binary = whole.size() - 44;
    QTest::newRow("data chunk slightly too large") << with(binary - 8, TriangleGlb::word(52));
    QTest::newRow("no data chunk") << TriangleGlb::glb(TriangleGlb::json(), {});
}

void TestGlbReader::refusesDamagedContainers()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!read(bytes));
    QVERIFY2(m_error.endsWith(QLatin1Char('.')), qPrintable(m_error));
    QVERIFY(!GlbReader::read(m_dir.filePath(QStringLiteral("missing.glb")), nullptr));
}

void TestGlbReader::refusesDamagedContent_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const char *from, const char *to, const char *message) {
        QTest::newRow(name) << QByteArray(from) << QByteArray(to) << QString::fromUtf8(message);
    };
    row("no json", "{\"asset\"", "{\"asset", "no valid glTF");
    row("strange types", R"("meshes":[{)", R"("meshes":[7,{)", "no valid glTF");
    row("position accessor missing", "\"POSITION\":0", "\"POSITION\":7", "does not have");
    row("position accessor negative", "\"POSITION\":0", "\"POSITION\":-3", "does not have");
    row("index accessor missing", "\"indices\":1", "\"indices\":9", "no valid glTF");
    row("too many vertices", "\"count\":3,\"type\":\"VEC3\"", "\"count\":4,\"type\":\"VEC3\"",
        "beyond");
    row("endless count", "\"count\":3,\"type\":\"VEC3\"",
        "\"count\":18446744073709551615,\"type\":\"VEC3\"", "beyond");
    row("accessor offset", "\"count\":3,\"type\":\"VEC3\"",
        "\"byteOffset\":18446744073709551612,\"count\":3,\"type\":\"VEC3\"", "beyond");
    row("view offset", "\"byteOffset\":36", "\"byteOffset\":18446744073709551600", "beyond");
    row("view length", "\"byteLength\":36", "\"byteLength\":3600", "beyond");
    row("view stride too small", "\"byteLength\":36", "\"byteLength\":36,\"byteStride\":4",
        "beyond");
    row("view without data", "\"bufferView\":0,", "", "no data");
    row("view missing", "\"bufferView\":0,", "\"bufferView\":5,", "no data");
    row("buffer missing", "\"buffer\":0,\"byteOffset\":0", "\"buffer\":4,\"byteOffset\":0",
        "no buffer");
    row("buffer longer than the file", "\"byteLength\":42", "\"byteLength\":4200", "no valid glTF");
    row("buffer empty", "\"byteLength\":42", "\"byteLength\":0", "no valid glTF");
    row("buffer outside", "\"byteLength\":42", "\"byteLength\":42,\"uri\":\"/etc/passwd\"",
        "outside");
    row("index behind the vertices", "\"byteOffset\":36,\"byteLength\":6",
        "\"byteOffset\":28,\"byteLength\":6", "larger than its vertex count");
    row("indices of wrong type", "\"componentType\":5123", "\"componentType\":5122",
        "unsigned integers");
    row("positions of wrong type", "\"type\":\"VEC3\"", "\"type\":\"VEC2\"", "type float");
    row("sparse", "\"count\":3,\"type\":\"VEC3\"",
        R"("count":3,"type":"VEC3","sparse":{"count":1,"indices":{"bufferView":1,"byteOffset":0,)"
        R"("componentType":5123},"values":{"bufferView":0,"byteOffset":0}})",
        "Sparse");
    row("mesh missing", "\"mesh\":0", "\"mesh\":3", "mesh that the file");
    row("material missing", "\"material\":0", "\"material\":3", "material that the file");
    row("child missing", "\"children\":[1]", "\"children\":[17]", "child that the file");
    row("node below itself", "\"children\":[1]", "\"children\":[0]", "ring");
    row("two parents", "\"children\":[1]", "\"children\":[1,1]", "more than one parent");
    row("root is a child", "\"nodes\":[0]", "\"nodes\":[1]", "no root");
    row("root twice", "\"nodes\":[0]", "\"nodes\":[0,0]", "twice");
    row("root missing", "\"nodes\":[0]", "\"nodes\":[-1]", "no root");
    row("infinite translation", "[1,0,0]}", "[1e300,0,0]}", "none of 3D space");
    row("perspective", "\"translation\":[1,0,0]", "\"matrix\":[1,0,0,1,0,1,0,0,0,0,1,0,0,0,0,1]",
        "none of 3D space");
    row("matrix too short", "\"translation\":[1,0,0]", "\"matrix\":[1,0,0]", "incomplete");
    row("compressed", R"("scene":0)", R"("extensionsRequired":["KHR_draco_mesh_compression"])",
        "KHR_draco_mesh_compression");
}

void TestGlbReader::refusesDamagedContent()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, message);
    const QByteArray json = TriangleGlb::json();
    QVERIFY(json.contains(from));
    QVERIFY(!read(TriangleGlb::glb(QByteArray(json).replace(from, to))));
    QVERIFY2(m_error.contains(message), qPrintable(m_error));
}

void TestGlbReader::refusesChainsAndDeepJson()
{
    QByteArray nodes;
    for (int i = 1; i < 100000; ++i)
        nodes += "{\"children\":[" + QByteArray::number(i) + "]},";
    QVERIFY(!read(TriangleGlb::glb(R"({"asset":{"version":"2.0"},"nodes":[)" + nodes + "{}]}")));
    QVERIFY2(m_error.contains(QStringLiteral("nested")), qPrintable(m_error));

    const QByteArray deep = QByteArray(500000, '[') + QByteArray(500000, ']');
    QVERIFY(!read(TriangleGlb::glb(
        QByteArray(TriangleGlb::json()).replace("\"scene\":0", "\"extras\":" + deep))));
    QVERIFY2(m_error.contains(QStringLiteral("nested")), qPrintable(m_error));

    // Brackets within a text are none.
    QVERIFY(
        read(TriangleGlb::glb(QByteArray(TriangleGlb::json())
                                  .replace("\"top\"", "\"\\\"" + QByteArray(900, '[') + "\""))));
}

void TestGlbReader::survivesRandomDamage()
{
    // Whatever comes out must be consistent, since the scene trusts it. The sanitizers watch.
    const QByteArray whole = TriangleGlb::glb();
    QRandomGenerator random(20240607);
    int readable = 0;
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = whole;
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

QTEST_GUILESS_MAIN(TestGlbReader)

#include "tst_GlbReader.moc"
