#include "ConverterProcess.h"
#include "GlbFile.h"
#include "RecordingReport.h"

#include <QTemporaryDir>
#include <QtTest>

/// The program as people call it.
class tst_CommandLine : public QObject {
    Q_OBJECT

private slots:
    void usage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("output"); // begins the standard output
        QTest::addColumn<QByteArray>("errors"); // stands in the standard error
        QTest::newRow("help") << QStringList("--help") << 0 << QByteArray("Usage: tnconvert")
                              << QByteArray();
        QTest::newRow("version") << QStringList("--version") << 0 << QByteArray("tnconvert ")
                                 << QByteArray();
        QTest::newRow("formats") << QStringList("--list-formats") << 0
                                 << QByteArray(
                                        "Step: .stp .step .p21\nIges: .igs .iges\nSTL: .stl\n"
                                        "Obj: .obj\nVRML: .wrl")
                                 << QByteArray();
        QTest::newRow("nothing") << QStringList() << 2 << QByteArray() << QByteArray("Usage:");
        QTest::newRow("one file") << QStringList("a.stl") << 2 << QByteArray()
                                  << QByteArray("Usage:");
        QTest::newRow("unknown option") << QStringList({"--fast", "a.stl", "b.glb"}) << 2
                                        << QByteArray() << QByteArray("--fast");
        QTest::newRow("settings without a file") << QStringList({"a.stl", "b.glb", "--settings"})
                                                 << 2 << QByteArray() << QByteArray("--settings");
        QTest::newRow("worker with files")
            << QStringList({"--worker", "a.stl"}) << 2 << QByteArray() << QByteArray("--worker");
        QTest::newRow("missing file") << QStringList({"no.stl", "no.glb"}) << 1 << QByteArray()
                                      << QByteArray("no.stl does not exist.");
        QTest::newRow("missing settings")
            << QStringList({"a.stl", "b.glb", "--settings", "no.json"}) << 1 << QByteArray()
            << QByteArray("no.json");
    }

    void usage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, errors);
        const RunResult run = runConverter(arguments);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY2(run.output.startsWith(output), run.output);
        QCOMPARE(run.output.isEmpty(), output.isEmpty());
        QVERIFY2(run.errors.contains(errors), run.errors);
    }

    void settingsFile()
    {
        QTemporaryDir directory;
        const QString output = directory.filePath("out.glb");
        writeFile(directory.filePath("s.json"), R"({"MergeGeometries": false, "UseStitching": 1})");
        const RunResult run = runConverter(
            {TN_SAMPLES_DIR "/housing.iges", output, "--settings", directory.filePath("s.json")});
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.errors.contains("Warning: The setting UseStitching"), run.errors);
        QVERIFY2(run.errors.contains("Writing: 100 %"), run.errors);
        QVERIFY(run.output.isEmpty());
        QCOMPARE(GlbFile(output).meshCount(), 12);
    }

    void missingPartsHaveTheirOwnCode()
    {
        QTemporaryDir directory;
        writeFile(directory.filePath("main.wrl"),
                  "#VRML V2.0 utf8\nInline { url \"no.wrl\" } Shape { geometry Box { } }\n");
        const RunResult run =
            runConverter({directory.filePath("main.wrl"), directory.filePath("out.glb")});
        QCOMPARE(run.exitCode, 3);
        QVERIFY2(run.errors.contains(directory.filePath("no.wrl").toUtf8()), run.errors);
        QVERIFY(QFile::exists(directory.filePath("out.glb")));
    }

    void unusualNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks and quotes") << "my \"first\" gear's.stl";
        QTest::newRow("signs") << "a&b %1 $HOME;#.stl";
        QTest::newRow("letters") << "Zahnrad-\u00E4\u00F6\u00DF-\u6B6F\u8ECA.stl";
        QTest::newRow("mixed case") << "GEAR.StL";
    }

    void unusualNames()
    {
        QFETCH(QString, name);
        QTemporaryDir directory;
        const QString input = directory.filePath(name);
        QVERIFY(QFile::copy(TN_SAMPLES_DIR "/gear.stl", input));
        QCOMPARE(runConverter({input, input + ".glb"}).exitCode, 0);
        const GlbFile file(input + ".glb");
        QCOMPARE(file.triangles(), 192);
        QCOMPARE(QString::fromStdString(file.document()["asset"]["extras"]["source"]), input);
        QCOMPARE(QString::fromStdString(file.document()["nodes"][0]["name"]),
                 QFileInfo(input).completeBaseName());
    }

    void decimalCommasDoNotMatter()
    {
        QTemporaryDir directory;
        const QByteArray before = qgetenv("LC_ALL");
        qputenv("LC_ALL", "de_DE.UTF-8");
        for (const char *name : {"bracket.step", "gear-ascii.stl", "chair.obj", "lamp.wrl"}) {
            const QString output = directory.filePath(name) + ".glb";
            QCOMPARE(runConverter({QString(TN_SAMPLES_DIR "/") + name, output}).exitCode, 0);
            QCOMPARE(GlbFile(output).problems(), QStringList());
        }
        qputenv("LC_ALL", before);
        const GlbFile::Box lamp{{-80, -10, -80}, {250, 220, 80}};
        QVERIFY(GlbFile(directory.filePath("lamp.wrl.glb")).box().isNear(lamp, 0.15));
    }
};

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
