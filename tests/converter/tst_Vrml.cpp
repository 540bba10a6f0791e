#include "ConverterFixture.h"

#include <QtTest>

#include <zlib.h>

using tnconvert::Outcome;
using tnconvert::State;
using tnhost::BoundingBox;

namespace {

const QByteArray header = "#VRML V2.0 utf8\n";

QByteArray shape(const QByteArray &geometry)
{
    return "Shape { geometry " + geometry + " }\n";
}

QByteArray faceSet(const QByteArray &points, const QByteArray &indices, const QByteArray &more = "")
{
    return shape("IndexedFaceSet { coord Coordinate { point [" + points + "] } coordIndex ["
                 + indices + "] " + more + " }");
}

/// A box of 2 mm in the middle.
const QByteArray smallBox = shape("Box { size 0.002 0.002 0.002 }");

/// An extrusion of a square of 2 mm.
QByteArray tube(const QByteArray &more)
{
    return shape("Extrusion { crossSection [.001 .001 .001 -.001 -.001 -.001 -.001 .001 .001 .001] "
                 + more + "}");
}

const QByteArray square = "0 0 0, .001 0 0, .001 .001 0, 0 .001 0";

/// What a file's nodes draw.
struct Drawing {
    const char *name;
    QByteArray content;
    int triangles; ///< 0: any number
    BoundingBox box;
    double area; ///< mm²; 0: not known
    double volume = 0; ///< mm³; 0: not closed
};

} // namespace
Q_DECLARE_METATYPE(Drawing)

class tst_Vrml : public QObject {
    Q_OBJECT

private:
    Outcome convert(const QByteArray &content, const char *settings = "{}")
    {
        return m_fixture.convert(m_fixture.write("in.wrl", header + content), settings);
    }
    ConvertedFile result() const { return m_fixture.result(); }

    ConverterFixture m_fixture;

private slots:
    void geometry_data()
    {
        using Box = BoundingBox;
        const Box unit{{-1, -1, -1}, {1, 1, 1}};
        const Box flat{{0, 0, 0}, {1, 1, 0}};
        QTest::addColumn<Drawing>("drawing");
        const Drawing drawings[] = {
            {"box", smallBox, 12, unit, 24, 8},
            {"sphere", shape("Sphere { radius .001 }"), 0, unit, 4 * M_PI, 4 * M_PI / 3},
            {"cylinder", shape("Cylinder { radius .001 height .002 }"), 0, unit, 6 * M_PI,
             2 * M_PI},
            {"cylinder without top", shape("Cylinder { radius .001 height .002 top FALSE }"), 0,
             unit, 5 * M_PI},
            {"cone", shape("Cone { bottomRadius .001 height .002 }"), 0, unit,
             M_PI * (1 + std::sqrt(5.)), M_PI * 2 / 3},
            {"square", faceSet(square, "0 1 2 3 -1"), 2, flat, 1},
            {"concave face",
             faceSet("0 0 0 .002 0 0 .002 .002 0 .001 .0005 0 0 .002 0", "0 1 2 3 4 -1",
                     "convex FALSE"),
             3, Box{{0, 0, 0}, {2, 2, 0}}, 2.5},
            // More vertices than small indices could count.
            {"large grid",
             shape("ElevationGrid { xDimension 300 zDimension 300 xSpacing .001 zSpacing .001 "
                   "height ["
                   + QByteArray("0 ").repeated(90000) + "] }"),
             2 * 299 * 299, Box{{0, 0, 0}, {299, 0, 299}}, 299 * 299},
            {"extrusion", tube("spine [0 -.001 0 0 .001 0]"), 12, unit, 24, 8},
            {"clockwise extrusion",
             shape("Extrusion { ccw FALSE crossSection [.001 .001 -.001 .001 -.001 -.001 .001 "
                   "-.001 .001 .001] spine [0 -.001 0 0 .001 0] }"),
             12, unit, 24, 8},
            {"extrusion without caps",
             tube("spine [-.001 0 0 .001 0 0] beginCap FALSE endCap FALSE"), 8, unit, 16},
            {"scaled extrusion", tube("spine [0 0 0 .01 0 0 .01 .01 0] scale [1 1 1 1 .5 .5]"), 0,
             Box{{0, -1, -1}, {10.707, 10, 1}}, 0},
            {"rotation about a centre",
             "Transform { center .001 0 0 rotation 0 0 1 3.14159265 children " + smallBox + "}", 12,
             Box{{1, -1, -1}, {3, 1, 1}}, 24, 8},
            // Stretched by 3 along the diagonal.
            {"scale along a diagonal",
             "Transform { rotation 0 0 1 1.570796327 scale 3 1 1 scaleOrientation 0 0 1 "
             ".785398163 center .001 .001 0 children "
                 + smallBox + "}",
             12, Box{{1, -5, -1}, {7, 1, 1}}, 0, 24},
            // Readers turn the triangles of mirrored nodes, so that their volume seems negative.
            {"mirror", "Transform { scale -1 1 1 translation .002 0 0 children " + smallBox + "}",
             12, Box{{1, -1, -1}, {3, 1, 1}}, 24},
            {"impossible place", "Transform { translation 1e36 0 0 children " + smallBox + "}", 12,
             unit, 24, 8},
            {"instance", "Transform { translation .01 0 0 children DEF B " + smallBox + "} USE B",
             24, Box{{-1, -1, -1}, {11, 1, 1}}, 48, 16},
            {"level of detail", "LOD { range [1 2] level [ " + smallBox + shape("Box { }") + " ] }",
             12, unit, 24, 8},
            {"switch", "Switch { whichChoice 1 choice [ " + shape("Box { }") + smallBox + " ] }",
             12, unit, 24, 8},
            {"unknown nodes",
             "Gadget { size [1 2 3] inner Widget { on TRUE text \"}\\\"{\" } }\n"
             "Script { field SFBool on TRUE eventIn SFTime t eventOut SFColor c url \"x\" }\n"
             "DEF T TimeSensor { } ROUTE T.time TO T.time "
                 + smallBox,
             12, unit, 24, 8},
            {"prototype",
             "PROTO Block [ field SFVec3f size 9 9 9 eventIn SFTime go ] { Shape { geometry Box { "
             "size IS size } } } Block { size .002 .002 .002 }",
             12, unit, 24, 8},
            {"nested prototypes",
             "DEF B " + smallBox
                 + "PROTO Inner [ field SFVec3f s 9 9 9 ] { DEF B Box { size IS s } }\n"
                   "PROTO Outer [ field SFVec3f t 8 8 8 ] { Transform { translation .01 0 0 "
                   "children [ Shape { geometry Inner { s IS t } } ] } }\n"
                   "Outer { t .002 .002 .002 } Transform { translation .01 0 0 children USE B }",
             36, Box{{-1, -1, -1}, {11, 1, 1}}, 72, 24},
            {"external prototype",
             "EXTERNPROTO Far [ field SFFloat a ] \"x.wrl\" Far { a 1 } " + smallBox, 12, unit, 24,
             8},
            {"carriage returns", faceSet(square, "0\r1\t2,3,,").replace('\n', "\r\n") + "}", 2,
             flat, 1},
        };
        for (const Drawing &drawing : drawings)
            QTest::newRow(drawing.name) << drawing;
    }

    void geometry()
    {
        QFETCH(const Drawing, drawing);
        const auto &[name, content, triangles, box, area, volume] = drawing;
        const Outcome outcome = convert(content, R"({"ChordDeviation": 0.001})");
        QVERIFY2(outcome.state == State::Success, outcome.message.c_str());
        const ConvertedFile file = result();
        QCOMPARE(file.problems, QStringList());
        QVERIFY(triangles == 0 || file.triangles == triangles);
        QVERIFY(file.fills(box, 0.01F));
        QVERIFY(area == 0 || std::fabs(file.area - area) < 0.02 * area);
        QVERIFY(volume == 0 || std::fabs(file.volume - volume) < 0.02 * volume);
        QVERIFY(file.leastNormalAgreement > 0.5);
    }

    void instancesShareTheirMesh()
    {
        convert("DEF G Group { children DEF S " + smallBox
                + "} Transform { translation 1 0 0 children USE G } USE S");
        QCOMPARE(result().meshCount, 1);
        QCOMPARE(result().paths, QStringList({"G", "G/S", "", "G", "G/S", "S"}));
    }

    void mirroredMeshesStayTurnedOutwards()
    {
        convert("Transform { scale -1 1 1 children " + smallBox + "}",
                R"({"FlushTransformations": true})");
        QVERIFY(std::fabs(result().volume - 8) < 0.01 && result().leastNormalAgreement > 0.99);
    }

    void normals()
    {
        const QByteArray roof = "0 0 0 .002 0 0 .002 0 .002 0 0 .002 0 .0002 .001 .002 .0002 .001";
        const auto vertices = [this, roof](const QByteArray &more) {
            convert(faceSet(roof, "0 4 5 1 -1 4 3 2 5 -1", more));
            return result().document["accessors"][1]["count"].get<int>();
        };
        QCOMPARE(vertices(""), 8);
        QCOMPARE(vertices("creaseAngle 1"), 6); // the flat ridge is smooth and its corners shared
        // Stated normals win over the shape's own ones.
        QCOMPARE(vertices("normalPerVertex FALSE normal Normal { vector [0 1 0 0 1 0] }"), 6);
        QVERIFY(result().leastNormalAgreement < 0.99);
    }

    void materialsAndColors()
    {
        convert("Shape { appearance DEF A Appearance { material DEF Red Material { diffuseColor "
                "1 0 0 transparency .25 } } geometry Box { } }"
                + faceSet(square, "0 1 2 -1 0 2 3 -1",
                          "colorPerVertex FALSE color Color { color [1 0 0 0 0 1] }"));
        const ConvertedFile file = result();
        QCOMPARE(file.problems, QStringList());
        const nlohmann::json &material = file.document["materials"][0];
        QVERIFY(material["name"] == "Red" && material["alphaMode"] == "BLEND");
        QVERIFY(material["pbrMetallicRoughness"]["baseColorFactor"][3] == 0.75);
        const nlohmann::json &colored = file.document["meshes"][1]["primitives"][0]["attributes"];
        // Two faces of different colours cannot share a vertex.
        const auto colors = colored["COLOR_0"].get<std::size_t>();
        QCOMPARE(file.document["accessors"][colors]["count"].get<int>(), 6);
    }

    void whatIsLeftOutUnlessAskedFor()
    {
        const QByteArray content =
            "DEF Empty Group { } " + smallBox
            + shape(
                "IndexedLineSet { coord Coordinate { point [0 0 0 1 0 0 1 1 0] } coordIndex [0 1 2 "
                "-1 9 0 -1] }")
            + "Switch { choice " + smallBox + "}";
        convert(content);
        QCOMPARE(result().segments, 0);
        QCOMPARE(result().triangles, 12);
        QVERIFY(!result().paths.contains("Empty"));
        convert(
            content,
            R"({"ImportCurves": true, "ImportInvisibleMeshes": true, "RemoveEmptyGroups": false})");
        QCOMPARE(result().problems, QStringList());
        QCOMPARE(result().segments, 2);
        QCOMPARE(result().triangles, 24);
        QVERIFY(result().document["nodes"].back()["extras"]["visible"] == false);
        QVERIFY(result().paths.contains("Empty"));
    }

    void oneWarningForEachKind()
    {
        convert(smallBox + "Foo { } Foo { } Bar { } " + shape("Text { string \"x\" }"));
        QCOMPARE(m_fixture.warnings.size(), 3);
    }

    void compressed()
    {
        const QString path = m_fixture.path("packed.WRL");
        const gzFile file = gzopen(path.toLocal8Bit().constData(), "wb");
        QVERIFY(gzputs(file, header + smallBox) > 0);
        gzclose(file);
        QCOMPARE(m_fixture.convert(path).state, State::Success);
        QCOMPARE(result().triangles, 12);
        m_fixture.write("packed.WRL", ConverterFixture::read(path).chopped(9));
        const Outcome cut = m_fixture.convert(path);
        QCOMPARE(cut.state, State::Failure);
        QVERIFY2(cut.message.find("decompressed") != std::string::npos, cut.message.c_str());
    }

    void damage()
    {
        QByteArray doubling = "DEF N0 " + smallBox;
        for (int i = 1; i < 40; ++i) {
            const QByteArray below = " USE N" + QByteArray::number(i - 1);
            doubling +=
                "DEF N" + QByteArray::number(i) + " Group { children [" + below + below + "] }\n";
        }
        QByteArray chain = "DEF N0 " + smallBox;
        for (int i = 1; i < 50000; ++i)
            chain += "DEF N" + QByteArray::number(i) + " Group { children USE N"
                + QByteArray::number(i - 1) + " }\n";
        const QByteArray doublingCopies =
            QByteArray(doubling).replace("size 0.002 0.002 0.002", "size IS s");
        const std::pair<QByteArray, const char *> rows[] = {
            {"Group {\nchildren [\nShape {\n", "truncated: it ends at line 5"},
            {"WorldInfo { title \"abc\n}", "truncated"},
            {"\nGroup [ ]", "damaged at line 3"},
            {"Group { children }", "damaged at line 2"},
            {"", "no geometry"},
            {QByteArray("Group{children ").repeated(100000), "too deeply"},
            {chain, "too deeply"},
            {doubling, "repeats its parts too often"},
            {"PROTO P [ ] { Group { children [ " + doubling + " ] } } P { }",
             "repeats its parts too often"},
            {"PROTO P [ field SFVec3f s 1 1 1 ] { Group { children [ " + doublingCopies
                 + " ] } } P { }",
             "its prototypes grow without end"},
        };
        for (const auto &[content, message] : rows) {
            const Outcome outcome = convert(content);
            QCOMPARE(outcome.state, State::Failure);
            QVERIFY2(outcome.message.find(message) != std::string::npos, outcome.message.c_str());
        }
    }

    /// What stands before a damage is kept, unless the rest might put it elsewhere.
    void whatStandsBeforeDamage()
    {
        const QByteArray damaged = smallBox + "Shape { geometry }";
        const std::pair<QByteArray, int> rows[] = {
            {smallBox + damaged, 24},
            {"Transform { translation 1 0 0 children [" + damaged + "] }", 12},
            {"Group { children [ Transform { scale 1 1 1 children [" + damaged, 12},
            {smallBox + "Transform { children [" + damaged + "] translation 1 0 0 }", 12},
            {smallBox + "Transform { translation 1 0 0 children [" + smallBox + "] rotation ] }",
             12},
            {smallBox + "Switch { choice [" + damaged + "] whichChoice 0 }", 12},
            {smallBox + "Group { children [ PROTO P [ ] { Group { children [" + damaged, 12},
            {smallBox + "Shape { geometri Box { } }", 12},
        };
        for (const auto &[content, triangles] : rows) {
            QCOMPARE(convert(content).state, State::Incomplete);
            QCOMPARE(m_fixture.result().triangles, triangles);
        }
        QCOMPARE(convert("\nShape { geometry Box { } } Shape { geometry }").message,
                 std::string("in.wrl is damaged at line 3: expected the value of a field. What "
                             "follows is missing."));
        // Both of these are allowed.
        QCOMPARE(convert(smallBox + "Shape { geometry NULL } Shape { }").state, State::Success);
        QCOMPARE(m_fixture.warnings, QStringList("Shapes without a geometry are left out."));
    }

    void everyTruncationIsHandled()
    {
        const QByteArray lamp = ConverterFixture::read("lamp.wrl");
        const int end = lamp.lastIndexOf('}');
        for (int length = 0; length < end; length += 7) {
            const Outcome outcome = m_fixture.convert(m_fixture.write("in.wrl", lamp.left(length)));
            QVERIFY(outcome.state != State::Success && !outcome.message.empty());
        }
    }

    void inlinedFiles()
    {
        QDir(m_fixture.path("")).mkdir("sub");
        const auto sub = [this](const QString &name, const QByteArray &content) {
            m_fixture.write("sub/" + name, header + content);
        };
        sub("box.wrl", smallBox);
        sub("my box.wrl", smallBox);
        sub("chain.wrl", "Inline { url \"box.wrl\" }");
        sub("broken.wrl", "Group {");
        sub("incomplete.wrl", smallBox + "Inline { url \"gone.wrl\" }");
        sub("circle.wrl", smallBox + "Inline { url \"../in.wrl\" } Inline { url \"circle.wrl\" }");
        const QByteArray box = "Inline { url \"sub/box.wrl\" } ";
        const struct {
            QByteArray main;
            int triangles;
            const char *parts;
            const char *missing = ""; // stands in the message
        } rows[] = {
            {box + box, 24, "part box.wrl, success box.wrl"}, // it is read once
            {"Inline { url [\"no.wrl\" \"sub/box.wrl\"] }", 12, "part box.wrl, success box.wrl"},
            {"Inline { url \"sub\\\\my%20box.wrl\" }", 12, "part my box.wrl, success my box.wrl"},
            {"Inline { url \"sub/chain.wrl\" }", 12,
             "part chain.wrl, part box.wrl, success box.wrl, success chain.wrl"},
            {"Inline { url \"sub/broken.wrl\" } " + box, 12,
             "part broken.wrl, failure broken.wrl, part box.wrl, success box.wrl", "broken.wrl"},
            {"Inline { url \"sub/incomplete.wrl\" }", 12,
             "part incomplete.wrl, part gone.wrl, failure gone.wrl, incomplete incomplete.wrl",
             "gone.wrl"},
            {"Inline { url \"http://example.org/far.wrl\" } " + box, 12,
             "part far.wrl, failure far.wrl, part box.wrl, success box.wrl", "far.wrl"},
            {smallBox + "Inline { url \"sub/circle.wrl\" }", 24,
             "part circle.wrl, success circle.wrl"},
        };
        for (const auto &[main, triangles, parts, missing] : rows) {
            const Outcome outcome = convert(main);
            QVERIFY2(outcome.state == (*missing ? State::Incomplete : State::Success), main);
            QVERIFY2(outcome.message.find(missing) != std::string::npos, outcome.message.c_str());
            QCOMPARE(m_fixture.parts.join(", "), QString(parts));
            QCOMPARE(result().problems, QStringList());
            QCOMPARE(result().triangles, triangles);
        }
        convert(smallBox + box, R"({"ImportReferencedFiles": false})");
        QCOMPARE(m_fixture.parts, QStringList());
        QCOMPARE(result().triangles, 12);
    }
};

QTEST_GUILESS_MAIN(tst_Vrml)
#include "tst_Vrml.moc"
