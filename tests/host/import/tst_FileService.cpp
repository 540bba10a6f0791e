#include "host/import/ServiceFixture.h"

#include <QtTest/QtTest>

using tnCADFileTypes::FileType;

/// One file's way: which signals come, in which order, for all that can happen to it.
class tst_FileService : public QObject {
    Q_OBJECT

private slots:
    void reportsAFileInOrder_data();
    void reportsAFileInOrder();
    void countsThePartsTimeOnce();
    void survivesABrokenConverter_data();
    void survivesABrokenConverter();
    void settingsReachTheConverterAsTheyWereAtTheStart();
    void convertsAndLoadsWithTheRealConverter();
    void answersByName();
    void answersEachTypeRequestOnce();
};

void tst_FileService::reportsAFileInOrder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<bool>("load");
    // Between "converting a" and "percent 50", separated by bars.
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *title, const QByteArray &script, bool load,
                        const QString &expected, const char *name = "a.step") {
        QTest::newRow(title) << QString(name) << script << load << expected;
    };
    const auto fails = [row](const char *title, const QByteArray &script, const QString &message,
                             const char *name = "a.step") {
        row(title, script, true, "failed a " + message + "|converted a Failure|timed", name);
    };

    row("success", "progress 10.4\nwarning A face is lost.", false,
        "progress a 10 Reading|progress a 10 A face is lost.|converted a Success|timed");
    const QString loaded = "converted a Success|timed|queued a|loading a|";
    row("success, loaded", "sleep 0", true, loaded + "added a|loaded a Success");
    row("junk", "junk\nfinish success", true,
        loaded + "loadFailed a The file is not a glTF binary.|loaded a Failure");
    row("incomplete",
        "part p.step\npartdone p.step failure It is gone.\nwrite\nfinish incomplete No p.", true,
        "part+ a p|converting p|failed p It is gone.|converted p Failure|part- a p|parts a|"
        "progress a 0 No p.|converted a Incomplete|timed|queued a|loading a|added a|"
        "loaded a Incomplete");

    const QByteArray part = "part p.step\npartdone p.step success\n";
    const QString withPart = "part+ a p|converting p|converted p Success|part- a p|parts a|";
    row("part, loaded", part, true,
        withPart + loaded + "added a|loading p|loaded p Success|loaded a Success");
    row("part, assembly fails", part + "finish failure No.", true,
        withPart
            + "failed a No.|converted a Failure|timed|"
              "loadFailed p a.step was not converted.|loaded p Failure");
    row("part, load fails", part + "junk\nfinish success", true,
        withPart + loaded
            + "loading p|loadFailed p The file is not a glTF binary.|loaded p Failure|"
              "loadFailed a The file is not a glTF binary.|loaded a Failure");
    const QString crash = "The converter crashed while reading a.step.";
    row("crash within a part", "part p.step\ncrash", false,
        "part+ a p|converting p|failed p " + crash
            + "|converted p Failure|part- a p|parts a|failed a " + crash
            + "|converted a Failure|timed");

    fails("failure", "finish failure It is damaged.", "It is damaged.");
    fails("crash", "half\ncrash", crash);
    fails("exit", "exit 7", "The converter ended while reading a.step (exit status 7).");
    fails("closed", "close", "The converter closed its output while reading a.step.");
    const QString nonsense =
        "The converter sent an answer that makes no sense while reading a.step.";
    fails("no JSON", "say Segmentation fault", nonsense);
    fails("other file's answer", R"(say {"event":"progress","id":999})", nonsense);
    fails("unknown state", "finish splendid", nonsense);
    fails("endless line", "flood\nhang",
          "The converter sent an endless answer while reading a.step.");
    fails("no output", "finish success", "The converter wrote no file for a.step.");
    fails("missing", QByteArray(), "The file %in/a.step does not exist.");
    fails("empty", "", "The file a.step is empty.");
    fails("no reader", "hang", "This host has no converter for Catia V5 files.", "a.catpart");
    fails("no reader, by content", "#UGC:2", "This host has no converter for ProEngineer files.",
          "a.prt");
    fails("unknown type", "hang", "The type of a.txt is not known.", "a.txt");
}

void tst_FileService::reportsAFileInOrder()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, script);
    QFETCH(bool, load);
    QFETCH(QString, expected);
    ServiceFixture fixture;
    fixture.service->setMaxParallelProcesses(1);
    const QString path = script.isNull() ? fixture.in() + '/' + name : fixture.file(name, script);
    const QStringList files{path, fixture.file("next.step")};
    fixture.insideCall = true;
    const quint64 job = load ? fixture.load(files) : fixture.convert(files);
    fixture.insideCall = false;
    QVERIFY(fixture.wait(job));
    QVERIFY(!fixture.wasInsideCall);

    // The next file takes turns with the load of the first, so its signals are taken out.
    QStringList own = fixture.signalsOf(job);
    QCOMPARE(own.count("converted next Success"), 1);
    own.removeAt(own.indexOf("converted next Success") + 1);
    own = own.filter(QRegularExpression("^(?!.* next)"));
    expected = "starting 2|converting a|" + expected + "|percent 50|percent 100|finished";
    QCOMPARE(own.join('|'), expected.replace("%in", fixture.in()));
    QCOMPARE(fixture.outNames().filter("next.glb").size(), 1);
    QVERIFY(fixture.outNames().filter(".part").isEmpty());
}

void tst_FileService::countsThePartsTimeOnce()
{
    ServiceFixture fixture;
    QVERIFY(fixture.wait(
        fixture.convert({fixture.file("a.step", "part p.step\npartdone p.step success")})));
    QCOMPARE(fixture.seconds["converted"], (QList<double>{0.125, 0.5}));
    QCOMPARE(fixture.seconds["parts"], QList<double>{0.125});
    QCOMPARE(fixture.seconds["timed"], QList<double>{0.375});
}

void tst_FileService::survivesABrokenConverter_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QByteArray>("greeting");
    QTest::addColumn<QString>("message");
    const QString fake = TN_FAKE_CONVERTER;
    const QString noStart = "The converter program .* cannot be started: .+";
    QTest::newRow("missing") << "/nowhere/converter" << QByteArray() << noStart;
    QTest::newRow("not executable")
        << QFINDTESTDATA("tst_FileService.cpp") << QByteArray() << noStart;
    QTest::newRow("ends at once") << fake << QByteArray("exit") << "The converter ended while .*";
    QTest::newRow("silent") << fake << QByteArray("silence") << "The converter does not answer\\.";
    QTest::newRow("other protocol") << fake << QByteArray(R"({"event":"ready","version":2})")
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
    QCOMPARE(fixture.count(job, "failed f\\d " + message + '$'), 3);
    QCOMPARE(fixture.count(job, "converted f\\d Failure"), 3);
}

void tst_FileService::settingsReachTheConverterAsTheyWereAtTheStart()
{
    ServiceFixture fixture;
    tndXlatSettings settings = fixture.service->getDefaultImportSettings(FileType::Step);
    QCOMPARE(fixture.service->getImportSettings(FileType::Step), settings);
    settings.setChordDeviation(0.25);
    settings.setSmartReferenceBehavior(tndSmartReferenceBehavior::Remove);
    fixture.service->setImportSettings(FileType::Step, settings);
    const quint64 job = fixture.convert({fixture.file("a.step"), fixture.file("b.igs")});
    fixture.service->setImportSettings(FileType::Step, tndXlatSettings());
    QVERIFY(fixture.wait(job));
    const QString step = fixture.fakeLog().filter(R"("type":"Step")").value(0);
    QVERIFY2(step.contains(R"("ChordDeviation":0.25)"), qPrintable(step));
    QVERIFY2(step.contains(R"("SmartReferenceBehavior":3)"), qPrintable(step));
    const QString iges = fixture.fakeLog().filter(R"("type":"Iges")").value(0);
    QVERIFY2(iges.contains(R"("UseStitching":true)"), qPrintable(iges));
}

void tst_FileService::convertsAndLoadsWithTheRealConverter()
{
    ServiceFixture fixture({}, TN_CONVERTER);
    const QString good = TN_SAMPLES_DIR "/gear.stl";
    const quint64 job = fixture.load({fixture.file("bad.step", "this is no STEP file\n"), good});
    QVERIFY(fixture.wait(job));
    QCOMPARE(fixture.count(job, "failed bad .*bad.step"), 1);
    QCOMPARE(fixture.count(job, "loaded gear Success"), 1);
    QCOMPARE(fixture.scene.sourceFile(fixture.node), good);
    QCOMPARE(fixture.scene.triangleCount(fixture.node), std::size_t(192));
    // Its own earlier output is recognised by what the converter noted there.
    QVERIFY(fixture.wait(fixture.convert({good})));
    QCOMPARE(fixture.outNames(), QStringList("gear.glb"));
}

void tst_FileService::answersByName()
{
    ServiceFixture fixture;
    const auto answers = [&fixture](const char *path) {
        return QString("%1%2")
            .arg(fixture.service->isFileSupported(path) ? "supported" : "")
            .arg(fixture.service->isDirectLoadCandidate(path) ? ", direct" : "");
    };
    QCOMPARE(answers("/x/A.STEP"), QString("supported, direct"));
    QCOMPARE(answers("a.asm.12"), QString("supported")); // there is no converter
    QCOMPARE(answers("a.py"), QString());
    // All types but scripts have options.
    for (int type = -1; type <= 33; ++type)
        QCOMPARE(fixture.service->isFileTypeEnabled(FileType(type)),
                 type >= 0 && type <= 30 && type != 8);
}

void tst_FileService::answersEachTypeRequestOnce()
{
    ServiceFixture fixture;
    fixture.insideCall = true;
    for (const QString &path : {fixture.file("a.prt", "#UGC:2 PART\n"), QString("/nowhere/b.asm"),
                                QString("/nowhere/b.asm"), fixture.file("c.step")})
        fixture.service->requestFileType(path);
    fixture.insideCall = false;
    const QStringList expected{"type a 23", "type b 26", "type b 26", "type c 28"};
    QTRY_COMPARE(fixture.signalsOf(0), expected);
    QTest::qWait(50);
    QCOMPARE(fixture.signalsOf(0), expected);
    QVERIFY(!fixture.wasInsideCall);
}

QTEST_GUILESS_MAIN(tst_FileService)
#include "tst_FileService.moc"
