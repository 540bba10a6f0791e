#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

namespace {

const QString samples = QStringLiteral(TN_SAMPLES_DIR "/");
const QString headless = QStringLiteral("--headless");
constexpr int patienceMs = 60000;

struct Run {
    int status = -1; ///< -1: crashed or never ended
    QStringList lines;
    QString errors;

    QString last() const { return lines.isEmpty() ? QString() : lines.constLast(); }
    bool has(const QString &line) const { return lines.contains(line); }
    QByteArray all() const
    {
        return (lines.join(QLatin1Char('\n')) + QStringLiteral("\n--\n") + errors).toUtf8();
    }
};

Run finish(QProcess &process)
{
    Run run;
    if (process.waitForFinished(patienceMs) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    process.kill();
    run.lines = QString::fromUtf8(process.readAllStandardOutput())
                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    run.errors = QString::fromUtf8(process.readAllStandardError());
    return run;
}

Run host(const QStringList &arguments,
         const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TN_BIN_DIR "/tnhost"), arguments);
    return finish(process);
}

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace

/// Drives the real program on real files, with the real plug-in and the real converter.
class TestHeadless : public QObject {
    Q_OBJECT

private slots:
    void loadsGoodFiles();
    void tellsEachFailure();
    void expandsFolders();
    void reportsMissingParts();
    void survivesDeadConverters();
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void needsNoDisplayAndNoLocale();
    void needsThePlugin();
    void abortsOnSignals_data();
    void abortsOnSignals();
};

void TestHeadless::loadsGoodFiles()
{
    const Run run = host({headless, samples + "bracket.step", samples + "gear.stl"});
    QVERIFY2(run.status == 0, run.all());
    QVERIFY2(run.has("[1/2] bracket.step: conversion started"), run.all());
    QVERIFY2(run.has("[1/2] bracket.step: loaded, node 2"), run.all());
    QVERIFY2(!run.lines.filter("[2/2] gear.stl: loaded, node").isEmpty(), run.all());
    // The scene: in mm, in the axes of the file.
    const int scene = run.lines.indexOf(QRegularExpression("^Scene: .*"));
    QVERIFY2(scene > 0, run.all());
    QVERIFY2(QRegularExpression(
                 "^  bracket\\.step: [1-9]\\d* triangles, "
                 "\\(0\\.000, 0\\.000, 0\\.000\\) to \\(80\\.000, 60\\.000, 60\\.000\\) mm$")
                 .match(run.lines.value(scene + 1))
                 .hasMatch(),
             run.all());
    QVERIFY2(run.last().startsWith("2 of 2 files loaded, 0 failed; "), run.all());
}

void TestHeadless::tellsEachFailure()
{
    const QTemporaryDir dir;
    QVERIFY(write(dir.filePath("broken.step"), "ISO-10303-21;\nHEADER;\nnonsense"));
    QVERIFY(write(dir.filePath("notes.txt"), "remember the milk"));
    QVERIFY(write(dir.filePath("turbine.jt"), "something"));
    const Run run =
        host({headless, dir.filePath("broken.step"), dir.filePath("notes.txt"),
              dir.filePath("missing.step"), dir.filePath("turbine.jt"), samples + "gear.stl"});
    QVERIFY2(run.status == 1, run.all());
    QVERIFY2(!run.lines.filter("[1/5] broken.step: conversion failed").isEmpty(), run.all());
    QVERIFY2(run.has("[2/5] notes.txt: not a supported file type"), run.all());
    QVERIFY2(run.has("[3/5] missing.step: there is no such file"), run.all());
    QVERIFY2(run.has("[4/5] turbine.jt: this host has no converter for this file type"), run.all());
    QVERIFY2(!run.lines.filter("[5/5] gear.stl: loaded, node").isEmpty(), run.all());
    QVERIFY2(run.last().startsWith("1 of 5 files loaded, 4 failed; "), run.all());
}

void TestHeadless::expandsFolders()
{
    const QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath("parts/empty"));
    QVERIFY(QFile::copy(samples + "gear.stl", dir.filePath("z.stl")));
    QVERIFY(QFile::copy(samples + "gear.stl", dir.filePath("parts/a.stl")));
    QVERIFY(write(dir.filePath("parts/notes.txt"), "not for import"));
    // A file that is named twice is imported once.
    const Run run = host({headless, dir.path(), dir.filePath("z.stl")});
    QVERIFY2(run.status == 0, run.all());
    QVERIFY2(run.has("[1/2] a.stl: conversion started"), run.all());
    QVERIFY2(run.has("[2/2] z.stl: conversion started"), run.all());

    const Run empty = host({headless, dir.filePath("parts/empty")});
    QVERIFY2(empty.status == 1, empty.all());
    QCOMPARE(empty.last(), QString("0 of 0 files loaded, 0 failed; 0 nodes, 0 triangles"));
}

void TestHeadless::reportsMissingParts()
{
    const QTemporaryDir dir;
    for (const char *part : {"robot.step", "base.stp", "gripper.stp"})
        QVERIFY(QFile::copy(samples + "assembly/" + part, dir.filePath(part)));
    const Run run = host({headless, dir.filePath("robot.step")});
    QVERIFY2(run.status == 1, run.all());
    QVERIFY2(!run.lines.filter("[1/1] robot.step: base.stp: conversion finished").isEmpty(),
             run.all());
    QVERIFY2(!run.lines.filter("incomplete, parts are missing").isEmpty(), run.all());
}

void TestHeadless::survivesDeadConverters()
{
    const Run run = host(
        {headless, "--converter", "/bin/false", samples + "gear.stl", samples + "bracket.step"});
    QVERIFY2(run.status == 1, run.all());
    QVERIFY2(run.last().startsWith("0 of 2 files loaded, 2 failed; 0 nodes"), run.all());
}

void TestHeadless::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no file") << QStringList{headless} << "must be a file";
    QTest::newRow("unknown option") << QStringList{headless, "--fast", "a.stl"} << "fast";
    QTest::newRow("no number") << QStringList{headless, "--max-processes", "two", "a.stl"}
                               << "--max-processes";
    QTest::newRow("negative") << QStringList{headless, "--max-processes=-2", "a.stl"}
                              << "--max-processes";
    QTest::newRow("empty value") << QStringList{headless, "--converter=", "a.stl"} << "--converter";
    QTest::newRow("tmp is a file")
        << QStringList{headless, "--tmp", samples + "gear.stl", "a.stl"} << "cannot be written";
}

void TestHeadless::refusesWrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Run run = host(arguments);
    QVERIFY2(run.status == 2, run.all());
    QVERIFY2(run.errors.contains(message), run.all());
    QVERIFY2(run.lines.isEmpty(), run.all());
}

void TestHeadless::needsNoDisplayAndNoLocale()
{
    QProcessEnvironment bare = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANG", "LC_CTYPE"})
        bare.remove(name);
    bare.insert("LC_ALL", "C");
    const QTemporaryDir dir;
    const QString file = dir.filePath(QString::fromUtf8("Zähnräder.stl"));
    QVERIFY(QFile::copy(samples + "gear.stl", file));
    const Run run = host({file}, bare);
    QVERIFY2(run.status == 0, run.all());
    QVERIFY2(run.errors.contains("no display"), run.all());
    QVERIFY2(run.has(QString::fromUtf8("[1/1] Zähnräder.stl: conversion started")), run.all());
}

void TestHeadless::needsThePlugin()
{
    const QTemporaryDir dir;
    const Run run = host({headless, "--plugin-dir", dir.path(), samples + "gear.stl"});
    QVERIFY2(run.status == 1, run.all());
    QVERIFY2(run.errors.contains("no plug-in in the directory"), run.all());
}

void TestHeadless::abortsOnSignals_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void TestHeadless::abortsOnSignals()
{
    QFETCH(int, signal);
    const QTemporaryDir dir;
    // A converter that never gets anywhere, and leaves word of its process.
    QVERIFY(write(dir.filePath("converter"),
                  "#!/bin/sh\necho $$ > '" + dir.filePath("pid").toUtf8()
                      + "'\necho '{\"event\":\"ready\",\"version\":1,\"formats\":[\"STL\"]}'\n"
                        "read request\necho '{\"event\":\"started\",\"id\":1}'\n"
                        "while read request; do :; done\n"));
    QFile(dir.filePath("converter")).setPermissions(QFile::ReadOwner | QFile::ExeOwner);

    QProcess process;
    process.start(QStringLiteral(TN_BIN_DIR "/tnhost"),
                  {headless, "--converter", dir.filePath("converter"), "--tmp", dir.path(),
                   samples + "gear.stl", samples + "bracket.step"});
    QByteArray output;
    while (!output.contains("conversion started") && process.waitForReadyRead(patienceMs))
        output += process.readAllStandardOutput();
    QTRY_VERIFY(QFile::exists(dir.filePath("pid")));
    QCOMPARE(::kill(static_cast<pid_t>(process.processId()), signal), 0);
    const Run run = finish(process);
    QVERIFY2(run.status == 128 + signal, run.all());
    QVERIFY2(run.has(QStringLiteral("Aborted by signal %1.").arg(signal)), run.all());
    QVERIFY2(run.lines.filter("bracket").isEmpty(), run.all());
    QVERIFY2(run.last().startsWith("0 of 2 files loaded, 1 failed, 1 not tried; "), run.all());

    QFile pid(dir.filePath("pid"));
    QVERIFY(pid.open(QIODevice::ReadOnly));
    const auto converter = static_cast<pid_t>(pid.readAll().trimmed().toInt());
    QVERIFY(converter > 0);
    QTRY_VERIFY(::kill(converter, 0) != 0);
}

QTEST_GUILESS_MAIN(TestHeadless)

#include "tst_Headless.moc"
