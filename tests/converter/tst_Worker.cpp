#include "ConverterProcess.h"
#include "GlbFile.h"
#include "RecordingReport.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QtTest>

/// Conversations with a worker, as the host holds them.
class tst_Worker : public QObject {
    Q_OBJECT

private:
    static QStringList kinds(const QList<QJsonObject> &events)
    {
        QStringList result;
        for (const QJsonObject &event : events) {
            const QString kind = event["event"].toString();
            if (kind != "progress")
                result << kind;
        }
        return result;
    }

private slots:
    void manyFilesInOneWorker()
    {
        QTemporaryDir directory;
        WorkerProcess worker;
        const QJsonObject ready = worker.next();
        QCOMPARE(ready["event"].toString(), QString("ready"));
        QCOMPARE(ready["version"].toInt(), 1);
        QCOMPARE(ready["formats"].toArray(), QJsonArray({"Step", "Iges", "STL", "Obj", "VRML"}));

        // All requests at once: the host need not wait for an answer.
        const QStringList names{"bracket.step", "no-such.step", "housing.iges", "gear.stl",
                                "bracket.step"};
        for (int i = 0; i < names.size(); ++i)
            worker.convert(10 + i, TN_SAMPLES_DIR "/" + names[i],
                           directory.filePath(QString::number(i)));
        for (int i = 0; i < names.size(); ++i) {
            const QList<QJsonObject> events = worker.untilFinished();
            const bool isGood = i != 1;
            QCOMPARE(kinds(events), QStringList({"started", "finished"}));
            double percent = 0;
            for (const QJsonObject &event : events) {
                QCOMPARE(event["id"].toInt(), 10 + i);
                if (event["event"] != "progress")
                    continue;
                QVERIFY(event["percent"].toDouble() >= percent);
                QVERIFY(!event["message"].toString().isEmpty());
                percent = event["percent"].toDouble();
            }
            QCOMPARE(percent, isGood ? 100.0 : 0.0);
            const QJsonObject &last = events.last();
            QCOMPARE(last["state"].toString(), QString(isGood ? "success" : "failure"));
            QCOMPARE(last["message"].toString().isEmpty(), isGood);
            QVERIFY(last["seconds"].toDouble() >= 0);
            QVERIFY(last["memory"].toDouble() > 1e6);
            QCOMPARE(QFile::exists(directory.filePath(QString::number(i))), isGood);
        }
        QCOMPARE(GlbFile(directory.filePath("4")).document(),
                 GlbFile(directory.filePath("0")).document());
        QCOMPARE(worker.close(), 0);
        QCOMPARE(worker.process().readAllStandardOutput(), QByteArray());
    }

    void requestsThatAreNone()
    {
        const std::pair<QByteArray, int> requests[] = {
            // each with the id of its answer
            {"}{\xFF", 0},
            {"", 0},
            {"[1]", 0},
            {QByteArray("[").repeated(100000), 0},
            {R"({"command":"dance","id":4})", 4},
            {R"({"command":"convert","id":5,"output":"/x"})", 5},
            {R"({"command":"convert","id":"7","input":"/a","output":"/b"})", 0},
            {R"({"command":"convert","id":8,"input":"/a","output":"/b","type":1})", 8},
            {R"({"command":"convert","id":9,"input":["/a"],"output":"/b"})", 9},
        };
        QTemporaryDir directory;
        WorkerProcess worker;
        worker.next();
        for (const auto &[line, id] : requests) {
            worker.send(line);
            const QJsonObject answer = worker.next();
            QCOMPARE(answer["event"].toString(), QString("finished"));
            QCOMPARE(answer["state"].toString(), QString("failure"));
            QCOMPARE(answer["id"].toInt(-1), id);
            QVERIFY(!answer["message"].toString().isEmpty());
        }
        // It serves on.
        worker.convert(1, TN_SAMPLES_DIR "/gear.stl", directory.filePath("out.glb"));
        QCOMPARE(worker.untilFinished().last()["state"].toString(), QString("success"));
        worker.send(R"({"command":"quit"})");
        QVERIFY(worker.process().waitForFinished());
        QCOMPARE(worker.process().exitCode(), 0);
    }

    void typeOverridesTheSuffix()
    {
        QTemporaryDir directory;
        QVERIFY(QFile::copy(TN_SAMPLES_DIR "/gear.stl", directory.filePath("gear.dat")));
        WorkerProcess worker;
        worker.next();
        for (const auto &[type, state] : {std::pair("STL", "success"), std::pair("Step", "failure"),
                                          std::pair("Cake", "failure")}) {
            const QJsonObject request{{"command", "convert"},
                                      {"id", 1},
                                      {"input", directory.filePath("gear.dat")},
                                      {"output", directory.filePath("out.glb")},
                                      {"type", type}};
            worker.send(QJsonDocument(request).toJson(QJsonDocument::Compact));
            QCOMPARE(worker.untilFinished().last()["state"].toString(), QString(state));
        }
    }

    void partsAndWarnings()
    {
        QTemporaryDir directory;
        WorkerProcess worker;
        worker.next();
        worker.convert(3, TN_SAMPLES_DIR "/assembly/robot.step", directory.filePath("out.glb"),
                       {{"ChordDeviation", "coarse"}});
        const QList<QJsonObject> events = worker.untilFinished();
        QCOMPARE(kinds(events),
                 QStringList({"started", "warning", "part", "partFinished", "part", "partFinished",
                              "part", "partFinished", "finished"}));
        for (const QJsonObject &event : events) {
            if (event["event"].toString().startsWith("part"))
                QVERIFY(QFileInfo::exists(event["file"].toString()));
            QVERIFY(event["event"] != "partFinished" || event["state"] == "success");
        }
    }

    void endsWhenNobodyListens()
    {
        QProcess shell;
        const QString conversation = "exec 3>&1; (while sleep 0.1; do echo x; done)"
                                     " | ('%1' --worker; echo ended $? >&3) | head -n 1 >/dev/null";
        shell.start("/bin/sh", {"-c", conversation.arg(QStringLiteral(TN_BIN_DIR "/tnconvert"))});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.readAllStandardOutput(), QByteArray("ended 1\n"));
    }

    void diesWithItsHost()
    {
        // A shell stands for the host; the worker's requests do not end when it is killed.
        QProcess host;
        host.start("/bin/sh",
                   {"-c",
                    QString("sleep 20 | '%1' --worker >&2 & echo $!; wait")
                        .arg(QStringLiteral(TN_BIN_DIR "/tnconvert"))});
        QVERIFY(host.waitForReadyRead());
        const QString worker = "/proc/" + host.readAllStandardOutput().trimmed() + "/cmdline";
        const auto isRunning = [&worker] {
            QFile commandLine(worker);
            // Ended processes that nobody has waited for have no command line.
            return commandLine.open(QIODevice::ReadOnly)
                && commandLine.readAll().contains("--worker");
        };
        QTRY_VERIFY(isRunning());
        host.setReadChannel(QProcess::StandardError);
        QVERIFY(host.canReadLine() || host.waitForReadyRead());
        host.kill();
        host.waitForFinished();
        QTRY_VERIFY(!isRunning());
    }
};

QTEST_GUILESS_MAIN(tst_Worker)
#include "tst_Worker.moc"
