#include "host/import/ServiceFixture.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

#include <cerrno>
#include <csignal>

/// What the files of a job, and several jobs, have to do with each other.
class tst_FileServiceJobs : public QObject {
    Q_OBJECT

private slots:
    void endsAnEmptyJob();
    void numbersItsJobs();
    void boundsTheConversionsOfAllJobs();
    void letsJobsTakeTurns();
    void abortsALargeJobAtOnceAndNoOther();
    void abortsFromInsideASignal_data();
    void abortsFromInsideASignal();
    void keepsOutputsApart();
    void replacesOnlyItsOwnEarlierOutput();
    void leavesNothingBehindWhenAsked_data();
    void leavesNothingBehindWhenAsked();
    void failsEachFileWithoutAnOutputDirectory();
    void keepsWorkersAndRetiresThem_data();
    void keepsWorkersAndRetiresThem();
    void takesNoHarmFromAWorkerThatDiesIdle();
    void addsBelowTheTarget();
    void reimportsInTheNodesPlace();
    void reimportsNothingForANodeWithoutFile();
    void leavesNothingRunningWhenItGoes();
};

namespace {

bool isAlive(int process)
{
    return kill(process, 0) == 0 || errno != ESRCH;
}

void write(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// How many conversions the fake converters' log shows at the same time, at most.
int mostAtATime(const QStringList &log)
{
    int now = 0;
    int most = 0;
    for (const QString &line : log) {
        now += line.section(' ', 1, 1) == "begin" ? 1 : -1;
        most = qMax(most, now);
    }
    return most;
}

} // namespace

void tst_FileServiceJobs::endsAnEmptyJob()
{
    ServiceFixture fixture;
    fixture.insideCall = true;
    const quint64 job = fixture.convert({});
    const quint64 aborted = fixture.convert({});
    fixture.service->abortImport(aborted);
    fixture.insideCall = false;
    QVERIFY(fixture.wait(job) && fixture.wait(aborted));
    const QStringList expected{"startingImport 0", "importFinished"};
    QCOMPARE(fixture.signalsOf(job), expected);
    QCOMPARE(fixture.signalsOf(aborted), expected);
    QVERIFY(!fixture.wasInsideCall);
    QVERIFY(!QFileInfo::exists(fixture.out()));
}

void tst_FileServiceJobs::numbersItsJobs()
{
    ServiceFixture fixture;
    QCOMPARE(fixture.convert({}), quint64(1));
    QCOMPARE(fixture.service->reimportFile(tndNode(), true), quint64(2));
    QVERIFY(fixture.wait(2));
    QCOMPARE(fixture.convert({}), quint64(3));
    fixture.service->abortImport(1);
    fixture.service->abortImport(99);
    QVERIFY(fixture.wait(3));
    QCOMPARE(fixture.count(1, "importFinished"), 1);
}

void tst_FileServiceJobs::boundsTheConversionsOfAllJobs()
{
    ServiceFixture fixture;
    QCOMPARE(fixture.service->getMaxParallelProcesses(), -1);
    fixture.service->setMaxParallelProcesses(3);
    const QStringList files = fixture.files(6, "sleep 40");
    const quint64 first = fixture.convert(files);
    const quint64 second = fixture.convert(files);
    QVERIFY(fixture.wait(first) && fixture.wait(second));
    const int most = mostAtATime(fixture.fakeLog());
    QVERIFY2(most == 2 || most == 3, qPrintable(QString::number(most)));
    QCOMPARE(fixture.count(first, "conversionEnded .* Success"), 6);

    // A smaller number counts as soon as conversions end.
    const int before = fixture.fakeLog().size();
    fixture.onSignal = [&](quint64, const QString &entry) {
        if (entry.startsWith("conversionEnded"))
            fixture.service->setMaxParallelProcesses(1);
    };
    QVERIFY(fixture.wait(fixture.convert(files)));
    // The three that ran by then, and the others.
    QCOMPARE(mostAtATime(fixture.fakeLog().mid(before, 6)), 3);
    QCOMPARE(mostAtATime(fixture.fakeLog().mid(before + 6)), 1);
    QCOMPARE(fixture.service->getMaxParallelProcesses(), 1);
}

void tst_FileServiceJobs::letsJobsTakeTurns()
{
    ServiceFixture fixture;
    fixture.service->setMaxParallelProcesses(1);
    const quint64 large = fixture.convert(fixture.files(20, "sleep 5"));
    const quint64 small = fixture.convert({fixture.file("s.step"), fixture.file("t.step")});
    QVERIFY(fixture.wait(small));
    QVERIFY(fixture.count(large, "conversionEnded") <= 4);
    QVERIFY(fixture.wait(large));
}

void tst_FileServiceJobs::abortsALargeJobAtOnceAndNoOther()
{
    ServiceFixture fixture;
    fixture.service->setMaxParallelProcesses(3);
    // One file is done, three hang, 196 wait.
    QStringList files = fixture.files(200,
                                      "part p.step\npartdone p.step success\npart q.step\n"
                                      "half\nhang");
    files[0] = fixture.file("f0.step");
    const quint64 large =
        fixture.service->loadFiles(files, tndNode(), fixture.out(), true, false, false);
    QTRY_COMPARE(fixture.count(large, "conversionStarted q"), 3);
    const quint64 other = fixture.service->loadFiles({fixture.file("other.step", "sleep 300")},
                                                     tndNode(), fixture.out(), true, false, false);
    const int before = fixture.signalsOf(large).size();

    QElapsedTimer clock;
    clock.start();
    fixture.insideCall = true;
    fixture.service->abortImport(large);
    fixture.service->abortImport(large);
    fixture.insideCall = false;
    QVERIFY(fixture.wait(large));
    QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!fixture.wasInsideCall);

    const QStringList after = fixture.signalsOf(large).mid(before);
    QCOMPARE(after.filter(QRegularExpression("^conversionStarted")).size(), 0);
    QCOMPARE(after.filter(QRegularExpression("^conversionEnded f\\d+.step JobAborted")).size(), 3);
    QCOMPARE(after.filter(QRegularExpression("^conversionEnded q.step JobAborted")).size(), 3);
    // Their assemblies will never be loaded, so these parts are at their end as well.
    QCOMPARE(after.filter(QRegularExpression("^loadEnded p.step JobAborted")).size(), 3);
    QCOMPARE(after.filter(QRegularExpression("^importFinished")).size(), 1);
    QCOMPARE(after.constLast(), QString("importFinished"));

    QVERIFY(fixture.wait(other));
    QCOMPARE(fixture.count(other, "loadEnded other.step Success"), 1);
    QCOMPARE(fixture.outNames(), (QStringList{"f0.glb", "other.glb"}));
    QCOMPARE(fixture.signalsOf(large).constLast(), QString("importFinished"));
}

void tst_FileServiceJobs::abortsFromInsideASignal_data()
{
    QTest::addColumn<QString>("moment");
    QTest::addColumn<QStringList>("expected");
    const QStringList converted{"conversionStarted f0.step", "conversionEnded f0.step Success",
                                "conversionFinished"};
    const QStringList loadAborted{"loadEnded f0.step JobAborted"};
    QTest::newRow("start of the job") << "startingImport" << QStringList();
    QTest::newRow("start") << "conversionStarted"
                           << QStringList{"conversionStarted f0.step",
                                          "conversionEnded f0.step JobAborted",
                                          "conversionFinished"};
    QTest::newRow("end of conversion") << "conversionEnded" << converted + loadAborted;
    QTest::newRow("load queue") << "loadQueued"
                                << converted + QStringList("loadQueued f0.step") + loadAborted;
    QTest::newRow("load") << "loadStarted"
                          << converted + QStringList{"loadQueued f0.step", "loadStarted f0.step"}
            + loadAborted;
    QTest::newRow("too late") << "added"
                              << converted
            + QStringList{"loadQueued f0.step", "loadStarted f0.step", "added f0.step",
                          "loadEnded f0.step Success"};
}

void tst_FileServiceJobs::abortsFromInsideASignal()
{
    QFETCH(QString, moment);
    QFETCH(QStringList, expected);
    // The second run lets events through from inside the signal, as a message box would.
    for (const bool runsEvents : {false, true}) {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(1);
        const QStringList files{fixture.file("f0.step"), fixture.file("f1.step", "hang")};
        fixture.onSignal = [&](quint64 id, const QString &entry) {
            if (!entry.startsWith(moment))
                return;
            fixture.service->abortImport(id);
            if (runsEvents)
                QCoreApplication::processEvents();
        };
        const quint64 job =
            fixture.service->loadFiles(files, tndNode(), fixture.out(), true, false, false);
        QVERIFY(fixture.wait(job));
        // The other file may have been started by then, and is aborted at its own pace.
        QStringList first = fixture.signalsOf(job);
        const int other = first.indexOf("conversionStarted f1.step");
        QCOMPARE(fixture.count(job, "importProgressChanged"),
                 (expected.isEmpty() ? 0 : 1) + (other < 0 ? 0 : 1));
        if (other >= 0) {
            QVERIFY(first.contains("conversionEnded f1.step JobAborted"));
            first.removeAt(first.indexOf("conversionFinished", other));
        }
        first = first.filter(QRegularExpression("^(?!.*f1.step|importProgressChanged)"));
        QCOMPARE(first, QStringList("startingImport 2") + expected + QStringList("importFinished"));
    }
}

void tst_FileServiceJobs::keepsOutputsApart()
{
    ServiceFixture fixture;
    const QString first = fixture.file("a.step");
    const quint64 job =
        fixture.convert({first, fixture.file("other/a.step"), fixture.file("A.igs"), first});
    const quint64 later = fixture.convert({fixture.file("third/a.step")});
    QVERIFY(fixture.wait(job) && fixture.wait(later));
    QCOMPARE(fixture.outNames(),
             (QStringList{"A-4.glb", "a-2.glb", "a-3.glb", "a-5.glb", "a.glb"}));
    QVERIFY(read(fixture.out() + "/a.glb").contains(first.toUtf8()));
    QVERIFY(read(fixture.out() + "/a-2.glb").contains("third/a.step"));
    QVERIFY(read(fixture.out() + "/a-3.glb").contains("other/a.step"));
}

void tst_FileServiceJobs::replacesOnlyItsOwnEarlierOutput()
{
    ServiceFixture fixture;
    const QString path = fixture.file("a.step");
    QVERIFY(fixture.wait(fixture.convert({path})));
    QVERIFY(fixture.wait(fixture.convert({path})));
    QCOMPARE(fixture.outNames(), QStringList("a.glb"));

    write(fixture.out() + "/b.glb", "somebody's own file");
    write(fixture.out() + "/b-2.glb.part", "somebody's download");
    QDir().mkpath(fixture.out() + "/b-3.glb");
    const quint64 job = fixture.convert({fixture.file("b.step")});
    QVERIFY(fixture.wait(job));
    QVERIFY(fixture.wait(fixture.convert({fixture.file("b.step", "half\ncrash")})));
    QCOMPARE(read(fixture.out() + "/b.glb"), QByteArray("somebody's own file"));
    QCOMPARE(read(fixture.out() + "/b-2.glb.part"), QByteArray("somebody's download"));
    // The failed second run did not take away what the first one had left.
    QCOMPARE(fixture.outNames(),
             (QStringList{"a.glb", "b-2.glb.part", "b-3.glb", "b-4.glb", "b.glb"}));
}

void tst_FileServiceJobs::leavesNothingBehindWhenAsked_data()
{
    QTest::addColumn<bool>("hasDirectory");
    QTest::newRow("below the output directory") << true;
    QTest::newRow("in the preferred place") << false;
}

void tst_FileServiceJobs::leavesNothingBehindWhenAsked()
{
    QFETCH(bool, hasDirectory);
    ServiceFixture fixture;
    const QStringList files{fixture.file("a.step"), fixture.file("b.step", "half\ncrash"),
                            fixture.file("c.step", "junk\nfinish success")};
    const QString parent = hasDirectory ? fixture.out() : fixture.in() + "/tmp";
    QDir().mkpath(parent);
    tnPreferences::getData().set("FileIO tmp path", fixture.in() + "/tmp", true);
    write(fixture.out() + "/a.glb", "old");
    const auto names = [&] {
        return QDir(parent).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    };
    const QStringList before = names();
    const quint64 job = fixture.service->loadFiles(
        files, tndNode(), hasDirectory ? fixture.out() : QString(), true, hasDirectory, true);
    QVERIFY(fixture.wait(job));
    QCOMPARE(fixture.count(job, "loadEnded a.step Success"), 1);
    QCOMPARE(fixture.count(job, "conversionEnded b.step Failure"), 1);
    QCOMPARE(fixture.count(job, "loadEnded c.step Failure"), 1);
    QCOMPARE(names(), before);
    QCOMPARE(fixture.fakeLog().filter("begin").filter(parent + "/.import-").size(), 3);
    QCOMPARE(read(fixture.out() + "/a.glb"), QByteArray("old"));
}

void tst_FileServiceJobs::failsEachFileWithoutAnOutputDirectory()
{
    ServiceFixture fixture;
    const QStringList files = fixture.files(3, "sleep 0");
    for (const bool remove : {false, true}) {
        const quint64 job =
            fixture.service->loadFiles(files, tndNode(), files[0] + "/below", true, remove, false);
        QVERIFY(fixture.wait(job));
        QCOMPARE(fixture.count(job, "conversionFailed .* The output directory .* cannot be"), 3);
        QCOMPARE(fixture.count(job, "conversionEnded .* Failure"), 3);
    }
    QVERIFY(fixture.fakeLog().isEmpty());
}

void tst_FileServiceJobs::keepsWorkersAndRetiresThem_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("processes");
    QTest::newRow("small") << QByteArray("memory 1000") << 1;
    QTest::newRow("large") << QByteArray("memory 2000000") << 3;
    QTest::newRow("crashing") << QByteArray("crash") << 3;
}

void tst_FileServiceJobs::keepsWorkersAndRetiresThem()
{
    QFETCH(QByteArray, script);
    WorkerLimits limits;
    limits.memory = 1000000;
    limits.idleTime = 1000;
    ServiceFixture fixture(limits);
    fixture.service->setMaxParallelProcesses(1);
    QVERIFY(fixture.wait(fixture.convert(fixture.files(3, script))));
    QTEST(fixture.fakeProcesses().size(), "processes");
    QTRY_VERIFY(!isAlive(fixture.fakeProcesses().constLast()));
}

void tst_FileServiceJobs::takesNoHarmFromAWorkerThatDiesIdle()
{
    ServiceFixture fixture;
    fixture.service->setMaxParallelProcesses(1);
    const QString path = fixture.file("a.step");
    QVERIFY(fixture.wait(fixture.convert({path})));
    // Before the service can have seen the end, and after it.
    for (const int pause : {0, 100}) {
        QCOMPARE(kill(fixture.fakeProcesses().constLast(), SIGKILL), 0);
        QTest::qSleep(100);
        if (pause > 0)
            QTest::qWait(pause);
        const quint64 job = fixture.convert({path});
        QVERIFY(fixture.wait(job));
        QCOMPARE(fixture.count(job, "conversionEnded a.step Success"), 1);
    }
    QCOMPARE(fixture.fakeProcesses().size(), 3);
}

void tst_FileServiceJobs::addsBelowTheTarget()
{
    ServiceFixture fixture;
    const auto load = [&](const QString &name, const tndNode &target) {
        fixture.wait(fixture.service->loadFiles({fixture.file(name)}, target, fixture.out(), true,
                                                true, false));
        const SceneNode *node = fixture.scene.find(fixture.nodes.value(name));
        return node && node->parent() ? node->parent()->id() : 0;
    };
    QCOMPARE(load("a.step", tndNode()), fixture.scene.root().id());
    const tndNode first = fixture.nodes.value("a.step");
    QCOMPARE(load("b.step", first), first.id());
    QCOMPARE(load("c.step", tndNode(4711)), fixture.scene.root().id());
}

void tst_FileServiceJobs::reimportsInTheNodesPlace()
{
    ServiceFixture fixture;
    const QString path = fixture.file("a.step");
    const quint64 job =
        fixture.service->loadFiles({path}, tndNode(), fixture.out(), true, false, false);
    QVERIFY(fixture.wait(job));
    const tndNode old = fixture.nodes.value("a.step");

    const quint64 again = fixture.service->reimportFile(old, false);
    QVERIFY(fixture.wait(again));
    QCOMPARE(fixture.count(again, "loadEnded a.step Success"), 1);
    const tndNode node = fixture.nodes.value("a.step");
    QVERIFY(!fixture.scene.contains(old) && fixture.scene.contains(node));
    QCOMPARE(fixture.scene.sourceFile(node), path);
    QCOMPARE(fixture.scene.find(fixture.scene.root())->children().size(), std::size_t(1));
    QCOMPARE(fixture.outNames(), QStringList("a.glb"));

    // The node goes while its file is converted.
    fixture.onSignal = [&](quint64, const QString &entry) {
        if (entry.startsWith("loadQueued"))
            fixture.scene.removeNode(node);
    };
    const quint64 late = fixture.service->reimportFile(node, false);
    QVERIFY(fixture.wait(late));
    QCOMPARE(fixture.count(late, "loadFailed a.step The node that was to be replaced is gone."), 1);
    QCOMPARE(fixture.count(late, "loadEnded a.step Failure"), 1);
}

void tst_FileServiceJobs::reimportsNothingForANodeWithoutFile()
{
    ServiceFixture fixture;
    for (const tndNode &node : {tndNode(), tndNode(4711), fixture.scene.root()}) {
        const quint64 job = fixture.service->reimportFile(node, true);
        QVERIFY(fixture.wait(job));
        QCOMPARE(fixture.signalsOf(job), (QStringList{"startingImport 0", "importFinished"}));
    }
}

void tst_FileServiceJobs::leavesNothingRunningWhenItGoes()
{
    ServiceFixture fixture;
    fixture.service->setMaxParallelProcesses(3);
    const QStringList files = fixture.files(2, "half\nhang");
    const quint64 kept = fixture.convert(files);
    const quint64 removed = fixture.service->loadFiles({files[0], fixture.file("late.prt")},
                                                       tndNode(), fixture.out(), true, true, false);
    fixture.service->requestFileType(files[0]);
    QTRY_COMPARE(fixture.outNames().filter(".part").size(), 2);
    const QList<int> processes = fixture.fakeProcesses();
    fixture.service->requestFileType(files[0]);
    const auto heard = [&] {
        return fixture.signalsOf(kept).size() + fixture.signalsOf(removed).size()
            + fixture.signalsOf(0).size();
    };
    const int before = heard();

    fixture.service.reset();
    for (const int process : processes)
        QVERIFY(!isAlive(process));
    QCOMPARE(fixture.outNames(), QStringList());
    QTest::qWait(50);
    QCOMPARE(heard(), before);
}

QTEST_GUILESS_MAIN(tst_FileServiceJobs)
#include "tst_FileServiceJobs.moc"
