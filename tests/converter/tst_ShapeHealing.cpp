#include "ConverterFixture.h"
#include "readers/kernel/ShapeFitness.h"
#include "readers/kernel/Tessellation.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>

#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(TopoDS_Shape)

namespace {

TopoDS_Shape first(const TopoDS_Shape &shape, TopAbs_ShapeEnum kind)
{
    return TopExp_Explorer(shape, kind).Current();
}

TopoDS_Shape box()
{
    return BRepPrimAPI_MakeBox(10, 20, 30).Shape();
}

TopoDS_Shape tessellated(TopoDS_Shape shape)
{
    tnconvert::tessellate(shape, 0.1, 0.2);
    return shape;
}

/// The first face with triangles of its own, all but the last one that it had.
TopoDS_Shape lessOne(const TopoDS_Shape &shape)
{
    const TopoDS_Face face = TopoDS::Face(first(shape, TopAbs_FACE));
    TopLoc_Location location;
    Poly_Triangulation &whole = *BRep_Tool::Triangulation(face, location);
    whole.ResizeTriangles(whole.NbTriangles() - 1, true);
    return shape;
}

} // namespace

/// When a shape may be used that was not healed as a whole.
class tst_ShapeHealing : public QObject {
    Q_OBJECT

private slots:
    void fitsTogether()
    {
        QVERIFY(tnconvert::fitsTogether(box()));
        QVERIFY(tnconvert::fitsTogether(BRepPrimAPI_MakeCone(5, 0, 10).Shape()));

        BRep_Builder builder;
        TopoDS_Shell turned;
        builder.MakeShell(turned);
        const TopoDS_Shape whole = box();
        for (TopExp_Explorer it(whole, TopAbs_FACE); it.More(); it.Next())
            builder.Add(turned, turned.NbChildren() == 0 ? it.Current().Reversed() : it.Current());
        QVERIFY(!tnconvert::fitsTogether(turned));

        TopoDS_Wire open;
        builder.MakeWire(open);
        for (TopoDS_Iterator it(first(whole, TopAbs_WIRE)); it.More(); it.Next()) {
            if (open.NbChildren() < 3)
                builder.Add(open, it.Value());
        }
        QVERIFY(!tnconvert::fitsTogether(open));

        const TopoDS_Shape gaping = box();
        builder.UpdateVertex(TopoDS::Vertex(first(gaping, TopAbs_VERTEX)), gp_Pnt(0, 0, 30.01),
                             1e-7);
        QVERIFY(!tnconvert::fitsTogether(gaping));
    }

    void isFilled_data()
    {
        QTest::addColumn<TopoDS_Shape>("shape");
        QTest::addColumn<bool>("isFilled");
        const TopoDS_Shape sphere = BRepPrimAPI_MakeSphere(10).Shape();
        QTest::newRow("box") << tessellated(box()) << true;
        QTest::newRow("sphere") << tessellated(sphere) << true;
        QTest::newRow("part of a sphere")
            << tessellated(BRepPrimAPI_MakeSphere(10, -0.3, 1.1, 4).Shape()) << true;
        QTest::newRow("torus") << tessellated(BRepPrimAPI_MakeTorus(10, 3).Shape()) << true;
        QTest::newRow("cone") << tessellated(BRepPrimAPI_MakeCone(5, 0, 10).Shape()) << true;
        QTest::newRow("inside out") << tessellated(box()).Reversed() << false;
        QTest::newRow("bare") << box() << false;
        QTest::newRow("a triangle less") << lessOne(tessellated(box())) << false;
        QTest::newRow("a curved triangle less")
            << lessOne(tessellated(BRepPrimAPI_MakeSphere(9).Shape())) << false;
    }

    void isFilled()
    {
        QFETCH(const TopoDS_Shape, shape);
        QTEST(tnconvert::isFilled(shape), "isFilled");
    }

    void deliversTheSame_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("sound");
        QTest::addColumn<QByteArray>("damaged");
        for (const char *file : {"bracket.step", "gearbox.step", "assembly/arm.stp"})
            QTest::newRow(file) << file << QByteArray() << QByteArray();
        QTest::newRow("a face turned over")
            << "assembly/base.stp" << QByteArray("(#51),#54,.T.") << QByteArray("(#51),#54,.F.");
        QTest::newRow("an edge used the wrong way")
            << "assembly/base.stp" << QByteArray("*,#21,.T.") << QByteArray("*,#21,.F.");
        QTest::newRow("a bound of a curved face the wrong way")
            << "assembly/base.stp" << QByteArray("'',#19,.T.") << QByteArray("'',#19,.F.");
        QTest::newRow("a corner beside its edges")
            << "assembly/base.stp" << QByteArray("#22,#22,#24") << QByteArray("#31,#31,#24");
    }

    void deliversTheSame()
    {
        QFETCH(const QString, file);
        QFETCH(const QByteArray, sound);
        QFETCH(const QByteArray, damaged);
        ConverterFixture fixture;
        QByteArray text = ConverterFixture::read(file);
        QVERIFY(text.contains(sound));
        if (!sound.isEmpty())
            text.replace(sound, damaged);
        const QString input = fixture.write("x.step", text);
        const tnconvert::Outcome full = fixture.convert(input, R"({"Healing":"full"})");
        const ConvertedFile healed = fixture.result();
        const tnconvert::Outcome needed = fixture.convert(input);
        QCOMPARE(needed.state, full.state);
        QCOMPARE(needed.message, full.message);
        const ConvertedFile result = fixture.result();
        QVERIFY(std::abs(result.area - healed.area) <= 1e-3 * healed.area);
        QVERIFY(std::abs(result.volume - healed.volume) <= 1e-3 * std::abs(healed.volume));
    }
};

QTEST_APPLESS_MAIN(tst_ShapeHealing)
#include "tst_ShapeHealing.moc"
