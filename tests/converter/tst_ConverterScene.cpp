#include "ConvertedFile.h"
#include "core/Text.h"
#include "readers/LineReader.h"
#include "scene/FacetMeshBuilder.h"
#include "scene/PointWelder.h"
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

    /// A roof of two slopes that meet at @p degrees, in a list with points that it does not use.
    static FacetMeshBuilder roof(double degrees)
    {
        FacetMeshBuilder builder;
        const double angle = degrees * M_PI / 180;
        for (const Vec3 &p : {Vec3{7, 7, 7},
                              {0, 0, 0},
                              {1, 0, 0},
                              {0, -1, 0},
                              {1, -1, 0},
                              {0, std::cos(angle), -std::sin(angle)},
                              {NAN, 0, 0},
                              {1e31, 0, 0}})
            builder.points.push_back(p);
        builder.corners = {1, 3, 4, 1, 4, 2, 1, 2, 5, 1, 2, 6, 1, 2, 7, 1, 2, 99, 1, 1, 2};
        return builder;
    }

    void normalsOfFacets()
    {
        const auto mesh = [](FacetMeshBuilder builder) {
            const Primitive result = builder.build();
            return std::pair(result, builder.droppedFacets());
        };
        for (const auto &[angle, vertices] :
             {std::pair(20, 5U), std::pair(28, 5U), std::pair(31, 7U)}) {
            const auto [result, dropped] = mesh(roof(angle));
            QCOMPARE(dropped, std::size_t(3));
            QCOMPARE(result.indices.size(), std::size_t(9));
            QCOMPARE(result.positions.size(), std::size_t(vertices));
            QCOMPARE(result.normals.size(), std::size_t(vertices));
            // Where the ridge is smooth, the larger slope, twice the other, bends the normal more.
            const float y = result.normals[result.indices[8]][1];
            const double slope = angle * M_PI / 180;
            const double half = std::atan2(std::sin(slope), 2 + std::cos(slope));
            const float ridge = result.normals[result.indices[0]][1];
            QVERIFY(std::fabs(double(ridge) - (angle < 30 ? std::sin(half) : 0)) < 1e-6);
            QVERIFY(std::fabs(double(y) - std::sin(slope)) < 1e-6);
        }
        FacetMeshBuilder groups = roof(20);
        groups.groups = {1, 1, 2, 2, 2, 2, 2};
        QCOMPARE(mesh(groups).first.positions.size(), std::size_t(7));
        FacetMeshBuilder stated = roof(40);
        stated.normals.assign(8, Vec3f{0, 0, 2});
        QCOMPARE(mesh(stated).first.normals, std::vector<Vec3f>(5, {0, 0, 1}));
        FacetMeshBuilder colored = roof(20);
        colored.cornerColors.assign(21, Rgba8{1, 2, 3, 4});
        colored.cornerColors[0] = {9, 9, 9, 9};
        QCOMPARE(mesh(colored).first.colors.size(), std::size_t(6));
    }

    void pointsAreWelded()
    {
        PointList points;
        PointWelder welder(points, 0);
        for (std::uint32_t round = 0; round < 2; ++round) {
            for (std::uint32_t i = 0; i < 5000; ++i)
                QCOMPARE(welder.index({double(i % 70), double(i / 70), 1e-12 * (i % 2)}), i);
        }
        QCOMPARE(welder.index({-0.0, 0, -0.0}), 0U);
        QCOMPARE(welder.index({0, 0, NAN}), PointWelder::impossible);
        // Closer to each other than single precision tells.
        QCOMPARE(welder.index({1e6 + 1e-4, 0, 0}), 5000U);
        QCOMPARE(welder.index({1e6 + 2e-4, 0, 0}), 5001U);
        QVERIFY(std::fabs(points[5001].x - points[5000].x - 1e-4) < 1e-8);
    }

    void lines()
    {
        LineReader reader("a\r\nb\rc\n\nd\r");
        std::string text;
        for (std::string_view line; reader.next(line);)
            text += std::to_string(reader.number()) + std::string(line) + ' ';
        QCOMPARE(text, std::string("1a 2b 3c 4 5d "));
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

    void indicesAreAsWideAsNeeded()
    {
        for (const auto &[vertices, type] : {std::pair(65535U, 5123), std::pair(65536U, 5125)}) {
            Primitive fan; // with an odd number of triangles, so that short indices end in padding
            for (std::uint32_t i = 0; i < vertices; ++i)
                fan.positions.push_back({float(i), float(i % 2), 0});
            for (std::uint32_t i = 2; i < vertices; ++i)
                fan.indices.insert(fan.indices.end(), {0, i - 1, i});
            Scene scene;
            scene.roots.resize(2);
            for (Node &root : scene.roots)
                root.mesh = std::make_shared<Mesh>(Mesh{"fan", {fan}});
            const QTemporaryDir directory;
            const QString path = directory.filePath("out.glb");
            GlbWriter("/some/where.stl").write(scene, path.toStdString());
            const ConvertedFile file(path);
            QCOMPARE(file.problems, QStringList());
            QCOMPARE(file.triangles, 2 * int(vertices - 2));
            const auto &primitive = file.document["meshes"][1]["primitives"][0];
            QCOMPARE(
                file.document["accessors"][primitive["indices"].get<std::size_t>()]["componentType"]
                    .get<int>(),
                type);
        }
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
