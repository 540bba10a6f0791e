#include "host/import/ServiceFixture.h"

#include <QtTest/QtTest>

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

using namespace tnhost;

using tnCADFileTypes::FileType;

namespace {

bool hasThreads = true;

}

/// In the place of the system's.
extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                              void *(*start)(void *), void *argument)
{
    static const auto real =
        reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return hasThreads ? real(thread, attributes, start, argument) : EAGAIN;
}

/// One file's way: which signals come, in which order, for all that can happen to it.
class tst_FileService : public QObject {
    Q_OBJECT

private slots:
    void reportsAFileInOrder()
    {
        const QString loaded = "converted a Success|timed|queued a|loading a|";
        const QByteArray part = "part p.step\npartdone p.step success\n";
        const QString withPart = "part+ a p|converting p|converted p Success|part- a p|parts a|";
        const QString crash = "The converter crashed while reading a.step.";
        const QString nonsense =
            "The converter sent an answer that makes no sense while reading a.step.";
        const auto fails = [](const QString &message) {
            return "failed a " + message + "|converted a Failure|timed";
        };
        const struct {
            QByteArray script; // null: the file is missing
            QString expected; // between "converting a" and "percent 50"
            QString name = "a.step";
        } rows[] = {
            {"sleep 0", loaded + "added a|loaded a Success"},
            {"progress 10.4\nwarning A face is lost.\njunk\nfinish success",
             "progress a 10 Reading|progress a 10 A face is lost.|" + loaded
                 + "loadFailed a The file is not a glTF binary.|loaded a Failure"},
            {"part p.step\npartdone p.step failure It is gone.\nwrite\nfinish incomplete No p.",
             "part+ a p|converting p|failed p It is gone.|converted p Failure|part- a p|parts a|"
             "progress a 0 No p.|converted a Incomplete|timed|queued a|loading a|added a|"
             "loaded a Incomplete"},
            {part + "write\nfinish incomplete A face.",
             withPart.chopped(8)
                 + "part+ a a|converting a|progress a 100 A face.|converted a Incomplete|part- a "
                   "a|parts a|"
                   "progress a 0 A face.|converted a Incomplete|timed|queued a|loading a|added a|"
                   "loading p|loaded p Success|loaded a Incomplete"},
            {part, withPart + loaded + "added a|loading p|loaded p Success|loaded a Success"},
            {part + "finish failure No.",
             withPart + fails("No.") + "|loadFailed p a.step was not converted.|loaded p Failure"},
            {part + "junk\nfinish success",
             withPart + loaded
                 + "loading p|loadFailed p The file is not a glTF binary.|loaded p Failure|"
                   "loadFailed a The file is not a glTF binary.|loaded a Failure"},
            {"part p.step\nraise 11",
             "part+ a p|converting p|failed p " + crash + "|converted p Failure|part- a p|parts a|"
                 + fails(crash)},
            {"finish failure It is damaged.", fails("It is damaged.")},
            {"half\nraise 6", fails(crash)},
            {"raise 9",
             fails(
                 "The converter was killed while reading a.step, by someone else or by the system, "
                 "which does so when it runs out of memory.")},
            {"raise 25",
             fails("The converter was ended while reading a.step: it wrote a larger file than the "
                   "system allows it.")},
            {"raise 15", fails("The converter was ended while reading a.step by signal 15.")},
            {"exit 7", fails("The converter ended while reading a.step (exit status 7).")},
            {"close", fails("The converter closed its output while reading a.step.")},
            {"say Segmentation fault", fails(nonsense)},
            {R"(say {"event":"progress","id":999})", fails(nonsense)}, // another file's
            {"finish splendid", fails(nonsense)},
            {"warning " + QByteArray(3000000, 'x'), // one may name very many parts that are missing
             "progress a 0 " + QString(3000000, 'x') + '|' + loaded + "added a|loaded a Success"},
            {"flood\nhang", fails("The converter sent an endless answer while reading a.step.")},
            {"finish success", fails("The converter wrote no file for a.step.")},
            {{}, fails("The file %in/a.step does not exist.")},
            {"", fails("The file a.step is empty.")},
            {"hang", fails("This host has no converter for Catia V5 files."), "a.catpart"},
            {"#UGC:2", fails("This host has no converter for ProEngineer files."), "a.prt"},
            {"hang", fails("The type of a.txt is not known."), "a.txt"},
        };
        for (const auto &[script, expected, name] : rows) {
            ServiceFixture fixture;
            fixture.service->setMaxParallelProcesses(1);
            const QStringList files{script.isNull() ? fixture.in() + '/' + name
                                                    : fixture.file(name, script),
                                    fixture.file("next.step")};
            fixture.insideCall = true;
            const quint64 job = fixture.load(files);
            fixture.insideCall = false;
            QVERIFY2(fixture.wait(job), script);
            QVERIFY(!fixture.wasInsideCall);

            // The next file takes turns with the load of the first, so its signals are taken out.
            QStringList own = fixture.signalsOf(job);
            QCOMPARE(own.count("converted next Success"), 1);
            own.removeAt(own.indexOf("converted next Success") + 1);
            own = own.filter(QRegularExpression("^(?!.* next)"));
            const QString all =
                "starting 2|converting a|" + expected + "|percent 50|percent 100|finished";
            QCOMPARE(own.join('|'), QString(all).replace("%in", fixture.in()));
            QCOMPARE(fixture.outNames().filter("next.glb").size(), 1);
            QVERIFY(fixture.outNames().filter(".part").isEmpty());
        }
    }

    void keepsAResultPerFile()
    {
        ServiceFixture fixture;
        JobResultPtr result;
        QStringList steps;
        connect(&fixture.service->log(), &ImportLog::jobStarted,
                [&result](const JobResultPtr &job) { result = job; });
        connect(&fixture.service->log(), &ImportLog::stepTaken,
                [&steps](const JobResultPtr &, std::size_t file, const QString &words) {
                    if (file == 0)
                        steps << words;
                });
        const QByteArray script = "progress 20\nwarning A face is lost.\npart p.step\n"
                                  "partdone p.step success\npart q.step\n"
                                  "partdone q.step failure It is gone.\n"
                                  "write\nfinish incomplete No q.";
        const quint64 job = fixture.load({fixture.file("a.step", script), fixture.file("b.step"),
                                          fixture.file("c.step", "finish failure It is damaged.")});
        QCOMPARE(fixture.service->runningJobs().size(), std::size_t(1));
        QVERIFY(fixture.wait(job));
        QVERIFY(fixture.service->runningJobs().empty());

        using State = FileResult::State;
        QVERIFY(result->id == job && result->openFiles == 0 && result->percentSum == 300);
        const FileResult &assembly = result->files.at(0);
        QVERIFY(assembly.state == State::Incomplete && fixture.scene.contains(assembly.node));
        QCOMPARE(assembly.message, QString("No q."));
        QCOMPARE(assembly.warnings, QStringList("A face is lost."));
        QCOMPARE(assembly.output, fixture.out() + "/a.glb");
        QCOMPARE(assembly.parts.size(), std::size_t(2));
        QVERIFY(assembly.parts[0].state == State::Succeeded && assembly.parts[0].message.isEmpty());
        QVERIFY(assembly.parts[1].state == State::Failed);
        QCOMPARE(assembly.parts[1].message, QString("It is gone."));
        QVERIFY(result->files[1].state == State::Succeeded && result->files[1].message.isEmpty());
        const FileResult &failed = result->files[2];
        QVERIFY(failed.state == State::Failed && failed.output.isEmpty() && failed.node.isNull());
        QCOMPARE(failed.message, QString("It is damaged."));
        QCOMPARE(steps.join('|'),
                 QString("conversion started|20 % Reading|20 % A face is lost.|"
                         "p.step: conversion started|p.step: conversion finished after 0.13 s|"
                         "q.step: conversion started|q.step: It is gone.|"
                         "q.step: conversion failed after 0.13 s|20 % No q.|"
                         "conversion incomplete, parts are missing after 0.50 s|loading|"
                         "loaded, node %1|p.step: loading|loading incomplete, parts are missing")
                     .arg(assembly.node.id()));
    }

    void convertsWithoutLoading()
    {
        ServiceFixture fixture;
        const quint64 job =
            fixture.convert({fixture.file("a.step", "part p.step\npartdone p.step success")});
        QVERIFY(fixture.wait(job));
        QCOMPARE(fixture.signalsOf(job).join('|'),
                 QString("starting 1|converting a|part+ a p|converting p|converted p Success|"
                         "part- a p|parts a|converted a Success|timed|percent 100|finished"));
        // The part's time counts once.
        QCOMPARE(fixture.seconds["converted"], (QList<double>{0.125, 0.5}));
        QCOMPARE(fixture.seconds["parts"], QList<double>{0.125});
        QCOMPARE(fixture.seconds["timed"], QList<double>{0.375});
    }

    void survivesABrokenConverter()
    {
        const QString noStart = "The converter program .* cannot be started: .+";
        const struct {
            QString program;
            QByteArray greeting;
            QString message;
        } rows[] = {
            {"/nowhere/converter", "", noStart},
            {QFINDTESTDATA("tst_FileService.cpp"), "", noStart},
            {TN_FAKE_CONVERTER, "exit", "The converter ended while .*"},
            {TN_FAKE_CONVERTER, "silence", "The converter does not answer\\."},
            {TN_FAKE_CONVERTER, R"({"event":"ready","version":3})",
             "The converter sent an answer that makes no sense .*"},
        };
        for (const auto &[program, greeting, message] : rows) {
            WorkerLimits limits;
            if (greeting == "silence") // the others may start as slowly as a loaded machine has it
                limits.startTime = 300;
            qputenv("TN_FAKE_GREETING", greeting);
            ServiceFixture fixture(limits, program);
            const quint64 job = fixture.convert(fixture.files(3, "sleep 0"));
            QVERIFY(fixture.wait(job));
            qunsetenv("TN_FAKE_GREETING");
            QCOMPARE(fixture.count(job, "failed f\\d " + message + '$'), 3);
            QCOMPARE(fixture.count(job, "converted f\\d Failure"), 3);
        }
    }

    void needsNoThreads()
    {
        hasThreads = false;
        ServiceFixture fixture;
        fixture.insideCall = true;
        const quint64 job = fixture.load(fixture.files(2, "sleep 0"));
        fixture.service->requestFileType("a.asm");
        fixture.insideCall = false;
        QVERIFY(fixture.wait(job));
        hasThreads = true;
        QCOMPARE(fixture.count(job, "loaded f\\d Success"), 2);
        QCOMPARE(fixture.signalsOf(0), QStringList("type a.asm 26"));
        QVERIFY(!fixture.wasInsideCall);
    }

    void endsSilentConversions_data()
    {
        QTest::addColumn<QByteArray>("step"); // ten times, over twice the time that is granted
        QTest::addColumn<bool>("isNews");
        QTest::newRow("nothing at all") << QByteArray("sleep 200\n") << false;
        QTest::newRow("the same progress") << QByteArray("progress 10\nsleep 200\n") << false;
        QTest::newRow("fractions of a percent") << QByteArray("progress 1.%1\nsleep 200\n") << true;
        QTest::newRow("warnings") << QByteArray("warning A face is lost.\nsleep 200\n") << true;
    }

    void endsSilentConversions()
    {
        QFETCH(QByteArray, step);
        QFETCH(bool, isNews);
        WorkerLimits limits;
        limits.silence = 1000;
        limits.watchInterval = 50;
        ServiceFixture fixture(limits);
        fixture.service->setMaxParallelProcesses(1);
        QByteArray script = "half\n";
        for (int i = 0; i < 10; ++i)
            script += QByteArray(step).replace("%1", QByteArray::number(i));
        const quint64 job =
            fixture.convert({fixture.file("a.step", script), fixture.file("next.step")});
        QVERIFY(fixture.wait(job));
        const int ended = fixture.count(
            job, "failed a The conversion of a.step reported nothing for 1 seconds and was ended.");
        QCOMPARE(ended, isNews ? 0 : 1);
        QCOMPARE(fixture.count(job, "converted a Success"), isNews ? 1 : 0);
        QCOMPARE(fixture.count(job, "converted next Success"), 1);
        QVERIFY(fixture.outNames().filter(".part").isEmpty());
    }

    void endsTheLargestConversionBeyondTheBudget()
    {
        WorkerLimits limits;
        limits.budget = 300 << 20;
        limits.watchInterval = 50;
        ServiceFixture fixture(limits);
        fixture.service->setMaxParallelProcesses(2);
        const quint64 job = fixture.convert(
            {fixture.file("large.step", "half\ntake 350000000\nhang"),
             fixture.file("small.step", "take 50000000 3\nsleep 1500"), fixture.file("next.step")});
        QVERIFY(fixture.wait(job));
        QCOMPARE(fixture.count(job,
                               "failed large The conversion of large.step was ended: it took "
                               "\\d+\\.\\d MB of the 300.0 MB of memory that all conversions "
                               "together may take\\.$"),
                 1);
        QCOMPARE(fixture.count(job, "converted (small|next) Success"), 2);
        QVERIFY(fixture.outNames().filter(".part").isEmpty());
    }

    void settingsReachTheConverterAsTheyWereAtTheStart()
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

    void answersByName()
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
            QCOMPARE(fixture.service->isFileTypeEnabled(static_cast<FileType>(type)),
                     type >= 0 && type <= 30 && type != 8);
    }

    void answersEachTypeRequestOnce()
    {
        ServiceFixture fixture;
        fixture.file("a.prt", "#UGC:2 PART\n");
        fixture.insideCall = true;
        for (const char *name : {"a.prt", "b.asm", "b.asm", "c.step"})
            fixture.service->requestFileType(fixture.in() + '/' + name);
        fixture.insideCall = false;
        const QStringList expected{"type a 23", "type b 26", "type b 26", "type c 28"};
        QTRY_COMPARE(fixture.signalsOf(0), expected);
        QTest::qWait(50);
        QCOMPARE(fixture.signalsOf(0), expected);
        QVERIFY(!fixture.wasInsideCall);
    }
};

QTEST_GUILESS_MAIN(tst_FileService)
#include "tst_FileService.moc"
