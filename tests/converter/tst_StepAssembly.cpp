#include "ConverterFixture.h"

#include <QtTest>

#include <algorithm>

namespace {

/// base.stp, a disc, with what turns it into the part of an assembly: the place is 100 mm along x,
/// turned by 90 degrees.
const QByteArray assembly = "#101=PRODUCT('asm','asm','',(#8));"
                            "#102=PRODUCT_DEFINITION_FORMATION('','',#101);"
                            "#103=PRODUCT_DEFINITION('design','',#102,#9);"
                            "#104=PRODUCT_DEFINITION_SHAPE('','',#103);"
                            "#105=CARTESIAN_POINT('',(100.,0.,0.));"
                            "#106=DIRECTION('',(0.,0.,1.));"
                            "#107=DIRECTION('',(0.,1.,0.));"
                            "#108=AXIS2_PLACEMENT_3D('',#105,#106,#107);"
                            "#110=SHAPE_DEFINITION_REPRESENTATION(#104,#109);";
const QByteArray wholeShape = "#109=SHAPE_REPRESENTATION('',(#108),#68);";
const QByteArray occurrence = "#111=NEXT_ASSEMBLY_USAGE_OCCURRENCE('1','','',#103,#5,$);"
                              "#112=PRODUCT_DEFINITION_SHAPE('','',#111);";
const QByteArray placing = "#115=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#114,#112);";

/// A relationship whose transformation leads from the first item to the second.
QByteArray relationship(const char *representations, const char *items)
{
    return QByteArray("#113=ITEM_DEFINED_TRANSFORMATION('','',") + items
        + ");#114=(REPRESENTATION_RELATIONSHIP('',''," + representations
        + ")REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#113)"
          "SHAPE_REPRESENTATION_RELATIONSHIP());";
}

const QByteArray usual =
    assembly + wholeShape + occurrence + relationship("#10,#109", "#11,#108") + placing;

/// The solid in a representation of its own, from which a relationship leads to the part's.
const QByteArray solid = "#10 = ADVANCED_BREP_SHAPE_REPRESENTATION('',(#11,#15),#68);";
const QByteArray emptyPart = "#10=SHAPE_REPRESENTATION('',(#11),#68);";
const QByteArray shifted = "#130=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#15),#68);"
                           "#131=(REPRESENTATION_RELATIONSHIP('','',#130,#10)"
                           "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#132)"
                           "SHAPE_REPRESENTATION_RELATIONSHIP());"
                           "#132=ITEM_DEFINED_TRANSFORMATION('','',#11,#133);"
                           "#133=AXIS2_PLACEMENT_3D('',#134,#13,#14);"
                           "#134=CARTESIAN_POINT('',(7.,0.,0.));";

/// The representation of the part mapped into the assembly's.
const QByteArray mapped = assembly
    + "#109=SHAPE_REPRESENTATION('',(#108,#114),#68);"
      "#113=REPRESENTATION_MAP(#11,#10);"
      "#114=MAPPED_ITEM('',#113,#108);";

const QByteArray grey = "0.60 0.60 0.65 1.00";

} // namespace

/// How products, their places and looks are found among the entities of a Step file.
class tst_StepAssembly : public QObject {
    Q_OBJECT

private:
    /// base.stp with some text replaced and further entities.
    static QByteArray file(const QByteArray &before, const QByteArray &after,
                           const QByteArray &entities)
    {
        QByteArray text = ConverterFixture::read("assembly/base.stp");
        if (!before.isEmpty()) {
            if (!text.contains(before))
                qFatal("%s is not there", before.constData());
            text.replace(before, after);
        }
        return text.insert(text.lastIndexOf("ENDSEC;"), entities);
    }

private slots:
    void progressMovesWithTheWork()
    {
        ConverterFixture fixture;
        fixture.convert("gearbox.step");
        const QVector<double> &percents = fixture.percents;
        const auto between = [&](double from, double to) {
            return std::count_if(percents.begin(), percents.end(),
                                 [&](double percent) { return percent > from && percent < to; });
        };
        QVERIFY(between(0, 28) >= 3); // parsing
        QVERIFY(between(52, 90) >= 10); // tessellating
    }

    void places_data()
    {
        QTest::addColumn<QByteArray>("step");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QVector3D>("place"); // of the part's point 10, 0, 0
        const QVector3D usualPlace(100, 10, 0);
        QTest::newRow("usual") << file({}, {}, usual) << "asm/base" << usualPlace;
        QTest::newRow("items swapped") << file({}, {},
                                               assembly + wholeShape + occurrence
                                                   + relationship("#10,#109", "#108,#11") + placing)
                                       << "asm/base" << usualPlace;
        QTest::newRow("relationship turned") << file(
            {}, {},
            assembly + wholeShape + occurrence + relationship("#109,#10", "#108,#11") + placing)
                                             << "asm/base" << usualPlace;
        QTest::newRow("part with a system of its own")
            << file("#12 = CARTESIAN_POINT('',(0.,0.,0.));\n#13 = DIRECTION('',(0.,0.,1.));\n"
                    "#14 = DIRECTION('',(1.,0.,-0.));",
                    "#12=CARTESIAN_POINT('',(5.,7.,0.));#13=DIRECTION('',(0.,0.,1.));"
                    "#14=DIRECTION('',(0.,1.,0.));",
                    usual)
            << "asm/base" << QVector3D(105, -7, 0);
        QTest::newRow("mapped item instead")
            << file({}, {}, mapped + occurrence) << "asm/base" << usualPlace;
        QTest::newRow("mapped item alone") << file({}, {}, mapped) << "asm/base" << usualPlace;
        QTest::newRow("mapped item as well")
            << file({}, {},
                    QByteArray(mapped).replace("#113", "#213").replace("#114", "#214") + occurrence
                        + relationship("#10,#109", "#11,#108") + placing)
            << "asm/base" << usualPlace;
        QTest::newRow("mapped, of no product")
            << file("#10 = ADVANCED_BREP_SHAPE_REPRESENTATION('',(#11,#15),#68);",
                    "#10=SHAPE_REPRESENTATION('',(#11,#131),#68);"
                    "#130=ADVANCED_BREP_SHAPE_REPRESENTATION('solid',(#15),#68);"
                    "#131=MAPPED_ITEM('',#132,#11);#132=REPRESENTATION_MAP(#11,#130);",
                    usual)
            << "asm/base/solid" << usualPlace;
        QTest::newRow("part shifted in a related representation")
            << file(solid, emptyPart,
                    shifted + assembly + wholeShape + occurrence
                        + relationship("#130,#109", "#11,#108") + placing)
            << "asm/base" << QVector3D(100, 3, 0);
        QTest::newRow("relationship that leads away from the part")
            << file(solid, QByteArray(emptyPart).replace("(#11)", "(#11,#133)"),
                    QByteArray(shifted)
                            .replace("(#15)", "(#15,#135)")
                            .replace("#130,#10)", "#10,#130)")
                            .replace("#11,#133)", "#133,#135)")
                        + "#135=AXIS2_PLACEMENT_3D('',#12,#13,#14);" + assembly + wholeShape
                        + occurrence + relationship("#130,#109", "#11,#108") + placing)
            << "asm/base" << QVector3D(100, 3, 0);
        QTest::newRow("nothing is placed") << file({}, {}, assembly + wholeShape + occurrence)
                                           << "asm/base" << QVector3D(10, 0, 0);
        QTest::newRow("mirror and scale")
            << file({}, {},
                    QByteArray(mapped).replace("#113,#108", "#113,#150")
                        + "#150=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',#151,$,#105,2.,$);"
                          "#151=DIRECTION('',(-1.,0.,0.));")
            << "asm/base" << QVector3D(80, 0, 0);
        QTest::newRow("assembly in inches")
            << file({}, {},
                    QByteArray(usual).replace("(#108),#68", "(#108),#124")
                        + "#120=(CONVERSION_BASED_UNIT('INCH',#121)LENGTH_UNIT()NAMED_UNIT(#123));"
                          "#121=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#69);"
                          "#123=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);"
                          "#124=(GEOMETRIC_REPRESENTATION_CONTEXT(3)"
                          "GLOBAL_UNIT_ASSIGNED_CONTEXT((#120,#70,#71))"
                          "REPRESENTATION_CONTEXT('',''));")
            << "asm/base" << QVector3D(2540, 10, 0);
        QTest::newRow("solid in a related representation")
            << file("#10 = ADVANCED_BREP_SHAPE_REPRESENTATION('',(#11,#15),#68);",
                    "#10=SHAPE_REPRESENTATION('',(#11),#68);"
                    "#130=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#15),#68);"
                    "#131=SHAPE_REPRESENTATION_RELATIONSHIP('','',#130,#10);",
                    usual)
            << "asm/base" << usualPlace;
        QTest::newRow("no product has the shape")
            << file("#3 = SHAPE_DEFINITION_REPRESENTATION(#4,#10);\n", "", QByteArray())
                   .replace("REPRESENTATION('',(#11,#15)", "REPRESENTATION('disc',(#11,#15)")
            << "disc" << QVector3D(10, 0, 0);
    }

    void places()
    {
        QFETCH(const QByteArray, step);
        QFETCH(const QString, path);
        QFETCH(const QVector3D, place);
        ConverterFixture fixture;
        const auto outcome = fixture.convert(fixture.write("x.step", step));
        QCOMPARE(QString::fromStdString(outcome.message), QString());
        const ConvertedFile result = fixture.result();
        QCOMPARE(result.paths.size(), path.count('/') + 1);
        QCOMPARE(result.paths.last(), path);
        const ConvertedFile::Instance &part = result.instances.back();
        QVERIFY(part.mesh >= 0);
        const QVector3D found = part.toFile.map(QVector3D(10, 0, 0));
        QCOMPARE(QVector3D(qRound(found.x()), qRound(found.y()), qRound(found.z())), place);
        QCOMPARE(result.colors[path], QStringList(grey));
    }

    void looks_data()
    {
        QTest::addColumn<QByteArray>("entities");
        QTest::addColumn<QStringList>("colors");
        const QByteArray blue = "#140=PRESENTATION_STYLE_ASSIGNMENT((#141));"
                                "#141=SURFACE_STYLE_USAGE(.BOTH.,#142);"
                                "#142=SURFACE_SIDE_STYLE('',(#143));"
                                "#143=SURFACE_STYLE_RENDERING_WITH_PROPERTIES($,#144,(#145));"
                                "#144=COLOUR_RGB('',0.,0.,1.);"
                                "#145=SURFACE_STYLE_TRANSPARENT(0.25);";
        const QString blueName = "0.00 0.00 1.00 0.75";
        QTest::newRow("face and solid")
            << blue + "#146=STYLED_ITEM('',(#140),#17);" << QStringList({blueName, grey});
        QTest::newRow("occurrence") << blue
                + "#146=STYLED_ITEM('',(#147),#15);"
                  "#147=PRESENTATION_STYLE_BY_CONTEXT((#141),#148);"
                  "#148=SHAPE_REPRESENTATION('',(#11),#68);"
                  "#149=SHAPE_DEFINITION_REPRESENTATION(#112,#148);"
                                    << QStringList(blueName);
        QTest::newRow("face of a solid that is shifted")
            << blue + "#146=STYLED_ITEM('',(#140),#17);" + shifted << QStringList({blueName, grey});
        QTest::newRow("context that is the part's own") << blue
                + "#146=STYLED_ITEM('',(#147),#15);"
                  "#147=PRESENTATION_STYLE_BY_CONTEXT((#141),#10);"
                                                        << QStringList(blueName);
        QTest::newRow("transparency before the colour")
            << QByteArray(blue).replace("(#143)", "(#143,#150)")
                + "#146=STYLED_ITEM('',(#140),#15);"
                  "#150=SURFACE_STYLE_FILL_AREA(#151);"
                  "#151=FILL_AREA_STYLE('',(#152));"
                  "#152=FILL_AREA_STYLE_COLOUR('',#144);"
            << QStringList(blueName);
        QTest::newRow("overridden behind") << blue
                + "#146=OVER_RIDING_STYLED_ITEM('',(#140),#17,#147);"
                  "#147=STYLED_ITEM('',(#153),#17);"
                  "#153=PRESENTATION_STYLE_ASSIGNMENT((#154));"
                  "#154=SURFACE_STYLE_USAGE(.BOTH.,#155);"
                  "#155=SURFACE_SIDE_STYLE('',(#156));"
                  "#156=SURFACE_STYLE_RENDERING_WITH_PROPERTIES($,#157,());"
                  "#157=COLOUR_RGB('',1.,0.,0.);"
                                           << QStringList({blueName, grey});
        QTest::newRow("hidden elsewhere") << blue
                + "#146=STYLED_ITEM('',(#147),#15);"
                  "#147=PRESENTATION_STYLE_BY_CONTEXT((#141),#148);"
                  "#148=SHAPE_REPRESENTATION('',(#11),#68);"
                  "#149=INVISIBILITY((#146));"
                  "#150=SHAPE_DEFINITION_REPRESENTATION(#151,#148);"
                  "#151=PRODUCT_DEFINITION_SHAPE('','',#152);"
                  "#152=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#9998,#9997,$);"
                                          << QStringList(grey);
        QTest::newRow("hidden") << QByteArray("#146=INVISIBILITY((#75));") << QStringList();
        QTest::newRow("hidden without a style")
            << QByteArray("#146=INVISIBILITY((#147));#147=STYLED_ITEM('',$,#15);") << QStringList();
        QTest::newRow("hidden layer")
            << QByteArray("#146=INVISIBILITY((#147));"
                          "#147=PRESENTATION_LAYER_ASSIGNMENT('L','',(#15));")
            << QStringList();
        QTest::newRow("broken style") << QByteArray("#146=STYLED_ITEM('',(#147),#17);"
                                                    "#147=PRESENTATION_STYLE_ASSIGNMENT((#148));"
                                                    "#148=SURFACE_STYLE_USAGE(.BOTH.,$);")
                                      << QStringList(grey);
    }

    void looks()
    {
        QFETCH(const QByteArray, entities);
        ConverterFixture fixture;
        const bool isShifted = entities.contains(shifted);
        fixture.convert(
            fixture.write("x.step",
                          file(isShifted ? solid : QByteArray(), emptyPart, usual + entities)),
            R"({"RemoveEmptyGroups": false})");
        QTEST(fixture.result().colors["asm/base"], "colors");
    }

    /// What the file says of its product, and what was read of it.
    void properties_data()
    {
        QTest::addColumn<QByteArray>("whole");
        QTest::addColumn<QByteArray>("volume");
        QTest::addColumn<double>("scale"); // of the assembly's volume
        QTest::addColumn<QString>("message");
        QTest::newRow("right") << usual << QByteArray("100530.96") << 1. << "";
        QTest::newRow("scaled") << QByteArray(mapped).replace("#113,#108", "#113,#180")
                + "#180=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',$,$,#105,2.,$);"
                                << QByteArray("100530.96") << 8. << "";
        QTest::newRow("wrong") << usual << QByteArray("101000.") << 1.
                               << "x.step is damaged: 2 products differ from what the file states "
                                  "for them, the first is \"base\": volume 100530.964915 instead "
                                  "of 101000.000000.";
    }

    void properties()
    {
        QFETCH(const QByteArray, whole);
        QFETCH(const QByteArray, volume);
        QFETCH(const double, scale);
        ConverterFixture fixture;
        // The assembly's in cubic centimetres.
        const QByteArray entities = "#150=PROPERTY_DEFINITION_REPRESENTATION(#151,#152);"
                                    "#151=PROPERTY_DEFINITION('','',#5);"
                                    "#152=REPRESENTATION('volume',(#153),#68);"
                                    "#153=MEASURE_REPRESENTATION_ITEM('volume measure',"
                                    "VOLUME_MEASURE("
            + volume
            + "),#154);"
              "#154=DERIVED_UNIT((#155));#155=DERIVED_UNIT_ELEMENT(#69,3.);"
              "#160=PROPERTY_DEFINITION_REPRESENTATION(#161,#162);"
              "#161=PROPERTY_DEFINITION('','',#104);"
              "#162=REPRESENTATION('volume',(#163),#68);"
              "#163=MEASURE_REPRESENTATION_ITEM('volume measure',VOLUME_MEASURE("
            + QByteArray::number(scale * volume.toDouble() / 1000, 'f', 5)
            + "),#164);"
              "#164=DERIVED_UNIT((#165));#165=DERIVED_UNIT_ELEMENT(#166,3.);"
              "#166=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.CENTI.,.METRE.));"
              "#170=PROPERTY_DEFINITION_REPRESENTATION(#151,#171);"
              "#171=REPRESENTATION('',(#172),#68);"
              "#172=DESCRIPTIVE_REPRESENTATION_ITEM('maker','us');";
        const auto outcome = fixture.convert(
            fixture.write("x.step", file({}, {}, whole + entities)), R"({"ImportMetadata": true})");
        QTEST(QString::fromStdString(outcome.message), "message");
        const ConvertedFile result = fixture.result();
        const auto &nodes = result.document["nodes"];
        QVERIFY(std::any_of(nodes.begin(), nodes.end(), [](const auto &node) {
            return node.contains("extras") && node["extras"].value("maker", "") == "us";
        }));
    }
};

QTEST_GUILESS_MAIN(tst_StepAssembly)
#include "tst_StepAssembly.moc"
