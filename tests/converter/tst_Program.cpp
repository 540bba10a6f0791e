#include "ConverterFixture.h"
#include "ConverterProcess.h"

#include <QJsonArray>
#include <QtTest>

#include <csignal>

/// One call of the program.
struct Call {
    const char *name;
    QStringList arguments;
    int exitCode;
    const char *output; ///< begins the standard output
    const char *errors; ///< stands in the standard error
};
Q_DECLARE_METATYPE(Call)

/// The program as people call it, and conversations with a worker, as the host holds them.
class tst_Program : public QObject {
    Q_OBJECT

private:
    /// Sets that contain two of the next kind each, 40 times over, keep the kernel busy.
    static QByteArray busyFile()
    {
        QByteArray sets = "#1040=GEOMETRIC_SET('',(#12));\n";
        for (int i = 1000; i < 1040; ++i)
            sets += QString("#%1=GEOMETRIC_SET('',(#%2,#%2));\n").arg(i).arg(i + 1).toUtf8();
        return ConverterFixture::read("bracket.step")
            .replace("(#11,#15)", "(#11,#15,#1000)")
            .replace("ENDSEC;\nEND-ISO", sets + "ENDSEC;\nEND-ISO");
    }

private slots:
    void usage_data()
    {
        QTest::addColumn<Call>("call");
        const Call calls[] = {
            {"help", {"--help"}, 0, "Usage: tnconvert", ""},
            {"formats",
             {"--list-formats"},
             0,
             "Step: .stp .step .p21\nIges: .igs .iges\nSTL: .stl\nObj: .obj\nVRML: .wrl",
             ""},
            {"no output", {"a.stl"}, 2, "", "Usage:"},
            {"unknown option", {"--fast", "a.stl", "b.glb"}, 2, "", "--fast"},
            {"unknown healing", {"a.stl", "b.glb", "--healing", "some"}, 2, "", "some"},
            {"no number of threads", {"a.stl", "b.glb", "--threads", "-1"}, 2, "", "-1"},
            {"no settings", {"a.stl", "b.glb", "--settings"}, 2, "", "--settings"},
            {"silence", {"a.stl", "b.glb", "--silence", "-1"}, 2, "", "--silence wants"},
            {"worker with a file", {"--worker", "a.stl"}, 2, "", "--worker"},
            {"missing input", {"no.stl", "no.glb"}, 1, "", "no.stl does not exist."},
            {"missing settings", {"a.stl", "b.glb", "--settings", "no.json"}, 1, "", "no.json"},
            {"directory as settings",
             {"a.stl", "b.glb", "--settings", "."},
             1,
             "",
             ". is no readable JSON object"},
        };
        for (const Call &call : calls)
            QTest::newRow(call.name) << call;
    }

    void usage()
    {
        QFETCH(const Call, call);
        ConverterProcess run(call.arguments);
        QCOMPARE(run.end(), call.exitCode);
        const QByteArray output = run.readAllStandardOutput();
        QVERIFY2(output.startsWith(call.output) && output.isEmpty() == !*call.output, output);
        QVERIFY(run.readAllStandardError().contains(call.errors));
    }

    void deliversTheSameOnManyCores()
    {
        ConverterFixture fixture;
        QByteArray outputs[2];
        for (const int i : {0, 1}) {
            const QString output = fixture.path("out.glb");
            ConverterProcess run(
                {TN_SAMPLES_DIR "/gearbox.step", output, "--threads", i ? "4" : "1"});
            QCOMPARE(run.end(), 0);
            outputs[i] = ConverterFixture::read(output);
        }
        QVERIFY(outputs[0] == outputs[1]);
    }

    void settingsFile()
    {
        ConverterFixture fixture;
        ConverterProcess run(
            {TN_SAMPLES_DIR "/housing.iges", fixture.path("out.glb"), "--settings",
             fixture.write("s.json", R"({"MergeGeometries": false, "UseStitching": 1})")});
        QCOMPARE(run.end(), 0);
        const QByteArray errors = run.readAllStandardError();
        QVERIFY2(errors.contains("Warning: The setting UseStitching"), errors);
        QVERIFY2(errors.contains("Writing: 100 %"), errors);
        QVERIFY(run.readAllStandardOutput().isEmpty());
        QCOMPARE(fixture.result().meshCount, 12);
    }

    void missingPartsHaveTheirOwnCode()
    {
        ConverterFixture fixture;
        const QString input = fixture.write(
            "a.wrl", "#VRML V2.0 utf8\nInline { url \"no.wrl\" } Shape { geometry Box { } }\n");
        ConverterProcess run({input, fixture.path("out.glb")});
        QCOMPARE(run.end(), 3);
        QVERIFY(run.readAllStandardError().contains(fixture.path("no.wrl").toUtf8()));
        QCOMPARE(fixture.result().triangles, 12);
    }

    void endsInSilence()
    {
        const ConverterFixture fixture;
        const QString input = fixture.write("x.step", busyFile());
        fixture.write("out.glb.part", "half");
        ConverterProcess run({input, fixture.path("out.glb"), "--silence", "1"});
        QCOMPARE(run.end(), 1);
        const QByteArray errors = run.readAllStandardError();
        QVERIFY2(errors.endsWith("tnconvert: The conversion of x.step reported nothing for 1 "
                                 "seconds and was ended.\n"),
                 errors);
        QVERIFY(!QFile::exists(fixture.path("out.glb.part")));
    }

    /// Who starts the program may give it less than it allows itself.
    void endsWithItsProcessorTime()
    {
        const ConverterFixture fixture;
        QProcess shell;
        shell.start("/bin/sh",
                    {"-c", "ulimit -St 1; '" TN_BIN_DIR "/tnconvert' \"$0\" \"$1\"; echo $?",
                     fixture.write("x.step", busyFile()), fixture.path("out.glb")});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.readAllStandardOutput().trimmed().toInt(), 128 + SIGXCPU);
    }

    void unusualNames()
    {
        const ConverterFixture fixture;
        for (const char *name : {"my \"first\" gear's.stl", "a&b %1 $HOME;#.stl",
                                 "Zahnrad-\u00E4\u00F6\u00DF-\u6B6F\u8ECA.StL"}) {
            const QString input = fixture.write(name, ConverterFixture::read("gear.stl"));
            QCOMPARE(ConverterProcess({input, input + ".glb"}).end(), 0);
            const ConvertedFile file(input + ".glb");
            QCOMPARE(file.triangles, 192);
            QVERIFY(file.document["asset"]["extras"]["source"]
                    == QFileInfo(input).fileName().toStdString());
            QVERIFY(file.document["nodes"][0]["name"]
                    == QFileInfo(input).completeBaseName().toStdString());
        }
    }

    void optionsThatWidenWhatIsTold()
    {
        const ConverterFixture fixture;
        QDir(fixture.path("")).mkdir("in");
        fixture.write("box.wrl", "#VRML V2.0 utf8\nShape { geometry Box { } }");
        const QString input = fixture.write("in/a\x1b[31m\u009b.wrl", // turns a terminal red
                                            "#VRML V2.0 utf8\nInline { url \"../box.wrl\" }");
        const QString output = fixture.path("out.glb");
        ConverterProcess refused({input, output});
        QCOMPARE(refused.end(), 1);
        const QByteArray errors = refused.readAllStandardError();
        QVERIFY2(errors.contains("outside the folder of a [31m .wrl"), errors);
        QVERIFY(!errors.contains('\x1b') && !errors.contains("\xC2\x9B"));
        QCOMPARE(ConverterProcess({input, output, "--follow-outside", "--full-source"}).end(), 0);
        QVERIFY(ConvertedFile(output).document["asset"]["extras"]["source"]
                == QString(input).replace('\x1b', ' ').replace(QChar(0x9b), ' ').toStdString());
    }

    void manyFilesInOneWorker()
    {
        const ConverterFixture fixture;
        ConverterProcess worker;
        const QJsonObject ready = worker.next();
        QCOMPARE(ready["event"].toString(), QString("ready"));
        QCOMPARE(ready["version"].toInt(), 2);
        QStringList program;
        for (const QJsonValue &path : ready["program"].toArray())
            program << path.toString();
        QCOMPARE(program.value(0), QFileInfo(TN_BIN_DIR "/tnconvert").canonicalFilePath());
        QCOMPARE(program.filter("/libTKMath.so").size(), 1);
        QCOMPARE(ready["formats"].toArray(), QJsonArray({"Step", "Iges", "STL", "Obj", "VRML"}));

        // All requests at once: the host need not wait for an answer. Types win over suffixes.
        const QString data = fixture.write("gear.dat", ConverterFixture::read("gear.stl"));
        const struct {
            QString input;
            bool isGood;
            const char *type = "";
        } rows[] = {{"bracket.step", true}, {"no-such.step", false}, {"housing.iges", true},
                    {data, true, "STL"},    {data, false, "Step"},   {data, false, "Cake"},
                    {"bracket.step", true}};
        int id = 10;
        for (const auto &[input, isGood, type] : rows) {
            worker.convert(id, input, fixture.path(QString::number(id)), {{"type", type}});
            ++id;
        }
        id = 10;
        for (const auto &[input, isGood, type] : rows) {
            const QList<QJsonObject> events = worker.untilFinished();
            QCOMPARE(events.first()["event"].toString(), QString("started"));
            double percent = 0;
            for (const QJsonObject &event : events) {
                QCOMPARE(event["id"].toInt(), id);
                if (event["event"] != "progress")
                    continue;
                QVERIFY(event["percent"].toDouble() >= percent);
                QVERIFY(!event["message"].toString().isEmpty());
                percent = event["percent"].toDouble();
            }
            const QJsonObject &last = events.last();
            QCOMPARE(last["state"].toString(), QString(isGood ? "success" : "failure"));
            QCOMPARE(last["message"].toString().isEmpty(), isGood);
            QVERIFY(!isGood || percent == 100.0);
            QVERIFY(last["seconds"].toDouble() >= 0);
            QCOMPARE(QFile::exists(fixture.path(QString::number(id++))), isGood);
        }
        QCOMPARE(ConverterFixture::read(fixture.path("16")),
                 ConverterFixture::read(fixture.path("10")));
        QCOMPARE(worker.end(), 0);
        QCOMPARE(worker.readAllStandardOutput(), QByteArray());
    }

    void requestsThatAreNone()
    {
        const std::pair<QByteArray, int> requests[] = {
            // each with the id of its answer
            {"}{\xFF", 0},
            {"", 0},
            {"[1]", 0},
            {QByteArray("[").repeated(100000), 0},
            {R"({"command":"dance","id":4})", 4},
            {R"({"command":"convert","id":5,"output":"/x"})", 5},
            {R"({"command":"convert","id":"7","input":"/a","output":"/b"})", 0},
            {R"({"command":"convert","id":8,"input":"/a","output":"/b","type":1})", 8},
            {R"({"command":"convert","id":9,"input":["/a"],"output":"/b"})", 9},
        };
        ConverterProcess worker;
        worker.next();
        for (const auto &[line, id] : requests) {
            worker.send(line);
            const QJsonObject answer = worker.next();
            QCOMPARE(answer["event"].toString(), QString("finished"));
            QCOMPARE(answer["state"].toString(), QString("failure"));
            QCOMPARE(answer["id"].toInt(-1), id);
            QVERIFY(!answer["message"].toString().isEmpty());
        }
        QFile limits(QString("/proc/%1/limits").arg(worker.processId()));
        QVERIFY(limits.open(QIODevice::ReadOnly));
        const QByteArray bounds = limits.readAll().simplified();
        QVERIFY2(bounds.contains("Max cpu time 14400 14401 seconds"), bounds);
        QVERIFY2(bounds.contains("Max file size 4294967296 4294967297 bytes"), bounds);
        // It serves on, and has given up what it does not need.
        QFile status(QString("/proc/%1/status").arg(worker.processId()));
        QVERIFY(status.open(QIODevice::ReadOnly));
        const QByteArray facts = status.readAll();
        QVERIFY2(facts.contains("NoNewPrivs:\t1\n") && facts.contains("Seccomp:\t2\n"), facts);
        const ConverterFixture fixture;
        worker.convert(1, "gear.stl", fixture.path("out.glb"));
        QCOMPARE(worker.untilFinished().last()["state"].toString(), QString("success"));
        worker.send(R"({"command":"quit"})");
        QVERIFY(worker.waitForFinished());
        QCOMPARE(worker.exitCode(), 0);
    }

    void partsAndWarnings()
    {
        const ConverterFixture fixture;
        ConverterProcess worker;
        worker.next();
        worker.convert(
            3, "assembly/robot.step", fixture.path("out.glb"),
            {{"settings", QJsonObject{{"ChordDeviation", "coarse"}, {"NormalTolerance", -3}}}});
        QString told;
        for (const QJsonObject &event : worker.untilFinished()) {
            const QString kind = event["event"].toString();
            if (kind != "progress")
                told += kind + ' ' + event["state"].toString() + ',';
            QVERIFY(!kind.startsWith("part") || QFileInfo::exists(event["file"].toString()));
        }
        QCOMPARE(told,
                 "started ,warning ,warning ,"
                     + QString("reference ,part ,partFinished success,").repeated(3)
                     + "finished success,");
    }

    void endsWhenNobodyListens()
    {
        QProcess shell;
        shell.start("/bin/sh",
                    {"-c",
                     "exec 3>&1; (while sleep 0.1; do echo x; done) | ('" TN_BIN_DIR
                     "/tnconvert' --worker; echo ended $? >&3) | head -n 1 >/dev/null"});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.readAllStandardOutput(), QByteArray("ended 1\n"));
    }

    void diesWithItsHost()
    {
        // A shell stands for the host; the worker's requests do not end when it is killed.
        QProcess host;
        host.start("/bin/sh",
                   {"-c", "sleep 20 | '" TN_BIN_DIR "/tnconvert' --worker >&2 & echo $!; wait"});
        QVERIFY(host.waitForReadyRead());
        const QString worker = "/proc/" + host.readAllStandardOutput().trimmed() + "/cmdline";
        const auto isRunning = [&worker] {
            QFile commandLine(worker);
            // Ended processes that nobody has waited for have no command line.
            return commandLine.open(QIODevice::ReadOnly)
                && commandLine.readAll().contains("--worker");
        };
        host.setReadChannel(QProcess::StandardError);
        QVERIFY(host.canReadLine() || host.waitForReadyRead()); // "ready"
        QVERIFY(isRunning());
        host.kill();
        host.waitForFinished();
        QTRY_VERIFY(!isRunning());
    }
};

QTEST_GUILESS_MAIN(tst_Program)
#include "tst_Program.moc"
