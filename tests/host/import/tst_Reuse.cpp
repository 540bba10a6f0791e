#include "host/import/ServiceFixture.h"

#include <QtTest/QtTest>

using namespace tnhost;

namespace {

/// A host whose results last over its runs.
class ReuseFixture : public ServiceFixture {
public:
    ReuseFixture()
    {
        file("program");
        qputenv("TN_FAKE_PROGRAM", QFile::encodeName(in() + "/program"));
    }

    /// Converts in a run of its own, and gives the job's signals.
    QStringList run(qint64 capacity = 1 << 30)
    {
        QTest::qWait(10); // so that what has just been written is older than the run
        start(std::make_unique<FileService>(scene, TN_FAKE_CONVERTER, limits, newStore(capacity)));
        if (chordDeviation > 0.0) {
            tndXlatSettings settings;
            settings.setChordDeviation(chordDeviation);
            service->setImportSettings(tnCADFileTypes::FileType::Step, settings);
        }
        insideCall = true;
        const quint64 job = load({path});
        insideCall = false;
        return wait(job) ? signalsOf(job) : QStringList();
    }
    int conversions() const { return fakeLog().filter("begin").size(); }
    QString store() const { return QDir::cleanPath(in() + "/../store/results"); }
    QStringList entries() const
    {
        QStringList paths;
        for (const QFileInfo &file : QDir(store()).entryInfoList({"*.result"}))
            paths << file.filePath();
        return paths;
    }
    std::unique_ptr<ResultStore> newStore(qint64 capacity = 1 << 30) const
    {
        return std::make_unique<ResultStore>(store(), capacity);
    }

    WorkerLimits limits;
    double chordDeviation = 0.0;
    QString path = file("a.step"); ///< what is converted
};

void damage(const QString &path, qint64 offset)
{
    QFile file(path);
    char byte = 0;
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek((offset + file.size()) % file.size())
            && file.peek(&byte, 1) == 1 && file.putChar(static_cast<char>(byte ^ 1)));
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(ReuseFixture &)>)

/// Whether an earlier result serves again, and is told like a new one.
class tst_Reuse : public QObject {
    Q_OBJECT

    using Change = std::function<void(ReuseFixture &)>;

private slots:
    void convertsWhatHasChanged_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("isReused");
        const QByteArray plain = "sleep 0\n";
        const QByteArray references = "reference r.mtl\nreference missing.mtl\n";
        const Change nothing = [](ReuseFixture &) {};
        const auto writes = [](const char *name, const QByteArray &content) -> Change {
            return [=](ReuseFixture &fixture) { fixture.file(name, content); };
        };
        const auto damages = [](qint64 offset) -> Change {
            return [=](ReuseFixture &fixture) { damage(fixture.entries()[0], offset); };
        };
        const struct {
            const char *name;
            QByteArray script;
            Change change;
            bool isReused = false;
        } rows[] = {
            {"nothing", plain, nothing, true},
            {"written anew", plain, writes("a.step", plain), true},
            {"content", plain, writes("a.step", "sleep 1\n")},
            {"name", plain,
             [](auto &fixture) { fixture.path = fixture.file("b.step", "sleep 0\n"); }},
            {"settings", plain, [](auto &fixture) { fixture.chordDeviation = 0.5; }},
            {"permission", plain, [](auto &fixture) { fixture.limits.followOutside = true; }},
            {"converter", plain, writes("program", "of another size")},
            {"converter's surroundings", plain, [](auto &) { qputenv("CSF_TEST", "1"); }},
            {"converter replaced as it works", "append program\n", nothing},
            {"converter replaced before", plain,
             [](auto &fixture) {
                 fixture.file("program", "of another size");
                 fixture.path = fixture.file("b.step");
                 fixture.wait(fixture.load({fixture.path})); // by the process that runs
             }},
            {"a file it refers to", references, writes("r.mtl", "blue")},
            {"no file it refers to", references, writes("r.mtl", "red"), true},
            {"a file that was missing", references, writes("missing.mtl", "")},
            {"a file outside", "reference ../outside.mtl\n", nothing},
            {"damaged scene", plain, damages(20)},
            {"damaged notes", plain, damages(-50)},
            {"damaged length", plain, damages(-34)},
            {"cut off", plain, [](auto &fixture) { QFile::resize(fixture.entries()[0], 30); }},
            {"another's entry", plain,
             [](auto &fixture) {
                 const QString own = fixture.entries()[0];
                 const QString path = std::exchange(fixture.path, fixture.file("b.step"));
                 fixture.run();
                 const QStringList both = fixture.entries();
                 QFile::remove(own);
                 QFile::rename(both[both[0] == own ? 1 : 0], own);
                 fixture.path = path;
             }},
            {"failed", "write\nfinish failure No.\n", nothing},
            {"incomplete", "write\nfinish incomplete A face.\n", nothing},
            {"written to meanwhile", "append a.step\n", writes("a.step", "append a.step\n")},
            {"r.mtl written to meanwhile", "reference r.mtl\nappend r.mtl\n", nothing},
        };
        for (const auto &[name, script, change, isReused] : rows)
            QTest::newRow(name) << script << change << isReused;
    }

    void convertsWhatHasChanged()
    {
        QFETCH(const QByteArray, script);
        QFETCH(const Change, change);
        QFETCH(const bool, isReused);
        ReuseFixture fixture;
        fixture.file("r.mtl", "red");
        fixture.file("../outside.mtl", "red");
        fixture.file("a.step", script);
        fixture.run();
        QCOMPARE(fixture.conversions(), 1);
        change(fixture);
        const int before = fixture.conversions();
        const QStringList told = fixture.run();
        qunsetenv("CSF_TEST");
        QCOMPARE(fixture.conversions() - before, isReused ? 0 : 1);
        QCOMPARE(told.filter("progress a 100 Unchanged").size(), isReused ? 1 : 0);
        QCOMPARE(told.last(), QString("finished"));
    }

    void tellsTheSame()
    {
        ReuseFixture fixture;
        fixture.file("a.step",
                     "progress 10\nwarning A face is gone.\npart p.step\n"
                     "warning It is old.\npartdone p.step success\n");
        QStringList told[2];
        for (QStringList &each : told) {
            fixture.node = {};
            each = fixture.run().filter(QRegularExpression("^(?!progress.*(Reading|Unchanged))"));
            each.replaceInStrings(QRegularExpression("progress a \\d+"), "progress a");
            QVERIFY(!fixture.node.isNull());
        }
        QCOMPARE(fixture.conversions(), 1);
        QVERIFY(!fixture.wasInsideCall);
        QCOMPARE(told[1], told[0]);
        QCOMPARE(told[1].filter("It is old.").size(), 1);
    }

    void givesEachFileAFolder()
    {
        // What has got the better of the converter must not write the result of another file.
        ReuseFixture fixture;
        QVERIFY(fixture.wait(fixture.load({fixture.path, fixture.file("b.step")})));
        QSet<QString> folders;
        for (const QString &line : fixture.fakeLog().filter("begin"))
            folders << QFileInfo(QJsonDocument::fromJson(line.section(' ', 2).toUtf8())["output"]
                                     .toString())
                           .path();
        QCOMPARE(folders.size(), 2);
    }

    void keepsWhatWasUsedLast()
    {
        ReuseFixture fixture;
        fixture.run();
        const qint64 size = QFileInfo(fixture.entries()[0]).size();
        const QString first = fixture.path;
        const auto runs = [&fixture, size](const QString &path) {
            fixture.path = path;
            const int before = fixture.conversions();
            fixture.run(size * 5 / 2);
            return fixture.conversions() - before;
        };
        QCOMPARE(runs(fixture.file("b.step")), 1);
        QCOMPARE(runs(first), 0); // so that the second is the older one
        QCOMPARE(runs(fixture.file("c.step")), 1);
        QCOMPARE(fixture.entries().size(), 2);
        QCOMPARE(runs(first), 0);
        QCOMPARE(runs(fixture.in() + "/b.step"), 1);

        QVERIFY(ResultStore(fixture.store(), 0).clear().startsWith("Earlier results removed: 2, "));
        QCOMPARE(runs(first), 1);
        // Without a folder for them there are no results, and nothing else is amiss.
        ResultStore(fixture.store(), 0).clear();
        QDir(fixture.store()).removeRecursively();
        fixture.file("../store/results");
        QCOMPARE(runs(first), 1);
        QCOMPARE(runs(first), 1);
    }

    void storeStaysWithinItsBounds()
    {
        const ReuseFixture fixture;
        const auto accept = [](const QByteArray &) { return true; };
        const QString input = fixture.file("input", QByteArray(100, 'x'));
        const QString output = fixture.in() + "/output";
        const QString dead = fixture.file("../store/results/unfinished-dead");
        const QString busy = fixture.file("../store/results/unfinished-busy");
        QFile file(dead);
        QVERIFY(file.open(QIODevice::ReadWrite)
                && file.setFileTime(QDateTime::currentDateTime().addSecs(-7200),
                                    QFileDevice::FileModificationTime));
        ResultStore store(fixture.store(), 500);
        for (const char *key : {"a", "b", "c", "d", "e", "f"}) {
            QTest::qWait(10); // the clock of file systems is that coarse
            store.keep(key, input, "notes");
        }
        QCOMPARE(fixture.entries().size(), 3);
        QVERIFY(!QFile::exists(dead) && QFile::exists(busy));
        // What is larger than the store drives nothing else out.
        store.keep("large", fixture.file("input", QByteArray(501, 'x')), "notes");
        QCOMPARE(fixture.entries().size(), 3);

        QCOMPARE(store.take("f", output, accept), std::make_optional<QByteArray>("notes"));
        QVERIFY(!store.take("f", output, accept)); // over what is there
        QVERIFY(QFile::remove(output) && QFile::exists(fixture.store() + "/66.result"));
        damage(fixture.store() + "/66.result", 20);
        QVERIFY(!store.take("f", output, accept));
        QVERIFY(!QFile::exists(output) && !QFile::exists(fixture.store() + "/66.result"));
    }

    void abortsTheLook()
    {
        // So large that it takes many seconds to look through.
        ReuseFixture fixture;
        QVERIFY(QFile::resize(fixture.path, qint64(1) << 36));
        fixture.onSignal = [&fixture](quint64 job, const QString &signal) {
            if (signal == "converting a")
                QTimer::singleShot(50, fixture.service.get(),
                                   [&fixture, job] { fixture.service->abortImport(job); });
        };
        QElapsedTimer clock;
        clock.start();
        QVERIFY(fixture.run().contains("converted a JobAborted"));
        QVERIFY(clock.elapsed() < 5000);
        QCOMPARE(fixture.conversions(), 0);
        fixture.onSignal = nullptr;
        // The end of the host does not wait for the look either.
        fixture.start(std::make_unique<FileService>(fixture.scene, TN_FAKE_CONVERTER,
                                                    WorkerLimits{}, fixture.newStore()));
        fixture.load({fixture.path});
        QTest::qWait(50);
        fixture.service.reset();
        QVERIFY(clock.elapsed() < 5000);
    }
};

QTEST_GUILESS_MAIN(tst_Reuse)
#include "tst_Reuse.moc"
