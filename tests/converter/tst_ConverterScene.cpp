#include "ConvertedFile.h"
#include "core/Text.h"
#include "scene/PolygonTriangulator.h"
#include "scene/SceneOperations.h"
#include "writer/GlbWriter.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>

using namespace tnconvert;

class tst_ConverterScene : public QObject {
    Q_OBJECT

private slots:
    void polygons()
    {
        std::vector<double> comb{0, 0, 0};
        for (int i = 0; i < 6000; ++i)
            comb.insert(comb.end(), {double(i), i % 2 ? 1. : 9., 0});
        comb.insert(comb.end(), {5999, 0, 0});
        const struct {
            std::vector<double> coordinates;
            int triangles;
            double area;
        } rows[] = {
            {{0, 0, 0, 1, 0, 0}, 0, 0},
            {{0, 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1}, 2, 1},
            // A notch at the first corner, and a corner on an edge.
            {{1, 1, 0, 2, 2, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0}, 3, 3},
            {{0, 0, 0, 1, 0, 0, 2, 0, 0, 2, 1, 0, 0, 1, 0}, 3, 2},
            // A square with a square hole, joined by a slit.
            {{0, 0, 0, 3, 0, 0, 3, 3, 0, 0, 3, 0, 0, 0, 0,
              1, 1, 0, 1, 2, 0, 2, 2, 0, 2, 1, 0, 1, 1, 0},
             8,
             8},
            {std::vector<double>(15, 1), 0, 0},
            {comb, 6000, 5999 * 5}, // each pair of teeth covers 10 mm²
        };
        for (const auto &[coordinates, triangles, area] : rows) {
            std::vector<Vec3> corners;
            for (std::size_t i = 0; i < coordinates.size(); i += 3)
                corners.push_back({coordinates[i], coordinates[i + 1], coordinates[i + 2]});
            Vec3 sum;
            for (const auto &[a, b, c] : triangulated(corners))
                sum = sum + (corners[b] - corners[a]).cross(corners[c] - corners[a]) * 0.5;
            QCOMPARE(int(triangulated(corners).size()), triangles);
            QVERIFY2(std::fabs(sum.length() - area) < 1e-6, QByteArray::number(sum.length()));
        }
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

    void writerKeepsOutWhatLoadersRefuse()
    {
        const float undefined = std::numeric_limits<float>::quiet_NaN();
        Primitive damaged;
        damaged.positions = {{0, 0, 0},         {10, 0, 0},    {0, 10, 0},
                             {undefined, 0, 0}, {1e38F, 0, 0}, {5, 5, 5}};
        damaged.normals = {{0, 0, 0}, {undefined, 0, 0}, {0, 0, 9},
                           {0, 0, 1}, {0, 0, 1},         {0, 0, 1}};
        damaged.indices = {0, 1, 2, 0, 1, 3, 0, 1, 4, 0, 1, 99, 1, 1, 2};
        Scene scene;
        scene.roots.resize(2);
        scene.roots[0].name = "caf\xE9\n";
        scene.roots[0].metadata = {{"key", "\xFF"}};
        scene.roots[0].mesh = std::make_shared<Mesh>(Mesh{"damaged", {damaged}});
        scene.roots[1].name = "empty";
        scene.roots[1].mesh = std::make_shared<Mesh>(Mesh{"empty", {Primitive()}});
        const QTemporaryDir directory;
        const QString path = directory.filePath("out.glb");
        GlbWriter("/some/where.stl").write(scene, path.toStdString());
        const ConvertedFile file(path);
        QCOMPARE(file.problems, QStringList());
        QCOMPARE(file.triangles, 1);
        QCOMPARE(file.paths, QStringList({"caf\u00E9 ", "empty"}));
    }

    void numbers()
    {
        const std::pair<const char *, double> rows[] = {{"1.5", 1.5},
                                                        {"+.5e+1", 5},
                                                        {"1e-999", 0},
                                                        // None of these is a number.
                                                        {"1e999", -1},
                                                        {"1,5", -1},
                                                        {"inf", -1},
                                                        {"1.5x", -1},
                                                        {"", -1}};
        for (const auto &[text, value] : rows)
            QCOMPARE(parseNumber(text).value_or(-1), value);
    }
};

QTEST_GUILESS_MAIN(tst_ConverterScene)
#include "tst_ConverterScene.moc"
