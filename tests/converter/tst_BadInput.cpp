#include "ConverterFixture.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

/// One file that cannot be converted.
struct BadFile {
    const char *row;
    const char *name;
    QByteArray content;
    const char *message; ///< stands in the answer
};
Q_DECLARE_METATYPE(BadFile)

/// Files that cannot be converted: what people read about them, and that nothing is left behind.
class tst_BadInput : public QObject {
    Q_OBJECT

private:
    void verifyFailure(const tnconvert::Outcome &outcome, const char *message)
    {
        QCOMPARE(outcome.state, tnconvert::State::Failure);
        QVERIFY2(outcome.message.find(message) != std::string::npos, outcome.message.c_str());
    }

    static QByteArray read(const QString &path) { return ConverterFixture::read(path); }

private slots:
    void messages_data()
    {
        const QByteArray step = read("bracket.step");
        const QByteArray iges = read("housing.iges");
        QTest::addColumn<BadFile>("file");
        const BadFile files[] = {
            {"empty", "x.step", "", "x.step is empty."},
            {"Step without a product", "x.step",
             QByteArray(step).replace("PRODUCT_DEFINITION_SHAPE('','',#5)",
                                      "PRODUCT_DEFINITION_SHAPE('','',#9999)"),
             "need cannot be read, #4 PRODUCT_DEFINITION_SHAPE. Nothing else is left of x.step."},
            {"text as Step", "x.step", "Hello\n",
             "it does not begin with ISO-10303-21. It seems to be text"},
            {"Iges as Step", "x.stp", iges, "It seems to be an Iges file."},
            {"Step as Iges", "x.igs", step, "It seems to be a Step file."},
            {"PDF as VRML", "x.wrl", "%PDF-1.4\n", "It seems to be a PDF document."},
            {"VRML 1.0", "x.wrl", "#VRML V1.0 ascii\nSeparator { }", "VRML 1.0"},
            {"letter as STL", "x.stl", QByteArray("Dear reader,\n").repeated(20),
             "x.stl is not an STL file"},
            {"half a Step file", "x.step", step.left(step.size() / 2),
             "its last line END-ISO-10303-21; is missing"},
            {"half an Iges file", "x.iges", iges.left(iges.size() / 2), "marked T in column 73"},
            // The kernel would run on these without end.
            {"Step: undefined coordinate", "x.step",
             QByteArray(step).replace("('',(0.,0.,0.))", "('',(nan,0.,0.))"),
             "x.step is damaged: it has impossible coordinates."},
            {"Iges: infinite coordinate", "x.iges",
             QByteArray(iges).replace("0.,10.,0.;   ", "0.,1.D400,0.;"),
             "x.iges is damaged: it has impossible coordinates."},
            {"half a binary STL", "x.stl", read("gear.stl").left(5000),
             "192 triangles but has room for only 98"},
            {"half a text STL", "x.stl", read("gear-ascii.stl").left(3000), "damaged at line"},
            {"STL: decimal comma", "x.stl",
             "solid a\nfacet normal 0 0 1\nouter loop\nvertex 1 2,5 x\n",
             "damaged at line 4: a vertex has not three coordinates"},
            {"Obj: no faces", "x.obj", "v 1 2 3\n", "no geometry"},
            {"Obj: undefined coordinate", "x.obj",
             "# a\r\nv 0 \\\r\n0 0\r\nv nan 0 0\r\nv 0 1 0\r\nf 1 2 3\r\n",
             "damaged at line 4: a vertex has not three coordinates"},
            {"Obj: two coordinates", "x.obj", "v 0 0 0\nv 1 0\nv 0 1 0\nf 1 2 3\n",
             "damaged at line 2: a vertex"},
            {"Obj: decimal comma", "x.obj", "v 0 0 0\nv 1 0 0\nv 0 1,5 0\nf 1 2 3\n",
             "damaged at line 3: a vertex"},
            {"Step: finite elements", "x.stp",
             "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AP209_MULTIDISCIPLINARY_ANALYSIS_AND_DESIGN'))"
             ";\nENDSEC;\nDATA;\n#1=NODE('1',(),$,$);\nENDSEC;\nEND-ISO-10303-21;\n",
             "x.stp is an analysis model (AP209)"},
            {"Step: nothing", "x.stp",
             "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
             "#1=DIRECTION('',(0.,0.,1.));\nENDSEC;\nEND-ISO-10303-21;\n",
             "x.stp contains no geometry."},
            {"unknown suffix", "x.xyz", "a", "not known by its suffix"},
        };
        for (const BadFile &file : files)
            QTest::newRow(file.row) << file;
    }

    void messages()
    {
        QFETCH(const BadFile, file);
        ConverterFixture fixture;
        const QString input = fixture.write(file.name, file.content);
        fixture.write("out.glb", "from before");
        verifyFailure(fixture.convertTo("out.glb", input), file.message);
        QCOMPARE(read(fixture.path("out.glb")), QByteArray("from before"));
        QCOMPARE(QDir(fixture.path("")).entryList(QDir::Files).size(), 2);
    }

    /// What is wrong with these costs no more than the materials.
    void damagedObjFiles()
    {
        const struct {
            QByteArray content;
            const char *warning;
            int triangles;
        } rows[] = {
            {"mtllib pipe.mtl\nf 1 2 3\n", "pipe.mtl is not a regular file.", 1},
            {"mtllib no.mtl\nf 1 2 3\n", "no.mtl does not exist.", 1},
            {"vcolor 1 0 0\nvcolor 1 1 0\nf 1 2 3\n",
             "2 statements of unknown kinds, as vcolor at line 6", 1},
            {"f 1 2 3\nparm u 0 \\\n 1 2 3\nmtllib no.mtl\n", "no.mtl does not exist.", 1},
            {"mtllib no.mtl red.mtl\nusemtl red\nf 1 2 \\\n3\n", "no.mtl does not exist.", 1},
        };
        for (const auto &[content, warning, triangles] : rows) {
            ConverterFixture fixture;
            // A pipe that nobody writes to blocks whoever opens it.
            QCOMPARE(mkfifo(QFile::encodeName(fixture.path("pipe.mtl")), 0600), 0);
            fixture.write("red.mtl", "newmtl red\nKd 1 0 0\n");
            const QString input =
                fixture.write("x.obj", "v 0 0 +0\n# a\\\nv 1e3 0 0\nv .5 \\\n1 0\n" + content);
            const tnconvert::Outcome outcome = fixture.convert(input);
            QVERIFY2(fixture.warnings.join('\n').contains(warning), content);
            QCOMPARE(outcome.state, tnconvert::State::Success);
            const ConvertedFile file = fixture.result();
            QCOMPARE(file.triangles, triangles);
            QVERIFY2(file.fills({{0, 0, 0}, {1000, 1, 0}}, 1e-4F), content);
            const bool isRed = file.colors.values().contains(QStringList("1.00 0.00 0.00 1.00"));
            QCOMPARE(isRed, content.contains("usemtl"));
        }
    }

    void placesThatDoNotWork()
    {
        ConverterFixture fixture;
        const QString gear = fixture.write("gear.stl", read("gear.stl"));
        for (const char *name : {"dir.step", "locked.glb.part"})
            QVERIFY(QDir(fixture.path("")).mkdir(name));
        const struct {
            QString input;
            const char *output;
            const char *message;
        } rows[] = {
            {"no.step", "out.glb", "no.step does not exist"},
            {fixture.path("dir.step"), "out.glb", "is a directory"},
            {gear, "dir.step", "is a directory"},
            {gear, "no/out.glb", "for the output does not exist"},
            {gear, "gear.stl", "overwrite the input"},
            {gear, "locked.glb", "cannot be written"},
        };
        for (const auto &[input, output, message] : rows)
            verifyFailure(fixture.convertTo(output, input), message);
        QCOMPARE(read(gear), read("gear.stl"));
        QFile::setPermissions(gear, {});
        if (geteuid() != 0) // Permissions do not bind the superuser.
            verifyFailure(fixture.convert(gear), "cannot be read");
    }

    void outputsThatDoNotFit()
    {
        ConverterFixture fixture;
        fixture.write("out.glb", "from before");
        rlimit limit{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
        const rlimit small{1000, limit.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const tnconvert::Outcome outcome = fixture.convertTo("out.glb", "gear.stl");
        setrlimit(RLIMIT_FSIZE, &limit);
        verifyFailure(outcome, "out.glb cannot be written: it would be larger than a file may be");
        QCOMPARE(read(fixture.path("out.glb")), QByteArray("from before"));
        QVERIFY(!QFile::exists(fixture.path("out.glb.part")));
    }

    void linksAtTheOutput()
    {
        ConverterFixture fixture;
        const QString target = fixture.write("target", "precious");
        for (const char *name : {"a.glb", "a.glb.part"})
            QVERIFY(QFile::link(target, fixture.path(name)));
        QCOMPARE(fixture.convertTo("a.glb", "gear.stl").state, tnconvert::State::Success);
        QCOMPARE(read(target), QByteArray("precious"));
        QVERIFY(!QFileInfo(fixture.path("a.glb")).isSymLink());
        QCOMPARE(ConvertedFile(fixture.path("a.glb")).triangles, 192);
    }

    /// Facets that are stated and cannot be drawn are counted, and the rest is kept.
    void missingFacets_data()
    {
        const QByteArray gear = read("gear.stl");
        const QByteArray textGear = read("gear-ascii.stl");
        const int loop = textGear.indexOf("vertex");
        const QByteArray firstCorners = textGear.mid(loop, textGear.indexOf("endloop") - loop);
        const QByteArray points = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
        const QByteArray square =
            "#VRML V2.0 utf8\nShape { geometry IndexedFaceSet { coord Coordinate { point [0 0 0 1 "
            "0 0 1 1 0 0 1 0 nan 0 0] } coordIndex [0 1 2 -1 ";
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("loss");
        QTest::addColumn<int>("triangles"); // 0: the conversion fails
        const struct {
            const char *row;
            const char *name;
            QByteArray content;
            const char *loss;
            int triangles;
        } rows[] = {
            {"STL: cut, and count too small", "x.stl",
             QByteArray(gear).replace(80, 1, "d").chopped(20), "The file ends within triangle 192.",
             191},
            {"STL: something else behind", "x.stl", gear + QByteArray(60, 'x'),
             "Behind the last triangle that is announced stand 60 bytes that are no triangles.",
             192},
            {"STL: undefined coordinate", "x.stl",
             QByteArray(gear).replace(96, 4, "\xFF\xFF\xFF\x7F"),
             "1 of 192 triangles have impossible coordinates.", 191},
            {"STL: facet without corners", "x.stl", QByteArray(textGear).replace(firstCorners, ""),
             "1 of 192 triangles have no corners.", 191},
            {"Obj: indices", "x.obj", points + "f 1 2 99\nf -9 1 2\nf 1 0 2\nf 1 2\nf 1 2 3\n",
             "4 of 5 faces have indices out of range or fewer than three corners.", 1},
            {"Obj: no keyword", "x.obj", points + "1 2 3\n1//1 2//2 3//3\nF 1 2 3\nf 1 2 3\n",
             "3 lines are no statements of this format, first line 4.", 1},
            {"Obj: far away", "x.obj", points + "v 1e31 0 0\nf 1 2 3\nf 1 2 4\nf 1 2 3 4\n",
             "2 triangles have impossible coordinates.", 2},
            {"Obj: free forms", "x.obj", points + "f -3 -2 -1\nsurf 0 1 0 1 1 2 3\n",
             "1 free-form surfaces are not read.", 1},
            {"Obj: nothing left", "x.obj", points + "f 1 2 99\n",
             "1 of 1 faces have indices out of range or fewer than three corners. Nothing else is "
             "left of x.obj.",
             0},
            {"VRML: indices and coordinates", "x.wrl", square + "0 1 9 -1 0 2 4] } }",
             "Missing faces with indices out of range or impossible coordinates: 2.", 1},
            {"VRML: unknown name", "x.wrl", square + "] } } USE Wheel",
             "Missing uses of nodes that are not defined: 1.", 1},
            {"VRML: heights", "x.wrl",
             square
                 + "] } } Shape { geometry ElevationGrid { xDimension 2 zDimension 2 height [0 0 "
                   "0] } }",
             "Missing elevation grids without all of their heights: 1.", 1},
        };
        for (const auto &row : rows)
            QTest::newRow(row.row)
                << QString(row.name) << row.content << QString(row.loss) << row.triangles;
    }

    void missingFacets()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, content);
        QFETCH(const int, triangles);
        ConverterFixture fixture;
        const tnconvert::Outcome outcome = fixture.convert(fixture.write(name, content));
        QTEST(QString::fromStdString(outcome.message), "loss");
        QCOMPARE(outcome.state,
                 triangles > 0 ? tnconvert::State::Incomplete : tnconvert::State::Failure);
        QVERIFY(triangles == 0 || fixture.result().triangles == triangles);
    }

    void facetsBehindTheCount()
    {
        ConverterFixture fixture;
        for (const char count : {0, 1, 100}) {
            const QByteArray gear = read("gear.stl").replace(80, 1, QByteArray(1, count));
            QCOMPARE(fixture.convert(fixture.write("x.stl", gear)).state,
                     tnconvert::State::Success);
            QCOMPARE(fixture.result().triangles, 192);
            QVERIFY(fixture.warnings.last().contains("and has 192; all are read."));
        }
    }

    /// Few bytes that would become a lot, which is told before it is done.
    void bounds()
    {
        QByteArray numbers;
        for (int i = 0; i < 8000; ++i)
            numbers += QByteArray::number(i) + ' ';
        ConverterFixture fixture;
        const QString input =
            fixture.write("x.wrl",
                          "#VRML V2.0 utf8\nShape { geometry Extrusion { crossSection [" + numbers
                              + numbers + "] spine [" + numbers.repeated(3) + "] } }");
        verifyFailure(fixture.convert(input),
                      "An extrusion has too many triangles: 128000000, and at most 50000000");
    }
};

QTEST_GUILESS_MAIN(tst_BadInput)
#include "tst_BadInput.moc"
