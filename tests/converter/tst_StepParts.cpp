#include "GlbFile.h"
#include "RecordingReport.h"

#include <QTemporaryDir>
#include <QtTest>

using tnconvert::Outcome;
using tnconvert::State;

Q_DECLARE_METATYPE(tnconvert::State)

/// Step files that refer to part files.
class tst_StepParts : public QObject {
    Q_OBJECT

private slots:
    void partFiles_data()
    {
        QTest::addColumn<QString>("change"); // what becomes of arm.stp
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<State>("state");
        QTest::addColumn<int>("arms");
        QTest::addColumn<QStringList>("parts");
        const QStringList others{"part gripper.stp", "success gripper.stp"};
        const QStringList before{"part base.stp", "success base.stp", "part arm.stp"};
        QTest::newRow("whole") << QString() << QByteArray("{}") << State::Success << 2
                               << before + QStringList("success arm.stp") + others;
        QTest::newRow("missing") << "remove" << QByteArray("{}") << State::Incomplete << 0
                                 << before + QStringList("failure arm.stp") + others;
        QTest::newRow("truncated") << "cut" << QByteArray("{}") << State::Incomplete << 0
                                   << before + QStringList("failure arm.stp") + others;
        QTest::newRow("no Step file") << "text" << QByteArray("{}") << State::Incomplete << 0
                                      << before + QStringList("failure arm.stp") + others;
        QTest::newRow("assembly as its own part")
            << "circle" << QByteArray("{}") << State::Incomplete << 0 << QStringList();
    }

    void partFiles()
    {
        QFETCH(QString, change);
        QFETCH(QByteArray, settings);
        QFETCH(State, state);
        QFETCH(int, arms);
        QFETCH(QStringList, parts);
        QTemporaryDir directory;
        for (const char *name : {"robot.step", "base.stp", "arm.stp", "gripper.stp"})
            QVERIFY(
                QFile::copy(QString(TN_SAMPLES_DIR "/assembly/") + name, directory.filePath(name)));
        const QString arm = directory.filePath("arm.stp");
        if (!change.isEmpty())
            QVERIFY(QFile::remove(arm));
        if (change == "cut")
            writeFile(arm, readFile(TN_SAMPLES_DIR "/assembly/arm.stp").left(5000));
        else if (change == "text")
            writeFile(arm, "An arm.\n");
        else if (change == "circle")
            QVERIFY(QFile::copy(TN_SAMPLES_DIR "/assembly/robot.step", arm));

        RecordingReport report;
        const Outcome outcome =
            convertFile(directory.filePath("robot.step"), directory.filePath("out.glb"),
                        settingsFrom(settings.constData()), report);
        const GlbFile file(directory.filePath("out.glb"));
        QCOMPARE(file.problems(), QStringList());
        if (change == "circle") {
            // What a circle draws is open; that it ends is not.
            QVERIFY(outcome.state != State::Failure);
            return;
        }
        QVERIFY2(outcome.state == state, outcome.message.c_str());
        QCOMPARE(report.parts, parts);
        QVERIFY(file.paths().contains("Robot/gripper"));
        int found = 0;
        for (const GlbFile::Instance &instance : file.instances())
            found += instance.path.endsWith("arm") && instance.mesh >= 0 ? 1 : 0;
        QCOMPARE(found, arms);
        QCOMPARE(QString::fromStdString(outcome.message).contains(arm), state == State::Incomplete);
    }

    void partsAreLeftOutOnDemand()
    {
        QTemporaryDir directory;
        RecordingReport report;
        const Outcome outcome =
            convertFile(TN_SAMPLES_DIR "/assembly/robot.step", directory.filePath("out.glb"),
                        settingsFrom(R"({"ImportReferencedFiles": false})"), report);
        // All of the robot's geometry stands in its parts.
        QCOMPARE(outcome.state, State::Failure);
        QVERIFY2(outcome.message.find("no geometry") != std::string::npos, outcome.message.c_str());
        QCOMPARE(report.parts, QStringList());
    }

    void robotIsPutTogether()
    {
        QTemporaryDir directory;
        RecordingReport report;
        convertFile(TN_SAMPLES_DIR "/assembly/robot.step", directory.filePath("out.glb"), {},
                    report);
        const GlbFile file(directory.filePath("out.glb"));
        const GlbFile::Box expected{{-40, -40, 0}, {40, 40, 250}};
        QVERIFY2(file.box().isNear(expected, 0.15), file.box().text());
        QCOMPARE(file.meshCount(), 3);
        QCOMPARE(file.colors("Robot/arm"), QStringList("0.90 0.50 0.10 1.00"));
    }
};

QTEST_GUILESS_MAIN(tst_StepParts)
#include "tst_StepParts.moc"
