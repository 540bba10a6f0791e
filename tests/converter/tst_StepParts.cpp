#include "GlbFile.h"
#include "RecordingReport.h"

#include <QTemporaryDir>
#include <QtTest>

using tnconvert::Outcome;
using tnconvert::State;

/// Step files that refer to part files.
class tst_StepParts : public QObject {
    Q_OBJECT

private:
    Outcome convertRobot(const char *settings = "{}")
    {
        return convertFile(m_directory.filePath("robot.step"), m_directory.filePath("out.glb"),
                           settingsFrom(settings), m_report);
    }

    QTemporaryDir m_directory;
    RecordingReport m_report;

private slots:
    void init()
    {
        m_report.parts.clear();
        QDir(m_directory.path()).remove("arm.stp");
        QDir(m_directory.path()).remove("out.glb");
        for (const char *name : {"robot.step", "base.stp", "gripper.stp"})
            QFile::copy(QString(TN_SAMPLES_DIR "/assembly/") + name, m_directory.filePath(name));
    }

    void partFiles_data()
    {
        QTest::addColumn<QByteArray>("arm"); // instead of arm.stp; empty: the file is missing
        QTest::addColumn<bool>("isWhole");
        const QByteArray original = readFile(TN_SAMPLES_DIR "/assembly/arm.stp");
        QTest::newRow("whole") << original << true;
        QTest::newRow("missing") << QByteArray() << false;
        QTest::newRow("truncated") << original.left(5000) << false;
        QTest::newRow("no Step file") << QByteArray("An arm.\n") << false;
    }

    void partFiles()
    {
        QFETCH(QByteArray, arm);
        QFETCH(bool, isWhole);
        if (!arm.isEmpty())
            writeFile(m_directory.filePath("arm.stp"), arm);
        const Outcome outcome = convertRobot();
        QVERIFY2(outcome.state == (isWhole ? State::Success : State::Incomplete),
                 outcome.message.c_str());
        QCOMPARE(QString::fromStdString(outcome.message).contains(m_directory.filePath("arm.stp")),
                 !isWhole);
        QCOMPARE(m_report.parts.join(", "),
                 QString("part base.stp, success base.stp, part arm.stp, %1 arm.stp, "
                         "part gripper.stp, success gripper.stp")
                     .arg(isWhole ? "success" : "failure"));
        const GlbFile file(m_directory.filePath("out.glb"));
        QCOMPARE(file.problems(), QStringList());
        QVERIFY(file.paths().contains("Robot/gripper"));
        QCOMPARE(file.meshCount(), isWhole ? 3 : 2);
        QCOMPARE(file.colors("Robot/arm"),
                 isWhole ? QStringList("0.90 0.50 0.10 1.00") : QStringList());
        const GlbFile::Box expected{{-40, -40, 0}, {40, 40, 250}};
        QVERIFY2(!isWhole || file.box().isNear(expected, 0.15), file.box().text());
    }

    void circlesEnd()
    {
        QVERIFY(
            QFile::copy(TN_SAMPLES_DIR "/assembly/robot.step", m_directory.filePath("arm.stp")));
        QVERIFY(convertRobot().state != State::Failure); // what a circle draws is open
        QCOMPARE(GlbFile(m_directory.filePath("out.glb")).problems(), QStringList());
    }

    void partsAreLeftOutOnDemand()
    {
        // All of the robot's geometry stands in its parts.
        QCOMPARE(convertRobot(R"({"ImportReferencedFiles": false})").state, State::Failure);
        QCOMPARE(m_report.parts, QStringList());
    }
};

QTEST_GUILESS_MAIN(tst_StepParts)
#include "tst_StepParts.moc"
