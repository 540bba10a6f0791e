#include "ConverterProcess.h"
#include "GlbFile.h"
#include "RecordingReport.h"

#include <QTemporaryDir>
#include <QtTest>

/// The program as people call it.
class tst_CommandLine : public QObject {
    Q_OBJECT

private slots:
    void usage()
    {
        const struct {
            QStringList arguments;
            int exitCode;
            const char *output; // begins the standard output
            const char *errors; // stands in the standard error
        } rows[] = {
            {{"--help"}, 0, "Usage: tnconvert", ""},
            {{"--list-formats"},
             0,
             "Step: .stp .step .p21\nIges: .igs .iges\nSTL: .stl\nObj: .obj\nVRML: .wrl",
             ""},
            {{"a.stl"}, 2, "", "Usage:"},
            {{"--fast", "a.stl", "b.glb"}, 2, "", "--fast"},
            {{"a.stl", "b.glb", "--settings"}, 2, "", "--settings"},
            {{"--worker", "a.stl"}, 2, "", "--worker"},
            {{"no.stl", "no.glb"}, 1, "", "no.stl does not exist."},
            {{"a.stl", "b.glb", "--settings", "no.json"}, 1, "", "no.json"},
        };
        for (const auto &[arguments, exitCode, output, errors] : rows) {
            const RunResult run = runConverter(arguments);
            QVERIFY2(run.exitCode == exitCode, run.errors);
            QVERIFY2(run.output.startsWith(output), run.output);
            QCOMPARE(run.output.isEmpty(), *output == '\0');
            QVERIFY2(run.errors.contains(errors), run.errors);
        }
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

    void unusualNames()
    {
        QTemporaryDir directory;
        for (const char *name : {"my \"first\" gear's.stl", "a&b %1 $HOME;#.stl",
                                 "Zahnrad-\u00E4\u00F6\u00DF-\u6B6F\u8ECA.StL"}) {
            const QString input = directory.filePath(name);
            QVERIFY(QFile::copy(TN_SAMPLES_DIR "/gear.stl", input));
            QCOMPARE(runConverter({input, input + ".glb"}).exitCode, 0);
            const GlbFile file(input + ".glb");
            QCOMPARE(file.triangles(), 192);
            QCOMPARE(QString::fromStdString(file.document()["asset"]["extras"]["source"]), input);
            QCOMPARE(QString::fromStdString(file.document()["nodes"][0]["name"]),
                     QFileInfo(input).completeBaseName());
        }
    }
};

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
