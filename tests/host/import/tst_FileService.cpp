#include "host/import/ServiceFixture.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

using tnCADFileTypes::FileType;

/// One file's way: which signals come, in which order, for all that can happen to it.
class tst_FileService : public QObject {
    Q_OBJECT

private slots:
    void reportsAFileInOrder_data();
    void reportsAFileInOrder();
    void survivesABrokenConverter_data();
    void survivesABrokenConverter();
    void toldSecondsLeaveThePartsOut();
    void settingsReachTheConverterAsTheyWereAtTheStart();
    void convertsAndLoadsWithTheRealConverter();
    void answersByName_data();
    void answersByName();
    void offersOptionsForAllButScripts();
    void answersEachTypeRequestOnce();
};

void tst_FileService::reportsAFileInOrder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<bool>("load");
    // Between "conversionStarted a" and "importProgressChanged"; %in is the folder of the inputs.
    QTest::addColumn<QStringList>("expected");

    const QString step = "a.step";
    const QStringList failed{"conversionEnded a.step Failure", "conversionFinished"};
    const auto failure = [&](const QString &message) {
        return QStringList{"conversionFailed a.step " + message} + failed;
    };

    QTest::newRow("success") << step << QByteArray("progress 10\nwarning A face is lost.\n")
                             << false
                             << QStringList{"progress a.step 10 Reading",
                                            "progress a.step 10 A face is lost.",
                                            "conversionEnded a.step Success", "conversionFinished"};
    QTest::newRow("success, loaded")
        << step << QByteArray("progress 0") << true
        << QStringList{"progress a.step 0 Reading", "conversionEnded a.step Success",
                       "conversionFinished",        "loadQueued a.step",
                       "loadStarted a.step",        "added a.step",
                       "loadEnded a.step Success"};
    QTest::newRow("failure") << step << QByteArray("finish failure It is damaged.") << true
                             << failure("It is damaged.");
    QTest::newRow("incomplete, loaded")
        << step
        << QByteArray("part p.step\npartdone p.step failure It is missing.\nwrite\n"
                      "finish incomplete p.step is missing.")
        << true
        << QStringList{"childAdded a.step p.step",
                       "conversionStarted p.step",
                       "conversionFailed p.step It is missing.",
                       "conversionEnded p.step Failure",
                       "childFinished a.step p.step",
                       "partsEnded a.step",
                       "progress a.step 0 p.step is missing.",
                       "conversionEnded a.step Incomplete",
                       "conversionFinished",
                       "loadQueued a.step",
                       "loadStarted a.step",
                       "added a.step",
                       "loadEnded a.step Incomplete"};
    const QStringList part{"childAdded a.step p.step", "conversionStarted p.step",
                           "conversionEnded p.step Success", "childFinished a.step p.step",
                           "partsEnded a.step"};
    const QByteArray partScript = "part p.step\npartdone p.step success\n";
    QTest::newRow("part, loaded") << step << partScript << true
                                  << part
            + QStringList{"conversionEnded a.step Success",
                          "conversionFinished",
                          "loadQueued a.step",
                          "loadStarted a.step",
                          "added a.step",
                          "loadStarted p.step",
                          "loadEnded p.step Success",
                          "loadEnded a.step Success"};
    QTest::newRow("part, assembly fails")
        << step << QByteArray(partScript + "finish failure No.") << true
        << part + failure("No.")
            + QStringList{"loadFailed p.step a.step was not converted.",
                          "loadEnded p.step Failure"};
    QTest::newRow("part, load fails")
        << step << QByteArray(partScript + "junk\nfinish success") << true
        << part
            + QStringList{"conversionEnded a.step Success",
                          "conversionFinished",
                          "loadQueued a.step",
                          "loadStarted a.step",
                          "loadStarted p.step",
                          "loadFailed p.step ?",
                          "loadEnded p.step Failure",
                          "loadFailed a.step ?",
                          "loadEnded a.step Failure"};
    const QString crash = "The converter crashed while reading a.step.";
    QTest::newRow("crash within a part")
        << step << QByteArray("part p.step\ncrash") << false
        << QStringList{"childAdded a.step p.step",         "conversionStarted p.step",
                       "conversionFailed p.step " + crash, "conversionEnded p.step Failure",
                       "childFinished a.step p.step",      "partsEnded a.step"}
            + failure(crash);
    QTest::newRow("crash") << step << QByteArray("half\ncrash") << false << failure(crash);
    QTest::newRow("exit") << step << QByteArray("exit 7") << false
                          << failure("The converter ended while reading a.step (exit status 7).");
    QTest::newRow("closed output")
        << step << QByteArray("close") << false
        << failure("The converter closed its output while reading a.step.");
    const QString nonsense =
        "The converter sent an answer that makes no sense while reading a.step.";
    QTest::newRow("no JSON") << step << QByteArray("say Segmentation fault") << false
                             << failure(nonsense);
    QTest::newRow("another file's answer")
        << step << QByteArray(R"(say {"event":"progress","id":999})") << false << failure(nonsense);
    QTest::newRow("unknown state")
        << step << QByteArray("finish splendid") << false << failure(nonsense);
    QTest::newRow("endless line") << step << QByteArray("flood") << false
                                  << failure("The converter sent an endless answer while reading "
                                             "a.step.");
    QTest::newRow("success without output") << step << QByteArray("finish success") << true
                                            << failure("The converter wrote no file for a.step.");

    QTest::newRow("missing") << step << QByteArray() << false
                             << failure("The file %in/a.step does not exist.");
    QTest::newRow("empty") << step << QByteArray("") << false
                           << failure("The file a.step is empty.");
    QTest::newRow("no converter")
        << "a.catpart" << QByteArray("hang") << false
        << QStringList{"conversionFailed a.catpart This host has no converter for Catia V5 files.",
                       "conversionEnded a.catpart Failure", "conversionFinished"};
    QTest::newRow("no converter after all")
        << "a.obj" << QByteArray("hang") << false
        << QStringList{"conversionFailed a.obj This host has no converter for Obj files.",
                       "conversionEnded a.obj Failure", "conversionFinished"};
    QTest::newRow("no converter, told by content")
        << "a.prt" << QByteArray("#UGC:2 PART\n") << false
        << QStringList{"conversionFailed a.prt This host has no converter for ProEngineer files.",
                       "conversionEnded a.prt Failure", "conversionFinished"};
    QTest::newRow("unknown type") << "a.txt" << QByteArray("hang") << false
                                  << QStringList{"conversionFailed a.txt The type of a.txt is not "
                                                 "known.",
                                                 "conversionEnded a.txt Failure",
                                                 "conversionFinished"};
}

void tst_FileService::reportsAFileInOrder()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, script);
    QFETCH(bool, load);
    QFETCH(QStringList, expected);
    ServiceFixture fixture;
    fixture.service->setMaxParallelProcesses(1);
    const QString path = script.isNull() ? fixture.in() + '/' + name : fixture.file(name, script);
    const QString next = fixture.file("next.step");

    fixture.insideCall = true;
    const quint64 job =
        fixture.service->loadFiles({path, next}, tndNode(), fixture.out(), load, false, false);
    fixture.insideCall = false;
    QVERIFY(fixture.wait(job));
    QVERIFY(!fixture.wasInsideCall);

    // The second file takes turns with the load of the first, so it is looked at on its own.
    QStringList own;
    QStringList others;
    for (const QString &entry : fixture.signalsOf(job)) {
        const bool ofNext = entry.contains("next.step")
            || (entry == "conversionFinished" && !others.isEmpty()
                && others.constLast() == "conversionEnded next.step Success");
        (ofNext ? others : own) << entry;
    }
    expected.replaceInStrings("%in", fixture.in());
    expected.prepend("conversionStarted " + name);
    expected.prepend("startingImport 2");
    expected << "importProgressChanged 50"
             << "importProgressChanged 100"
             << "importFinished";
    QCOMPARE(own.size(), expected.size());
    for (int i = 0; i < own.size(); ++i) {
        if (expected[i].endsWith(" ?"))
            own[i] = own[i].section(' ', 0, 1) + (own[i].section(' ', 2).isEmpty() ? "" : " ?");
        QCOMPARE(own[i], expected[i]);
    }
    QCOMPARE(others.mid(0, 3),
             (QStringList{"conversionStarted next.step", "conversionEnded next.step Success",
                          "conversionFinished"}));
    QVERIFY(fixture.outNames().filter(".part").isEmpty());
    QVERIFY(fixture.outNames().contains("next.glb"));
}

void tst_FileService::survivesABrokenConverter_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QByteArray>("greeting");
    QTest::addColumn<QString>("message");
    const QString fake = TN_FAKE_CONVERTER;
    QTest::newRow("missing") << "/nowhere/converter" << QByteArray()
                             << "The converter program /nowhere/converter cannot be started: .+";
    QTest::newRow("not executable") << QFINDTESTDATA("tst_FileService.cpp") << QByteArray()
                                    << "The converter program .* cannot be started: .+";
    QTest::newRow("ends at once") << fake << QByteArray("exit")
                                  << "The converter ended while reading f.*";
    QTest::newRow("never answers")
        << fake << QByteArray("silence") << "The converter does not answer\\.";
    QTest::newRow("another protocol")
        << fake << QByteArray(R"({"event":"ready","version":2,"formats":["Step"]})")
        << "The converter sent an answer that makes no sense .*";
}

void tst_FileService::survivesABrokenConverter()
{
    QFETCH(QString, program);
    QFETCH(QByteArray, greeting);
    QFETCH(QString, message);
    WorkerLimits limits;
    limits.startTime = 300;
    qputenv("TN_FAKE_GREETING", greeting);
    ServiceFixture fixture(limits, program);
    const quint64 job = fixture.convert(fixture.files(3, "sleep 0"));
    QVERIFY(fixture.wait(job));
    qunsetenv("TN_FAKE_GREETING");
    QCOMPARE(fixture.count(job, "conversionFailed f\\d.step " + message + '$'), 3);
    QCOMPARE(fixture.count(job, "conversionEnded f\\d.step Failure"), 3);
}

void tst_FileService::toldSecondsLeaveThePartsOut()
{
    ServiceFixture fixture;
    const quint64 job =
        fixture.convert({fixture.file("a.step",
                                      "part p.step\npartdone p.step success\npart q.step\n"
                                      "partdone q.step success")});
    QVERIFY(fixture.wait(job));
    QCOMPARE(fixture.seconds.value("fileConversionFinished p.step"), 0.125);
    QCOMPARE(fixture.seconds.value("childrenFileConversionFinished"), 0.25);
    QCOMPARE(fixture.seconds.value("fileConversionFinished a.step"), 0.5);
    QCOMPARE(fixture.seconds.value("conversionFinished"), 0.25);
}

void tst_FileService::settingsReachTheConverterAsTheyWereAtTheStart()
{
    ServiceFixture fixture;
    tndXlatSettings settings = fixture.service->getDefaultImportSettings(FileType::Step);
    QCOMPARE(fixture.service->getImportSettings(FileType::Step), settings);
    settings.setChordDeviation(0.25);
    settings.setImportCurves(true);
    settings.setSmartReferenceBehavior(tndSmartReferenceBehavior::Remove);
    fixture.service->setImportSettings(FileType::Step, settings);
    const quint64 job = fixture.convert({fixture.file("a.step"), fixture.file("b.igs")});
    fixture.service->setImportSettings(FileType::Step, tndXlatSettings());
    QVERIFY(fixture.wait(job));

    const QString log = fixture.fakeLog().join('\n');
    QVERIFY2(log.contains(R"("ChordDeviation":0.25)"), qPrintable(log));
    const QString iges = fixture.fakeLog().filter("\"type\":\"Iges\"").value(0);
    QVERIFY2(iges.contains(R"("ChordDeviation":0.1,)") && iges.contains(R"("UseStitching":true)"),
             qPrintable(iges));
    const QString step = fixture.fakeLog().filter("\"type\":\"Step\"").value(0);
    QVERIFY2(step.contains(R"("ImportCurves":true)")
                 && step.contains(R"("SmartReferenceBehavior":3)"),
             qPrintable(step));
}

void tst_FileService::convertsAndLoadsWithTheRealConverter()
{
    ServiceFixture fixture({}, TN_CONVERTER);
    const QString good = fixture.file("good.stl",
                                      "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n"
                                      "vertex 10 0 0\nvertex 0 20 0\nendloop\nendfacet\n"
                                      "endsolid s\n");
    const QString bad = fixture.file("bad.step", "this is no STEP file\n");
    const quint64 job =
        fixture.service->loadFiles({bad, good}, tndNode(), fixture.out(), true, false, false);
    QVERIFY(fixture.wait(job));
    QCOMPARE(fixture.count(job, "conversionFailed bad.step .*bad.step"), 1);
    QCOMPARE(fixture.count(job, "loadEnded good.stl Success"), 1);
    QCOMPARE(fixture.outNames(), QStringList("good.glb"));
    const tndNode node = fixture.nodes.value("good.stl");
    QCOMPARE(fixture.scene.sourceFile(node), good);
    QCOMPARE(fixture.scene.triangleCount(node), std::size_t(1));
    QCOMPARE(fixture.scene.boundingBox(node).max, QVector3D(10, 20, 0));

    // Its own earlier output is recognised by what the converter noted there.
    QVERIFY(fixture.wait(fixture.convert({good})));
    QCOMPARE(fixture.outNames(), QStringList("good.glb"));
}

void tst_FileService::answersByName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("supported");
    QTest::addColumn<bool>("direct");
    QTest::newRow("step") << "/x/A.STEP" << true << true;
    QTest::newRow("iges") << "/x/a.igs" << true << true;
    QTest::newRow("stl") << "a.stlb" << true << true;
    QTest::newRow("obj") << "a.obj" << true << true;
    QTest::newRow("vrml") << "a.wrl" << true << true;
    QTest::newRow("catia") << "a.CATPart" << true << false;
    QTest::newRow("creo version") << "a.asm.12" << true << false;
    QTest::newRow("python") << "a.py" << false << false;
    QTest::newRow("text") << "a.txt" << false << false;
    QTest::newRow("bare") << "step" << false << false;
}

void tst_FileService::answersByName()
{
    QFETCH(QString, path);
    ServiceFixture fixture;
    QTEST(fixture.service->isFileSupported(path), "supported");
    QTEST(fixture.service->isHandledByImportDialog(path), "supported");
    QTEST(fixture.service->isDirectLoadCandidate(path), "direct");
}

void tst_FileService::offersOptionsForAllButScripts()
{
    ServiceFixture fixture;
    for (int type = -1; type <= 33; ++type) {
        const bool expected = type >= 0 && type <= 30 && type != 8;
        QCOMPARE(fixture.service->isFileTypeEnabled(FileType(type)), expected);
    }
}

void tst_FileService::answersEachTypeRequestOnce()
{
    ServiceFixture fixture;
    fixture.insideCall = true;
    fixture.service->requestFileType(fixture.file("a.prt", "#UGC:2 PART\n"));
    fixture.service->requestFileType("/nowhere/b.asm");
    fixture.service->requestFileType("/nowhere/b.asm");
    fixture.service->requestFileType(fixture.file("c.step"));
    fixture.insideCall = false;
    QTRY_COMPARE(
        fixture.signalsOf(0),
        (QStringList{"type a.prt 23", "type b.asm 26", "type b.asm 26", "type c.step 28"}));
    QTest::qWait(50);
    QCOMPARE(fixture.signalsOf(0).size(), 4);
    QVERIFY(!fixture.wasInsideCall);
}

QTEST_GUILESS_MAIN(tst_FileService)
#include "tst_FileService.moc"
