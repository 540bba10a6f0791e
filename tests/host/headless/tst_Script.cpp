#include "HostProcess.h"

#include <QtTest/QtTest>

using namespace tnhost;

namespace {

const QByteArray reloaded =
    R"({"message":"reloadCAD","answer":{"result":0,"materialAssignmentMode":0,"importAnimations":true}})";
const QByteArray unanswered = R"({"message":"importCAD","answer":{}})";

} // namespace

class tst_Script : public QObject {
    Q_OBJECT

private slots:
    void runs();
    void leavesTheWindowOpen();
    void endsAtASignalDuringASearch();
};

void tst_Script::runs()
{
    // The answers are all lines of the output, the notes stand in this order among the errors.
    const auto check = [](const QByteArray &script, int status, const QByteArrayList &answers,
                          const QByteArrayList &notes) {
        HostProcess host;
        for (const QString sample :
             {"gear.stl", "bracket.step", "assembly/robot.step", "assembly/base.stp",
              "assembly/arm.stp", "assembly/gripper.stp"})
            QVERIFY(host.copySample(sample, QFileInfo(sample).fileName()));
        QVERIFY(host.write("broken.step", "nonsense") && host.write("script", script));
        QVERIFY2(host.run({"--headless", "--script", "script"}) == status, host.report());
        QCOMPARE(host.output, answers.join('\n') + '\n');
        int from = 0;
        for (const QByteArray &note : notes) {
            from = host.errors.indexOf(note, from);
            QVERIFY2(from >= 0, host.report() + "??? " + note);
        }
        for (const char *note : {"has wrong type", "the command waits"})
            QCOMPARE(host.errors.count(note), notes.join().count(note));
    };
    // Each message when the jobs before it have ended.
    check(R"(# a comment

{"message":"importCAD","attributes":{"files":["bracket.step"],"loadState":-1}}
{"message":"reloadCAD","attributes":{"files":["gear.stl"],"wait":true}})",
          0, {unanswered, reloaded},
          {"bracket.step: loaded", "gear.stl: conversion started", "gear.stl: loaded",
           "\nbracket.step  Step  Succeeded ", "\n2 of 2 files succeeded\n"});
    // A dialog that a failed file keeps open.
    check(
        R"({"message":"reloadCAD","attributes":{"files":["broken.step","gear.stl"],"wait":true}})",
        1, {reloaded},
        {"gear.stl: loaded", "Line 1: the command waits for a dialog that stays open",
         "\n1 of 2 files succeeded, 1 failed\n"});
    // An assembly with parts that are files of the list: each row comes to its end, so the dialog
    // closes.
    check(
        R"({"message":"reloadCAD","attributes":{"files":["robot.step","base.stp","gripper.stp"],"wait":true}})",
        0, {reloaded}, {"robot.step: base.stp: conversion finished", "\n3 of 3 files succeeded\n"});
    // Dialogs that wait for a user.
    check(R"({"message":"importCAD","attributes":{"urls":["gear.stl"],"wait":true}}
{"message":"importCAD"}
{"message":"importCAD","attributes":{"urls":["gear.stl"]}})",
          0, {R"({"message":"importCAD","answer":{"result":0}})", unanswered, unanswered},
          {"Line 1: the command waits for a dialog in which nobody presses Import",
           "Line 2: a dialog asks", "Line 3: the import dialog is open"});
    // What is no message, and no command.
    check(
        R"(nonsense
[]
{"message":"importCAD","attribute":{}}
{"message":"importCAD","attributes":{"wait":null}}
{"message":"importCAD","attributes":{"parentNodeId":{"unsigned int":-1}}}
{"message":"noSuch \"one\""}
{"message":"importCAD","attributes":{"files":["gear.stl"],"loadState":-1}})",
        1,
        {R"({"line":1,"error":"illegal value"})", R"({"line":2,"error":"not an object"})",
         R"({"line":3,"error":"there is more than \"message\" and \"attributes\""})",
         R"({"line":4,"error":"\"wait\" is neither a truth value, a number, a text nor a list of texts"})",
         R"({"line":5,"error":"the value of \"parentNodeId\" is no unsigned int"})",
         R"({"message":"noSuch \"one\"","error":"no plug-in offers this command"})", unanswered},
        {"\n1 of 1 files succeeded\n"});
    // Every attribute in the type of its command.
    check(
        R"({"message":"importCAD","attributes":{"files":["gear.stl"],"loadState":-1,"wait":true,"parentNodeId":1}}
{"message":"importCAD","attributes":{"urls":["gear.stl"],"loadState":0,"wait":false}}
{"message":"reloadCAD","attributes":{"files":["gear.stl"],"wait":true,"parent":1,"showDialog":true,"startImport":true}})",
        0, {unanswered, unanswered, reloaded}, {"\n2 of 2 files succeeded\n"});
    // Values of other types.
    check(
        R"({"message":"importCAD","attributes":{"files":"gear.stl","wait":1,"parentNodeId":-1,"loadState":0.5}}
{"message":"reloadCAD","attributes":{"files":{"std::vector<QString>":["gear.stl"]},"parent":{"unsigned int":1}}})",
        0, {unanswered, R"({"message":"reloadCAD","answer":{}})"},
        {"'parentNodeId' has wrong type (is:'i' != req:'j')",
         "'loadState' has wrong type (is:'d' != req:'i')",
         "'wait' has wrong type (is:'i' != req:'b')", "'files' has wrong type (is:'7QString' !=",
         "'parent' has wrong type (is:'j' != req:'i')", "'files' has wrong type (is:'St6vector"});
}

void tst_Script::leavesTheWindowOpen()
{
    HostProcess host;
    QVERIFY(host.write("script", R"({"message":"noSuch"})"));
    host.startHost({"--script", "script"});
    QVERIFY(host.waitForReadyRead(60000));
    QVERIFY2(!host.waitForFinished(500), host.report());
    host.terminate();
    QVERIFY2(host.finish() == 128 + 15, host.report());
}

void tst_Script::endsAtASignalDuringASearch()
{
    for (const QString arguments : {"--headless --script script", "--script script"}) {
        HostProcess host;
        // Through all folders there are, which takes longer than a host may take to end.
        QVERIFY(host.write("script", R"({"message":"noSuch"}
{"message":"importCAD","attributes":{"urls":["/"]}})"));
        host.startHost(arguments.split(' '));
        QVERIFY(host.waitForReadyRead(60000)); // the answer to the first
        QTest::qWait(200);
        host.terminate();
        QVERIFY2(host.finish() == 128 + 15, host.report());
        QVERIFY2(!host.report().contains("importCAD"), host.report());
    }
}

QTEST_GUILESS_MAIN(tst_Script)
#include "tst_Script.moc"
