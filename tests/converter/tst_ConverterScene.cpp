#include "GlbFile.h"
#include "core/Text.h"
#include "scene/FacetMeshBuilder.h"
#include "scene/PolygonTriangulator.h"
#include "scene/SceneOperations.h"
#include "writer/GlbWriter.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>

using namespace tnconvert;

namespace {

constexpr float undefined = std::numeric_limits<float>::quiet_NaN();

Primitive triangle()
{
    Primitive primitive;
    primitive.positions = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}};
    primitive.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    primitive.indices = {0, 1, 2};
    return primitive;
}

Node nodeWith(const std::string &name, const Primitive &primitive)
{
    auto mesh = std::make_shared<Mesh>();
    mesh->primitives.push_back(primitive);
    Node node;
    node.name = name;
    node.mesh = mesh;
    return node;
}

} // namespace

class tst_ConverterScene : public QObject {
    Q_OBJECT

private slots:
    void polygons()
    {
        using Corners = std::vector<Vec3>;
        Corners comb{{0, 0, 0}};
        for (int i = 0; i < 300; ++i)
            comb.push_back({double(i), i % 2 ? 1. : 9., 0});
        comb.push_back({299, 0, 0});
        const struct {
            Corners corners;
            int triangles;
            double area;
        } rows[] = {
            {{{0, 0, 0}, {1, 0, 0}}, 0, 0},
            {{{0, 0, 0}, {0, 1, 0}, {0, 1, 1}, {0, 0, 1}}, 2, 1},
            // A notch at the first corner, and a corner on an edge.
            {{{1, 1, 0}, {2, 2, 0}, {0, 2, 0}, {0, 0, 0}, {2, 0, 0}}, 3, 3},
            {{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}, 3, 2},
            // A square with a square hole, joined by a slit.
            {{{0, 0, 0},
              {3, 0, 0},
              {3, 3, 0},
              {0, 3, 0},
              {0, 0, 0},
              {1, 1, 0},
              {1, 2, 0},
              {2, 2, 0},
              {2, 1, 0},
              {1, 1, 0}},
             8,
             8},
            {Corners(5, Vec3{1, 1, 1}), 0, 0},
            {comb, 300, 299 * 5}, // each pair of teeth covers 10 mm²
        };
        for (const auto &[corners, triangles, area] : rows) {
            Vec3 sum;
            for (const auto &[a, b, c] : triangulated(corners))
                sum = sum + (corners[b] - corners[a]).cross(corners[c] - corners[a]) * 0.5;
            QCOMPARE(int(triangulated(corners).size()), triangles);
            QVERIFY2(std::fabs(sum.length() - area) < 1e-9, QByteArray::number(sum.length()));
        }
    }

    void facetsAreSmoothUpToTheCrease()
    {
        const auto vertexCount = [](double creaseAngle, bool isOneGroup) {
            FacetMeshBuilder builder;
            // Two triangles that meet at 45 degrees.
            builder.points = {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {-1, 0, 1}};
            builder.facets.resize(2);
            for (std::size_t i = 0; i < 3; ++i) {
                builder.facets[0].corners[i].point = std::array<std::uint32_t, 3>{0, 2, 1}[i];
                builder.facets[1].corners[i].point = std::array<std::uint32_t, 3>{0, 1, 3}[i];
            }
            builder.facets[1].smoothingGroup = isOneGroup ? 1 : 2;
            builder.creaseAngle = creaseAngle;
            return builder.build().positions.size();
        };
        QCOMPARE(vertexCount(0.7, true), std::size_t(6));
        QCOMPARE(vertexCount(0.9, true), std::size_t(4));
        QCOMPARE(vertexCount(0.9, false), std::size_t(6));
    }

    void longEdgesAreSplitAlike()
    {
        Primitive primitive;
        primitive.positions = {{0, 0, 0}, {10, 0, 0}, {10, 1, 0}, {0, 1, 0}};
        primitive.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
        primitive.indices = {0, 1, 2, 0, 2, 3};
        QVERIFY(limitEdgeLength(primitive, 3, 1000));
        std::map<std::pair<std::uint32_t, std::uint32_t>, double> edges;
        double area = 0;
        for (std::size_t i = 0; i < primitive.indices.size(); ++i) {
            const std::uint32_t a = primitive.indices[i];
            const std::uint32_t b = primitive.indices[i % 3 == 2 ? i - 2 : i + 1];
            const Vec3f &p = primitive.positions[a];
            const Vec3f &q = primitive.positions[b];
            const double length = double(std::hypot(p[0] - q[0], p[1] - q[1]));
            QVERIFY(length <= 3);
            QVERIFY(edges.emplace(std::pair(a, b), length).second);
            area += double(p[0] * q[1] - p[1] * q[0]) / 2;
        }
        QCOMPARE(area, 10.0);
        QCOMPARE(primitive.normals.size(), primitive.positions.size());
        // In a mesh without gaps only the edges of the rim have no counterpart.
        double rim = 0;
        for (const auto &[edge, length] : edges)
            rim += edges.count({edge.second, edge.first}) ? 0 : length;
        QVERIFY2(std::fabs(rim - 22) < 1e-4, QByteArray::number(rim));
        QVERIFY(!limitEdgeLength(primitive, 1e-9, 1000));
    }

    void mirroredMeshesStayTurnedOutwards()
    {
        std::vector<Node> nodes{nodeWith("a", triangle())};
        nodes[0].transform = Transform::scaling({-1, 1, 1});
        flushTransformations(nodes);
        const Primitive &result = nodes[0].mesh->primitives[0];
        QCOMPARE(result.indices, (std::vector<std::uint32_t>{0, 2, 1}));
        QCOMPARE(result.positions[1][0], -10.F);
        QCOMPARE(result.normals[0][2], 1.F);
    }

    void writerKeepsOutWhatLoadersRefuse()
    {
        Primitive damaged = triangle();
        damaged.positions.insert(damaged.positions.end(),
                                 {{undefined, 0, 0}, {1e38F, 0, 0}, {5, 5, 5}});
        damaged.normals = {{0, 0, 0}, {undefined, 0, 0}, {0, 0, 9},
                           {0, 0, 1}, {0, 0, 1},         {0, 0, 1}};
        damaged.indices = {0, 1, 2, 0, 1, 3, 0, 1, 4, 0, 1, 99, 1, 1, 2};
        Primitive empty;
        Scene scene;
        scene.roots = {nodeWith("caf\xE9\n", damaged), nodeWith("empty", empty)};
        scene.roots[0].metadata = {{"key", "\xFF"}};
        QTemporaryDir directory;
        const QString path = directory.filePath("out.glb");
        GlbWriter("/some/where.stl").write(scene, path.toStdString());
        const GlbFile file(path);
        QCOMPARE(file.problems(), QStringList());
        QCOMPARE(file.triangles(), 1);
        QCOMPARE(file.paths(), QStringList({"caf\u00E9 ", "empty"}));
        QVERIFY(!file.document().dump().empty()); // throws on text that is no UTF-8
    }

    void manyVerticesNeedWideIndices()
    {
        Primitive strip;
        for (std::uint32_t i = 0; i < 70000; ++i) {
            strip.positions.push_back({float(i), float(i % 2), 0});
            if (i >= 2)
                strip.indices.insert(strip.indices.end(), {i - 2, i - 1, i});
        }
        Scene scene;
        scene.roots = {nodeWith("strip", strip)};
        QTemporaryDir directory;
        const QString path = directory.filePath("out.glb");
        GlbWriter("strip").write(scene, path.toStdString());
        const GlbFile file(path);
        QCOMPARE(file.problems(), QStringList());
        QVERIFY(std::fabs(file.area() - 69998) < 70);
    }

    void numbers()
    {
        const std::pair<const char *, double> rows[] = {
            {"1.5", 1.5},
            {"+.5e+1", 5},
            {"1e-999", 0},
            // None of these is a number.
            {"1e999", -1},
            {"1,5", -1},
            {"inf", -1},
            {"1.5x", -1},
            {"", -1},
        };
        for (const auto &[text, value] : rows)
            QCOMPARE(parseNumber(text).value_or(-1), value);
    }
};

QTEST_GUILESS_MAIN(tst_ConverterScene)
#include "tst_ConverterScene.moc"
