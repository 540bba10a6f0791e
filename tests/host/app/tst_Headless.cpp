#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

namespace {

const QString samples = TN_SAMPLES_DIR "/";
const QString headless = "--headless";
constexpr int patienceMs = 60000;

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
    void imports_data();
    void imports();
    void expandsFolders();
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void needsNoDisplayAndNoLocale();
    void abortsOnSignals_data();
    void abortsOnSignals();

private:
    void start(const QStringList &arguments) { m_process.start(TN_BIN_DIR "/tnhost", arguments); }
    /// Gives the exit status; -1: crashed or never ended.
    int finish()
    {
        const bool isGood =
            m_process.waitForFinished(patienceMs) && m_process.exitStatus() == QProcess::NormalExit;
        m_process.kill();
        m_output = m_process.readAllStandardOutput();
        m_report = m_output + "--\n" + m_process.readAllStandardError();
        return isGood ? m_process.exitCode() : -1;
    }
    int host(const QStringList &arguments)
    {
        start(arguments);
        return finish();
    }

    QProcess m_process;
    QByteArray m_output;
    QByteArray m_report; ///< output and errors
};

void TestHeadless::imports_data()
{
    QTest::addColumn<QStringList>("arguments"); // what has no path lies in the test's directory
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("expected"); // beginnings of lines, or of errors
    const auto row = [](const char *name, const QStringList &arguments, int status,
                        const QStringList &expected) {
        QTest::newRow(name) << arguments << status << expected;
    };
    const QString gear = samples + "gear.stl";
    const QString bracket = samples + "bracket.step";
    row("good files, in mm and in the axes of the file", {bracket, gear}, 0,
        {"[1/2] bracket.step: conversion started\n", "[1/2] bracket.step: loaded, node 2\n",
         "[2/2] gear.stl: loaded, node ",
         " triangles, (0.000, 0.000, 0.000) to (80.000, 60.000, 60.000) mm\n",
         "\n2 of 2 files loaded, 0 failed; "});
    row("all kinds of failure", {"broken.step", "notes.txt", "missing.step", "turbine.jt", gear}, 1,
        {"[1/5] broken.step: conversion failed", "[2/5] notes.txt: not a supported file type\n",
         "[3/5] missing.step: there is no such file\n",
         "[4/5] turbine.jt: this host has no converter for this file type\n",
         "[5/5] gear.stl: loaded, node ", "\n1 of 5 files loaded, 4 failed; "});
    row("missing parts", {"robot.step"}, 1,
        {"[1/1] robot.step: base.stp: conversion finished", "incomplete, parts are missing"});
    row("dead converter", {"--converter=/bin/false", gear, bracket}, 1,
        {"\n0 of 2 files loaded, 2 failed; 0 nodes"});
    row("no plug-in", {"--plugin-dir=" + samples, gear}, 1, {"no plug-in in the directory"});
}

void TestHeadless::imports()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QStringList, expected);
    const QTemporaryDir dir;
    QVERIFY(write(dir.filePath("broken.step"), "ISO-10303-21;\nHEADER;\nnonsense"));
    QVERIFY(write(dir.filePath("notes.txt"), "remember the milk"));
    QVERIFY(write(dir.filePath("turbine.jt"), "something"));
    for (const char *part : {"robot.step", "base.stp", "gripper.stp"})
        QVERIFY(QFile::copy(samples + "assembly/" + part, dir.filePath(part)));
    for (QString &argument : arguments) {
        if (QDir::isRelativePath(argument) && !argument.startsWith('-'))
            argument = dir.filePath(argument);
    }
    QVERIFY2(host(arguments << headless) == status, m_report);
    for (const QString &text : expected)
        QVERIFY2(m_report.contains(text.toUtf8()), m_report + "??? " + text.toUtf8());
}

void TestHeadless::expandsFolders()
{
    const QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath("parts/empty"));
    QVERIFY(QFile::copy(samples + "gear.stl", dir.filePath("z.stl")));
    QVERIFY(QFile::copy(samples + "gear.stl", dir.filePath("parts/a.stl")));
    QVERIFY(write(dir.filePath("parts/notes.txt"), "not for import"));
    // A file that is named twice is imported once.
    QVERIFY2(host({headless, dir.path(), dir.filePath("z.stl")}) == 0, m_report);
    QVERIFY2(m_report.contains("[1/2] a.stl: conversion started\n"), m_report);
    QVERIFY2(m_report.contains("[2/2] z.stl: conversion started\n"), m_report);

    QVERIFY2(host({headless, dir.filePath("parts/empty")}) == 1, m_report);
    QVERIFY2(m_report.contains("\n0 of 0 files loaded, 0 failed; 0 nodes, 0 triangles\n"),
             m_report);
}

void TestHeadless::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    const auto row = [](const char *message, const QStringList &arguments) {
        QTest::newRow(qPrintable(arguments.join(' '))) << arguments << QByteArray(message);
    };
    row("must be a file", {});
    row("fast", {"--fast", "a.stl"});
    row("--max-processes", {"--max-processes", "two", "a.stl"});
    row("--max-processes", {"--max-processes=-2", "a.stl"});
    row("--converter", {"--converter=", "a.stl"});
    row("cannot be written", {"--tmp", samples + "gear.stl", "a.stl"});
}

void TestHeadless::refusesWrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    QVERIFY2(host(arguments << headless) == 2, m_report);
    QVERIFY2(m_output.isEmpty() && m_report.contains(message), m_report);
}

void TestHeadless::needsNoDisplayAndNoLocale()
{
    QProcessEnvironment bare = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANG", "LC_CTYPE"})
        bare.remove(name);
    bare.insert("LC_ALL", "C");
    m_process.setProcessEnvironment(bare);
    const QTemporaryDir dir;
    const QString file = dir.filePath(QString::fromUtf8("Zähnräder.stl"));
    QVERIFY(QFile::copy(samples + "gear.stl", file));
    const int status = host({file});
    m_process.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    QVERIFY2(status == 0, m_report);
    QVERIFY2(m_report.contains("no display"), m_report);
    QVERIFY2(m_report.contains("[1/1] Zähnräder.stl: conversion started\n"), m_report);
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

    start({headless, "--converter", dir.filePath("converter"), "--tmp", dir.path(),
           samples + "gear.stl", samples + "bracket.step"});
    QByteArray output;
    while (!output.contains("conversion started") && m_process.waitForReadyRead(patienceMs))
        output += m_process.readAllStandardOutput();
    QFile pid(dir.filePath("pid"));
    QTRY_VERIFY(pid.size() > 0);
    QVERIFY(pid.open(QIODevice::ReadOnly));
    const auto converter = static_cast<pid_t>(pid.readAll().trimmed().toInt());
    QVERIFY(converter > 0);
    QCOMPARE(::kill(static_cast<pid_t>(m_process.processId()), signal), 0);
    QVERIFY2(finish() == 128 + signal, m_report);
    QVERIFY2(m_output.contains("Aborted by signal " + QByteArray::number(signal) + ".\n"),
             m_report);
    QVERIFY2(!m_output.contains("bracket"), m_report);
    QVERIFY2(m_output.contains("\n0 of 2 files loaded, 1 failed, 1 not tried; "), m_report);
    QTRY_VERIFY(::kill(converter, 0) != 0);
}

QTEST_GUILESS_MAIN(TestHeadless)

#include "tst_Headless.moc"
