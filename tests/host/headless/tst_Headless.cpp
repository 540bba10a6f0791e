#include "HostProcess.h"

#include <QtCore/QSettings>
#include <QtCore/QStandardPaths>
#include <QtGui/QImage>
#include <QtTest/QtTest>

#include <array>
#include <csignal>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

using namespace tnhost;

namespace {

/// Has the host run a converter that never gets anywhere, and leaves word of its process.
bool writeHangingConverter(const HostProcess &host)
{
    return host.write("converter",
                      "#!/bin/sh\n"
                      "echo '{\"event\":\"ready\",\"version\":2,\"formats\":[\"STL\"]}'\n"
                      "read request\necho $$ > pid\necho '{\"event\":\"started\",\"id\":1}'\n"
                      "while read request; do :; done\n")
        && QFile(host.path("converter")).setPermissions(QFile::ReadOwner | QFile::ExeOwner);
}

QStringList namesIn(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class tst_Headless : public QObject {
    Q_OBJECT

private slots:
    void usesResultsAgain()
    {
        HostProcess first;
        QVERIFY(first.copySample("chair.obj", "chair.obj"));
        QVERIFY(first.copySample("chair.mtl", "chair.mtl"));
        const QString input = first.path("chair.obj");
        const auto run = [&input](const QStringList &options) {
            HostProcess host;
            const int status = host.run(QStringList{"--headless", "--logbook", input} + options);
            QFile logbook(host.output.trimmed().split(' ').last());
            const bool isLogged = logbook.open(QIODevice::ReadOnly)
                && logbook.readAll().contains("Unchanged, an earlier result is used again");
            const bool isReused = host.output.contains("Unchanged, an earlier");
            return status != 0         ? QString(host.report())
                : isReused != isLogged ? QString("told in one place alone")
                                       : QString(isReused ? "reused" : "converted");
        };
        QTest::qWait(10); // so that the files are older than the run
        QCOMPARE(run({}), QString("converted"));
        QCOMPARE(run({}), QString("reused"));
        QCOMPARE(run({"--no-cache"}), QString("converted"));
        QCOMPARE(run({"--cache-size", "0"}), QString("converted"));
        QCOMPARE(run({"--full-source"}), QString("converted"));
        QVERIFY(first.write("chair.mtl", "newmtl wood\nKd 0 0 1\n"));
        QTest::qWait(10);
        QCOMPARE(run({}), QString("converted"));
        QCOMPARE(run({}), QString("reused"));
        HostProcess clearing;
        QCOMPARE(clearing.run({"--clear-cache"}), 0);
        QVERIFY2(clearing.output.startsWith("Earlier results removed: "), clearing.report());
        QCOMPARE(run({}), QString("converted"));
    }

    void imports();
    void trustsNoFile();
    void reportsWhatItLeavesOut();
    void refusesWrongUsage();
    void needsNoDisplayAndNoLocale();
    void needsNoStreams();
    void abortsOnSignals();
    void sharesAnOutputDirectory();
    void drawsAPicture();
    void takesOverFromKilledHosts();
};

void tst_Headless::imports()
{
    // What has no path lies in the working directory; what is expected, in output or errors; what
    // is kept, in the output directory.
    const auto check = [](const QString &arguments, int status, const QStringList &expected,
                          const QStringList &kept = {}) {
        HostProcess host;
        QVERIFY(host.write("broken.step", "nonsense") && host.write("turbine.jt", "something"));
        QVERIFY(QDir(host.path("")).mkpath("empty") && QDir(host.path("")).mkpath("folder/below"));
        QVERIFY(host.write("notes.txt", "milk") && host.write("folder/notes.txt", "not to import"));
        QVERIFY(host.write("import-logbook.txt", "of an older batch"));
        QVERIFY(host.copySample("gear.stl", "folder/z.stl"));
        QVERIFY(host.copySample("gear.stl", "folder/below/a.stl"));
        QVERIFY(QDir(host.path("")).mkpath("links")
                && QFile::link(host.path("folder/below"), host.path("links/linked")));
        for (const QString sample : {"bracket.step", "gear.stl", "assembly/robot.step",
                                     "assembly/base.stp", "assembly/gripper.stp"})
            QVERIFY(host.copySample(sample, QFileInfo(sample).fileName()));
        QFile bracket(host.path("bracket.step"));
        QVERIFY(bracket.open(QIODevice::ReadOnly));
        QVERIFY(
            host.write("faded.step", bracket.readAll().replace("COLOUR_RGB('',", "COLOUR_RGB(")));
        QVERIFY2(host.run(("--headless " + arguments).split(' ')) == status, host.report());
        for (const QString &text : expected)
            QVERIFY2(host.report().contains(text.toUtf8()), host.report() + "??? " + text.toUtf8());
        QCOMPARE(namesIn(host.path("out")), kept);
        QCOMPARE(host.output.contains("\n  gear.stl: 192 triangles"),
                 !arguments.contains("convert") && host.output.contains("gear.stl: loaded"));
        // An unseen window must not leave its size to the user's own.
        QVERIFY(QStandardPaths::locate(QStandardPaths::GenericConfigLocation, "tnhost/tnhost.conf")
                    .isEmpty());
    };
    check("--output out bracket.step gear.stl", 0,
          {"[1/2] bracket.step: conversion started\n", "[2/2] gear.stl: loaded, node ",
           " triangles, (0.000, 0.000, 0.000) to (80.000, 60.000, 60.000) mm\n",
           "\nbracket.step  Step  Succeeded ", "\n2 of 2 files succeeded; "});
    check("faded.step", 0,
          {"\nfaded.step  Step  Succeeded ",
           "\n  Warning: faded.step is damaged: 2 of its entities", "\n1 of 1 files succeeded; "});
    check("--mode keep --output out gear.stl", 0,
          {"Output directory: ", " loaded, node ", "\n1 of 1 files succeeded; 2 nodes, "},
          {"gear.glb"});
    check("--mode convert --output out --logbook --tmp . bracket.step broken.step gear.stl", 1,
          {"\nbracket.step  Step  Succeeded ", "\nbroken.step   Step  Failed ",
           "  broken.step is not a Step file", "\ngear.stl      STL   Succeeded ",
           "\n2 of 3 files succeeded, 1 failed\nLogbook: ", "/import-logbook.txt\n"},
          {"bracket.glb", "gear.glb"});
    check("notes.txt missing.step turbine.jt empty gear.stl", 1,
          {"[1/5] notes.txt: not a supported file type\n",
           "[2/5] missing.step: there is no such file\n",
           "  This host has no converter for JT files.\n",
           "[4/5] empty: there is no file to import in this folder\n",
           "[5/5] gear.stl: loaded, node ", "\n1 of 5 files succeeded, 4 failed; "});
    check("folder folder/z.stl", 0,
          {"[1/2] a.stl: conversion started\n", "[2/2] z.stl: conversion started\n",
           "\nfolder/below/a.stl  STL   Succeeded ", "\n2 of 2 files succeeded; "});
    check("links", 0, {"[1/1] a.stl: conversion started\n", "\n1 of 1 files succeeded; "});
    check("--logbook --tmp . missing.step", 1,
          {"\n0 of 1 files succeeded, 1 failed; 0 nodes, ", "\nNo logbook was written.\n"});
    // Two of the parts are files of the batch as well, each with a fate of its own.
    check("robot.step base.stp gripper.stp", 1,
          {"[1/3] robot.step: base.stp: conversion finished", "[2/3] base.stp: loaded, node ",
           "\nrobot.step   Step  Incomplete ", "\nbase.stp     Step  Succeeded ",
           "\n2 of 3 files succeeded, 1 incomplete; "});
    check("--converter=notes.txt gear.stl bracket.step", 1,
          {"notes.txt cannot be started: ", "\n0 of 2 files succeeded, 2 failed; 0 nodes"});
    check("--plugin-dir=empty gear.stl", 1, {"no plug-in in the directory"});
    check("--plugin-dir=" TN_MUTE_PLUGIN " gear.stl", 1,
          {"no dialog of the name", "\ngear.stl  STL   Failed ", "\n0 of 1 files succeeded"});
}

void tst_Headless::trustsNoFile()
{
    const auto run = [](HostProcess &host, const QStringList &options) {
        // It clears a terminal that prints it, and wants what is not its own.
        const QString name = "in/a\x1b[2J\u009b.obj";
        if (!QDir(host.path("")).mkpath("in") || !host.write("red.mtl", "newmtl red\n")
            || !host.write(name, "mtllib ../red.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"))
            return -1;
        return host.run(QStringList{"--headless", "--mode", "convert", "--output", "out", name}
                        + options);
    };
    HostProcess host;
    QVERIFY2(run(host, {}) == 1, host.report());
    QVERIFY2(host.output.contains("\nin/a\\u001b[2J\\u009b.obj  Obj   Incomplete "), host.report());
    QVERIFY2(host.output.contains("red.mtl are missing: it lies outside"), host.report());
    QVERIFY(!host.report().contains('\x1b') && !host.report().contains("\xC2\x9B"));
    HostProcess allowed;
    QVERIFY2(run(allowed, {"--follow-outside"}) == 0, allowed.report());
    QSettings settings("tnhost", "tnhost-headless");
    settings.setValue("limits/followOutside", "true");
    settings.sync();
    HostProcess preferred;
    const int status = run(preferred, {});
    settings.clear();
    QVERIFY2(status == 0, preferred.report());
}

void tst_Headless::reportsWhatItLeavesOut()
{
    HostProcess host;
    const QByteArray folder = QFile::encodeName(host.path("folder"));
    for (const char *name : {"", "/below", "/below/caf\xE9", "/.hidden"})
        QCOMPARE(::mkdir(folder + name, 0700), 0);
    QVERIFY(host.copySample("gear.stl", "folder/below/good.stl"));
    QVERIFY(host.copySample("gear.stl", "folder/.hidden/not.stl"));
    for (const char *name : {"/1\xFF.stl", "/below/2\xFF.stl", "/3\xFF.txt"}) {
        FILE *file = std::fopen(folder + name, "w");
        QVERIFY(file && std::fclose(file) == 0);
    }
    QVERIFY2(host.run({"--headless", "folder"}) == 1, host.report());
    QCOMPARE(host.errors,
             QByteArray("Left out: files with names that are no UTF-8 (2), "
                        "folders with names that are no UTF-8 (1).\n"));
    QVERIFY2(host.output.contains("\n1 of 1 files succeeded; "), host.report());
}

void tst_Headless::refusesWrongUsage()
{
    const std::pair<QByteArray, QString> cases[] = {
        {"must be a file", "--headless"},
        {"fast", "--headless --fast a.stl"},
        {"--max-processes", "--headless --max-processes two a.stl"},
        {"--max-processes", "--headless --max-processes=-2 a.stl"},
        {"--silence", "--headless --silence long a.stl"},
        {"--max-memory", "--headless --max-memory 6X a.stl"},
        {"--converter", "--headless --converter= a.stl"},
        {"cannot be written", "--headless --tmp " TN_BIN_DIR "/tnhost a.stl"},
        {"cannot be written", "--headless --output " TN_BIN_DIR "/tnhost a.stl"},
        {"--mode", "--headless --mode bad a.stl"},
        {"--mode", "--mode keep a.stl"},
        {"--size", "--headless --picture a.png --size 800x a.stl"},
        {"--size", "--headless --picture a.png --size 800x0 a.stl"},
        {"--size", "--headless --picture a.png --size 9000x10 a.stl"},
        {"--size", "--headless --size 80x60 a.stl"},
        {"--picture", "--headless --picture a.png --mode convert a.stl"},
        {"--picture", "--picture a.png a.stl"},
        {"--output", "--headless --script a.jsonl --output out"},
        {"--script", "--headless --script a.jsonl a.stl"},
        {"cannot be read", "--headless --script " TN_BIN_DIR "/missing.jsonl"},
    };
    for (const auto &[message, arguments] : cases) {
        HostProcess host;
        QVERIFY2(host.run(arguments.split(' ')) == 2, host.report());
        QVERIFY2(host.output.isEmpty() && host.errors.contains(message), host.report());
    }
    HostProcess help;
    QVERIFY2(help.run({"--help"}) == 0 && help.errors.isEmpty(), help.report());
    QVERIFY2(help.output.contains("--script"), help.report());
}

void tst_Headless::needsNoDisplayAndNoLocale()
{
    QProcessEnvironment bare = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANG", "LC_CTYPE"})
        bare.remove(name);
    bare.insert("LC_ALL", "C");
    HostProcess host;
    host.setProcessEnvironment(bare);
    const QString name = QString::fromUtf8("Zähnräder.stl");
    QVERIFY(host.copySample("gear.stl", name));
    QVERIFY2(host.run({"--mode", "import", name}) == 0, host.report());
    QVERIFY2(host.errors.contains("no display"), host.report());
    QVERIFY2(host.output.contains("[1/1] Zähnräder.stl: conversion started\n"), host.report());
}

void tst_Headless::needsNoStreams()
{
    HostProcess full;
    QVERIFY(full.copySample("gear.stl", "gear.stl"));
    full.setStandardOutputFile("/dev/full");
    QVERIFY2(full.run({"--headless", "gear.stl"}) == 1, full.report());
    QVERIFY2(full.errors.contains("Not all of the output"), full.report());

    HostProcess closed;
    QVERIFY(closed.copySample("bracket.step", "bracket.step"));
    closed.start("/bin/sh",
                 {"-c",
                  "exec \"$0\" --headless --mode convert --output . bracket.step <&- >&- 2>&-",
                  TN_BIN_DIR "/tnhost"});
    QCOMPARE(closed.finish(), 0);
    QVERIFY(QFileInfo(closed.path("bracket.glb")).size() > 1000);
}

void tst_Headless::abortsOnSignals()
{
    const auto check = [](int signal, const QString &arguments) {
        HostProcess host;
        QVERIFY(writeHangingConverter(host));
        for (const char *sample : {"gear.stl", "chair.obj"})
            QVERIFY(host.copySample(sample, sample));
        QVERIFY(host.write(
            "script",
            R"({"message":"reloadCAD","attributes":{"files":["gear.stl","chair.obj"],"wait":true}})"));
        host.startHost(QStringList{"--headless", "--converter", host.path("converter"), "--tmp=.",
                                   "--max-processes=1"}
                       + arguments.split(' '));
        QFile pid(host.path("pid"));
        QTRY_VERIFY(pid.size() > 0);
        QVERIFY(pid.open(QIODevice::ReadOnly));
        const auto converter = static_cast<pid_t>(pid.readAll().trimmed().toInt());
        QVERIFY(converter > 0);
        // The keys of a terminal signal a whole group.
        QVERIFY(::getpgid(converter) != ::getpgid(static_cast<pid_t>(host.processId())));
        QCOMPARE(::kill(static_cast<pid_t>(host.processId()), signal), 0);
        QVERIFY2(host.finish() == 128 + signal, host.report());
        QVERIFY2(QRegularExpression("\ngear.stl +STL +Aborted ").match(host.report()).hasMatch(),
                 host.report());
        QVERIFY2(host.report().contains("\n0 of 2 files succeeded, 1 pending, 1 aborted"),
                 host.report());
        QTRY_VERIFY(::kill(converter, 0) != 0);
    };
    check(SIGINT, "gear.stl chair.obj");
    check(SIGTERM, "--script script"); // which waits

    HostProcess busy;
    QVERIFY(busy.copySample("gear.stl", "gear.stl"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TN_MUTE_BLOCKS", "1");
    busy.setProcessEnvironment(environment);
    busy.startHost({"--headless", "--plugin-dir=" TN_MUTE_PLUGIN, "gear.stl"});
    QTRY_VERIFY(busy.bytesAvailable() > 0);
    busy.terminate();
    QVERIFY2(busy.waitForFinished(5000), busy.report()); // far less than it is busy for
}

void tst_Headless::sharesAnOutputDirectory()
{
    const QTemporaryDir out;
    std::array<HostProcess, 3> hosts;
    QStringList arguments{"--headless", "--mode", "convert", "--output", out.path()};
    for (int i = 0; i < 12; ++i)
        arguments << QString("gear%1.stl").arg(i);
    for (HostProcess &host : hosts) {
        for (const QString &name : arguments.mid(5))
            QVERIFY(host.copySample("gear.stl", name));
        host.startHost(arguments);
    }
    for (HostProcess &host : hosts)
        QVERIFY2(host.finish() == 0, host.report());
    const QStringList names = namesIn(out.path());
    QCOMPARE(names.size(), 36);
    QCOMPARE(names.filter(QRegularExpression("^gear\\d+(-[23])?\\.glb$")).size(), 36);
}

void tst_Headless::drawsAPicture()
{
    HostProcess host;
    QVERIFY(host.copySample("gear.stl", "gear.stl"));
    const auto arguments = QStringLiteral("--headless --size 160x120 gear.stl --picture ");
    const int status = host.run((arguments + "gear.png").split(' '));
    if (host.errors.contains("OpenGL"))
        QSKIP("This machine has no OpenGL that works without a display.");
    QVERIFY2(status == 0 && host.errors.isEmpty(), host.report());
    const QImage image(host.path("gear.png"), "PNG");
    QCOMPARE(image.size(), QSize(160, 120));
    QImage empty = image;
    empty.fill(image.pixelColor(0, 0));
    QVERIFY(image != empty);

    for (const char *name : {"no.directory/gear.png", "."}) {
        HostProcess other;
        QVERIFY(other.copySample("gear.stl", "gear.stl"));
        QVERIFY(other.copySample("gear.stl", "no.directory"));
        QVERIFY2(other.run((arguments + name).split(' ')) == 1, other.report());
        QVERIFY2(other.errors.contains("cannot be written"), other.report());
        QVERIFY2(other.output.contains("1 of 1 files succeeded"), other.report());
    }
}

void tst_Headless::takesOverFromKilledHosts()
{
    const QTemporaryDir out;
    const QStringList arguments =
        ("--headless --mode convert gear.stl --output " + out.path()).split(' ');
    HostProcess killed;
    QVERIFY(killed.copySample("gear.stl", "gear.stl") && writeHangingConverter(killed));
    killed.startHost(arguments + QStringList{"--converter", killed.path("converter")});
    QTRY_VERIFY(QFileInfo(killed.path("pid")).size() > 0);
    const QStringList work = namesIn(out.path());
    QCOMPARE(work.size(), 1);

    const auto convert = [&] {
        HostProcess host;
        QVERIFY(host.copySample("gear.stl", "gear.stl"));
        QVERIFY2(host.run(arguments) == 0, host.report());
    };
    convert();
    QCOMPARE(namesIn(out.path()), work + QStringList("gear.glb")); // that one lives
    killed.kill();
    killed.waitForFinished();
    QCOMPARE(namesIn(out.path()), work + QStringList("gear.glb"));
    convert();
    QCOMPARE(namesIn(out.path()), (QStringList{"gear-2.glb", "gear.glb"}));
}

QTEST_GUILESS_MAIN(tst_Headless)
#include "tst_Headless.moc"
