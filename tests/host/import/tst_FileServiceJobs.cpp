#include "host/import/ServiceFixture.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"

#include <QtTest/QtTest>

#include <cerrno>
#include <csignal>

using namespace tnhost;

namespace {

bool isAlive(int process)
{
    return kill(process, 0) == 0 || errno != ESRCH;
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

/// What the files of a job, and several jobs, have to do with each other.
class tst_FileServiceJobs : public QObject {
    Q_OBJECT

private slots:
    void endsJobsWithoutFiles()
    {
        ServiceFixture fixture;
        fixture.insideCall = true;
        QCOMPARE(fixture.convert({}), Q_UINT64_C(1));
        QCOMPARE(fixture.convert({}), Q_UINT64_C(2));
        fixture.service->abortImport(2);
        fixture.service->abortImport(99);
        for (const tndNode &node : {tndNode(), tndNode(4711), fixture.scene.root()})
            fixture.service->reimportFile(node, true);
        fixture.insideCall = false;
        QVERIFY(fixture.wait(5));
        for (quint64 job = 1; job <= 5; ++job)
            QCOMPARE(fixture.signalsOf(job), (QStringList{"starting 0", "finished"}));
        QVERIFY(!fixture.wasInsideCall);
    }

    void startsProcessesAhead()
    {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(2);
        fixture.service->prepare(5);
        const auto processes = [] {
            QFile children(QString("/proc/self/task/%1/children").arg(getpid()));
            return children.open(QIODevice::ReadOnly) ? children.readAll().trimmed() : QByteArray();
        };
        const QByteArray before = processes();
        QCOMPARE(before.split(' ').size(), 2);
        // Files that come while they start wait for them, and for no others.
        QVERIFY(fixture.wait(fixture.convert(fixture.files(4, "sleep 50"))));
        QCOMPARE(processes(), before);
        QCOMPARE(fixture.fakeProcesses().size(), 2);
    }

    void startsWithTheLargest()
    {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(1);
        fixture.service->setLargestFirst(true);
        const QByteArray line = "sleep 0\n";
        const QStringList files{
            fixture.file("a.step", line), fixture.file("b.step", line.repeated(3)),
            fixture.file("c.step", line), fixture.file("d.step", line.repeated(2))};
        const quint64 job = fixture.convert(files);
        QVERIFY(fixture.wait(job));
        QCOMPARE(fixture.signalsOf(job).filter("converting").join('|'),
                 QString("converting b|converting d|converting a|converting c"));
        // What has not started is not aborted, wherever it stands.
        fixture.onSignal = [&fixture](quint64 id, const QString &signal) {
            if (signal == "converting b")
                fixture.service->abortImport(id);
        };
        const quint64 second = fixture.convert(files);
        QVERIFY(fixture.wait(second));
        QCOMPARE(fixture.count(second, "converted"), 1);
        QCOMPARE(fixture.count(second, "converted b JobAborted"), 1);
    }

    void boundsTheConversionsOfAllJobs()
    {
        ServiceFixture fixture;
        QCOMPARE(fixture.service->getMaxParallelProcesses(), -1);
        fixture.service->setMaxParallelProcesses(3);
        const QStringList files = fixture.files(6, "sleep 40");
        const quint64 first = fixture.convert(files);
        QVERIFY(fixture.wait(fixture.convert(files)) && fixture.wait(first));
        QVERIFY(fixture.fakeLog().filter("begin").first().contains(R"("threads":1,)"));
        const int most = mostAtATime(fixture.fakeLog());
        QVERIFY2(most == 2 || most == 3, qPrintable(QString::number(most)));

        // A file that is alone may use all cores.
        QVERIFY(fixture.wait(fixture.convert(fixture.files(1, "sleep 1"))));
        const QString cores = QString::number(std::min(3, QThread::idealThreadCount()));
        QVERIFY(fixture.fakeLog().filter("begin").last().contains("\"threads\":" + cores + ","));

        // A smaller number counts as soon as conversions end; three had been started by then.
        const int before = fixture.fakeLog().size();
        fixture.onSignal = [&](quint64, const QString &entry) {
            if (entry.startsWith("converted"))
                fixture.service->setMaxParallelProcesses(1);
        };
        QVERIFY(fixture.wait(fixture.convert(files)));
        QCOMPARE(mostAtATime(fixture.fakeLog().mid(before + 6)), 1);

        // The jobs take turns.
        const quint64 large = fixture.convert(fixture.files(20, "sleep 5"));
        QVERIFY(fixture.wait(fixture.convert({fixture.file("s.step"), fixture.file("t.step")})));
        QVERIFY(fixture.count(large, "converted") <= 4);
        QVERIFY(fixture.wait(large));
    }

    void abortsALargeJobAtOnceAndNoOther()
    {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(3);
        // One file is done, three hang, 196 wait.
        QStringList files =
            fixture.files(200, "part p.step\npartdone p.step success\npart q.step\nhalf\nhang");
        files[0] = fixture.file("f0.step");
        const quint64 large = fixture.load(files);
        QTRY_COMPARE(fixture.count(large, "converting q"), 3);
        const quint64 other = fixture.load({fixture.file("other.step", "sleep 300")});
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
        QVERIFY(fixture.wait(other));
        QCOMPARE(fixture.count(other, "loaded other Success"), 1);

        const QString after = fixture.signalsOf(large).mid(before).join('|') + '|';
        QCOMPARE(after.count("converting"), 0);
        QCOMPARE(after.count(QRegularExpression("converted f\\d+ JobAborted")), 3);
        QCOMPARE(after.count("converted q JobAborted"), 3);
        // Their assemblies will never be loaded, so these parts are at their end as well.
        QCOMPARE(after.count("loaded p JobAborted"), 3);
        QCOMPARE(after.count("finished"), 1);
        QVERIFY(after.endsWith("|finished|"));
        QCOMPARE(fixture.outNames(), (QStringList{"f0.glb", "other.glb"}));
    }

    void abortsFromInsideASignal()
    {
        const QString converted = "converting f0|converted f0 Success|timed|";
        const QString aborted = "loaded f0 JobAborted|";
        const std::pair<QString, QString> rows[] = {
            {"starting", ""},
            {"converting", "converting f0|converted f0 JobAborted|timed|"},
            {"converted", converted + aborted},
            {"queued", converted + "queued f0|" + aborted},
            {"loading", converted + "queued f0|loading f0|" + aborted},
            // Too late.
            {"added", converted + "queued f0|loading f0|added f0|loaded f0 Success|"},
        };
        // Every second run lets events through from inside the signal, as a message box would.
        for (int run = 0; run < 12; ++run) {
            const auto &[moment, expected] = rows[run / 2];
            ServiceFixture fixture;
            fixture.service->setMaxParallelProcesses(1);
            fixture.onSignal = [&, begin = moment](quint64 id, const QString &entry) {
                if (!entry.startsWith(begin))
                    return;
                fixture.service->abortImport(id);
                if (run % 2 == 1)
                    QCoreApplication::processEvents();
            };
            const quint64 job =
                fixture.load({fixture.file("f0.step"), fixture.file("f1.step", "hang")});
            QVERIFY(fixture.wait(job));
            // The other file may have been started by then, and is aborted at its own pace.
            QStringList first = fixture.signalsOf(job);
            const int other = first.indexOf("converting f1");
            QCOMPARE(fixture.count(job, "percent"),
                     static_cast<int>(!expected.isEmpty()) + static_cast<int>(other >= 0));
            if (other >= 0) {
                QVERIFY(first.contains("converted f1 JobAborted"));
                first.removeAt(first.indexOf("timed", other));
            }
            first = first.filter(QRegularExpression("^(?!.* f1|percent)"));
            QCOMPARE(first.join('|'), "starting 2|" + expected + "finished");
        }
    }

    void keepsPartsApartFromFilesAndFromEachOther()
    {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(1);
        const QByteArray script = "part p.step\npartdone p.step success\n"
                                  "part q.step\npartdone q.step success\n";
        const QStringList files{fixture.file("a.step", script), fixture.file("p.step"),
                                fixture.file("b.step", script + "finish failure No.")};
        // A list as the listeners keep it: a row for each file and each part that is added.
        QStringList rows = files;
        QStringList names;
        connect(fixture.service.get(), &FileService::childFileImportAdded,
                [&](quint64, const QString &, const QString &part) {
                    QVERIFY(QFileInfo(part).canonicalFilePath().isEmpty() // never written
                            || QFileInfo(part).canonicalFilePath() == files[1]);
                    names << part;
                });
        QStringList converted;
        connect(fixture.service.get(), &FileService::fileConversionFinished,
                [&converted](quint64, const QString &path) { converted << path; });
        QVERIFY(fixture.wait(fixture.load(files)));
        rows += names;
        QCOMPARE(names.size(), 4);
        QCOMPARE(rows.removeDuplicates(), 0);
        converted.sort();
        rows.sort();
        QCOMPARE(converted, rows);

        // Imported again, in another order, a part is what it was: the rows stay.
        const QStringList before = std::exchange(names, {});
        QVERIFY(fixture.wait(fixture.load({files[2], files[0]})));
        QCOMPARE(names, before.mid(2) + before.mid(0, 2));
    }

    void keepsOutputsApart()
    {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(5); // all are named before the first has ended
        const QString first = fixture.file("a.step");
        const quint64 job =
            fixture.convert({first, fixture.file("other/a.step"), fixture.file("A.igs"), first});
        QVERIFY(fixture.wait(fixture.convert({fixture.file("third/a.step")})) && fixture.wait(job));
        QCOMPARE(fixture.outNames(),
                 (QStringList{"A-4.glb", "a-2.glb", "a-3.glb", "a-5.glb", "a.glb"}));
        QVERIFY(read(fixture.out() + "/a-2.glb").contains("third/a.step"));
        QVERIFY(read(fixture.out() + "/a-3.glb").contains("other/a.step"));

        const QString longName = QString::fromUtf8("ä").repeated(124);
        QVERIFY(fixture.wait(fixture.convert(
            {fixture.file(longName + "1.step"), fixture.file(longName + "2.step")})));
        QCOMPARE(fixture.outNames().filter(longName.left(100)).size(), 2);
    }

    void replacesOnlyItsOwnEarlierOutput()
    {
        ServiceFixture fixture;
        fixture.file("../out/b.glb", "somebody's own file");
        fixture.file("../out/b-2.glb.part", "somebody's download");
        QDir().mkpath(fixture.out() + "/b-3.glb");
        const QString path = fixture.file("b.step");
        QVERIFY(fixture.wait(fixture.convert({path})));
        QVERIFY(fixture.wait(fixture.convert({path})));
        QVERIFY(fixture.wait(fixture.convert({fixture.file("b.step", "half\nraise 11")})));
        QCOMPARE(read(fixture.out() + "/b.glb"), QByteArray("somebody's own file"));
        QCOMPARE(read(fixture.out() + "/b-2.glb.part"), QByteArray("somebody's download"));
        // The crash did not take away what the runs before had left.
        QCOMPARE(fixture.outNames(), (QStringList{"b-2.glb", "b-2.glb.part", "b-3.glb", "b.glb"}));
        QVERIFY(read(fixture.out() + "/b-2.glb").contains("in/b.step"));
        // Nor is that of another file with this name its own.
        QVERIFY(fixture.wait(fixture.convert({fixture.file("other/b.step")})));
        QVERIFY(read(fixture.out() + "/b-2.glb").contains("in/b.step"));
        QVERIFY(read(fixture.out() + "/b-4.glb").contains("other/b.step"));
    }

    void leavesNothingBehindWhenAsked()
    {
        for (const bool isNamed : {true, false}) {
            ServiceFixture fixture;
            const QString old = fixture.file("../place/a.glb", "old");
            const QDir place = QFileInfo(old).canonicalPath();
            tnPreferences::getData().set("FileIO tmp path", place.path(), true);
            const QStringList files{fixture.file("a.step"),
                                    fixture.file("b.step", "half\nraise 11"),
                                    fixture.file("c.step", "junk\nfinish success")};
            const quint64 job = fixture.service->loadFiles(
                files, tndNode(), isNamed ? place.path() : QString(), true, isNamed, true);
            QVERIFY(fixture.wait(job));
            for (const char *end : {"loaded a Success", "converted b Failure", "loaded c Failure"})
                QCOMPARE(fixture.count(job, end), 1);
            QCOMPARE(place.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                     QStringList("a.glb"));
            QCOMPARE(read(old), QByteArray("old"));
            QCOMPARE(
                fixture.fakeLog().filter("begin").filter(place.path() + "/.tnhost-import-").size(),
                3);
        }
    }

    void failsEachFileWithoutAnOutputDirectory()
    {
        ServiceFixture fixture;
        const QStringList files = fixture.files(3, "sleep 0");
        for (const bool remove : {false, true}) {
            const quint64 job = fixture.service->loadFiles(files, tndNode(), files[0] + "/below",
                                                           true, remove, false);
            QVERIFY(fixture.wait(job));
            QCOMPARE(fixture.count(job, "failed .* The output directory .* cannot be"), 3);
            QCOMPARE(fixture.count(job, "converted .* Failure"), 3);
        }
        QVERIFY(fixture.fakeLog().isEmpty());
    }

    void keepsWorkersAndRetiresThem()
    {
        WorkerLimits limits;
        limits.idleTime = 1000;
        const std::pair<const char *, int> rows[] = {{"sleep 0", 1}, {"raise 11", 3}};
        for (const auto &[script, processes] : rows) {
            ServiceFixture fixture(limits);
            fixture.service->setMaxParallelProcesses(1);
            QVERIFY(fixture.wait(fixture.convert(fixture.files(3, script))));
            QCOMPARE(fixture.fakeProcesses().size(), processes);
            QTRY_VERIFY(!isAlive(fixture.fakeProcesses().constLast()));
        }
    }

    void takesNoHarmFromAWorkerThatDiesIdle()
    {
        ServiceFixture fixture;
        const QStringList files = fixture.files(1, "sleep 0");
        QVERIFY(fixture.wait(fixture.convert(files)));
        const auto killWorker = [&fixture] {
            QCOMPARE(kill(fixture.fakeProcesses().constLast(), SIGKILL), 0);
            QTest::qSleep(100);
        };
        // Once long before the next file, and once too late for the service to see it.
        for (const bool isSeen : {true, false}) {
            if (isSeen) {
                killWorker();
                QTest::qWait(100);
            }
            fixture.onSignal = [&](quint64, const QString &entry) {
                if (entry == "converting f0" && !isSeen)
                    killWorker();
            };
            const quint64 job = fixture.convert(files);
            QVERIFY(fixture.wait(job));
            QCOMPARE(fixture.count(job, "converted f0 Success"), 1);
        }
        QCOMPARE(fixture.fakeProcesses().size(), 3);
    }

    void addsBelowTheTarget()
    {
        ServiceFixture fixture;
        unsigned int parent = fixture.scene.root().id();
        for (const tndNode &target : {tndNode(), tndNode(4711), fixture.scene.root()}) {
            QVERIFY(fixture.wait(fixture.load({fixture.file("a.step")}, true, target)));
            QCOMPARE(fixture.scene.find(fixture.node)->parent()->id(), parent);
        }
        parent = fixture.node.id();
        QVERIFY(fixture.wait(fixture.load({fixture.file("a.step")}, true, fixture.node)));
        QCOMPARE(fixture.scene.find(fixture.node)->parent()->id(), parent);
    }

    void reimportsInTheNodesPlace()
    {
        ServiceFixture fixture;
        const QString path = fixture.file("a.step");
        QVERIFY(fixture.wait(fixture.load({path})));
        const tndNode old = fixture.node;
        QVERIFY(fixture.wait(fixture.service->reimportFile(old, false)));
        QVERIFY(!fixture.scene.contains(old) && fixture.scene.contains(fixture.node));
        QCOMPARE(fixture.scene.sourceFile(fixture.node), path);
        QCOMPARE(fixture.outNames(), QStringList("a.glb"));

        // All nodes of the file that are to be replaced, as far as they are still there.
        QVERIFY(fixture.wait(fixture.load({path})));
        const tndNode again = fixture.node;
        const tndNode places = fixture.service->preparePlaces(
            {{path, again}, {path, old}, {"/cad/b.step", fixture.node}});
        QVERIFY(!places.isNull() && !fixture.scene.contains(places));
        const auto topNodes = [&fixture] {
            return fixture.scene.find(fixture.scene.root())->children().size();
        };
        QVERIFY(fixture.wait(fixture.load({path}, false, places)));
        QVERIFY(!fixture.scene.contains(again) && fixture.scene.contains(fixture.node));
        QCOMPARE(topNodes(), std::size_t(2));
        // What has no place goes to the top, and another list has no places at all.
        QVERIFY(fixture.wait(fixture.load({fixture.file("c.step")}, false, places)));
        QVERIFY(fixture.wait(fixture.load({path})));
        QCOMPARE(topNodes(), std::size_t(4));

        // The node goes while its file is converted.
        fixture.onSignal = [&](quint64, const QString &entry) {
            if (entry == "queued a")
                fixture.scene.removeNode(fixture.node);
        };
        const quint64 late = fixture.service->reimportFile(fixture.node, false);
        QVERIFY(fixture.wait(late));
        QCOMPARE(fixture.count(late, "loadFailed a The node that was to be replaced is gone."), 1);
        QCOMPARE(fixture.count(late, "loaded a Failure"), 1);
    }

    void leavesNothingRunningWhenItGoes()
    {
        ServiceFixture fixture;
        fixture.service->setMaxParallelProcesses(3);
        const QStringList files = fixture.files(2, "half\nhang");
        const quint64 kept = fixture.convert(files);
        const quint64 removed = fixture.load({files[0], fixture.file("late.prt")}, true);
        QTRY_COMPARE(fixture.fakeProcesses().size(), 3);
        QCOMPARE(fixture.outNames().size(), 2); // one directory per job
        const QList<int> processes = fixture.fakeProcesses();
        fixture.service->requestFileType(files[0]);
        fixture.onSignal = [](quint64, const QString &entry) { QFAIL(qPrintable(entry)); };

        fixture.service.reset();
        for (const int process : processes)
            QVERIFY(!isAlive(process));
        QCOMPARE(fixture.outNames(), QStringList());
        QTest::qWait(50);
        QCOMPARE(fixture.count(kept, "finished") + fixture.count(removed, "finished"), 0);
    }
};

QTEST_GUILESS_MAIN(tst_FileServiceJobs)
#include "tst_FileServiceJobs.moc"
