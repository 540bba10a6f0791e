#include "ConverterProcess.h"
#include "GlbFile.h"
#include "RecordingReport.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

using tnconvert::Outcome;
using tnconvert::State;

namespace {

QByteArray sample(const char *name)
{
    return readFile(QString(TN_SAMPLES_DIR "/") + name);
}

} // namespace

/// Files that cannot be converted: what people are told, and that nothing is left behind.
class tst_BadInput : public QObject {
    Q_OBJECT

private slots:
    void messages_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        const QByteArray step = sample("bracket.step");
        const QByteArray iges = sample("housing.iges");
        const QByteArray stl = sample("gear.stl");
        QTest::newRow("empty") << "x.step" << QByteArray() << "x.step is empty.";
        QTest::newRow("text as Step") << "x.step" << QByteArray("Hello\n")
                                      << "x.step is not a Step file: it does not begin with "
                                         "ISO-10303-21. It seems to be text "
                                         "of some other kind.";
        QTest::newRow("Iges as Step") << "x.stp" << iges << "It seems to be an Iges file.";
        QTest::newRow("Step as Iges") << "x.igs" << step << "It seems to be a Step file.";
        QTest::newRow("PDF as VRML")
            << "x.wrl" << QByteArray("%PDF-1.4\n") << "It seems to be a PDF document.";
        QTest::newRow("image as Obj")
            << "x.obj" << QByteArray("\x89PNG\r\n\x1a\n") << "It seems to be an image.";
        QTest::newRow("text as STL")
            << "x.stl" << QByteArray("Dear reader,\n").repeated(20) << "x.stl is not an STL file";
        QTest::newRow("truncated Step") << "x.step" << step.left(step.size() / 2)
                                        << "its last line END-ISO-10303-21; is missing";
        QTest::newRow("truncated Iges")
            << "x.iges" << iges.left(iges.size() / 2) << "marked T in column 73";
        QTest::newRow("truncated binary STL")
            << "x.stl" << stl.left(5000) << "it announces 192 triangles but has room for only 98";
        QTest::newRow("truncated STL text")
            << "x.stl" << sample("gear-ascii.stl").left(3000) << "damaged at line";
        QTest::newRow("no coordinates in STL")
            << "x.stl" << QByteArray("solid a\nfacet normal 0 0 1\nouter loop\nvertex 1 2,5 x\n")
            << "damaged at line 4: a vertex has not three coordinates";
        QTest::newRow("Step without shapes")
            << "x.step"
            << QByteArray(
                   "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),"
                   "(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
                   "ENDSEC;\nEND-ISO-10303-21;\n")
            << "x.step";
        QTest::newRow("Obj without faces") << "x.obj" << QByteArray("v 1 2 3\n") << "no geometry";
        QTest::newRow("Obj with bad indices")
            << "x.obj" << QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 99\nf -9 1 2\n") << "x.obj";
        QTest::newRow("unknown suffix") << "x.xyz" << QByteArray("a") << "not known by its suffix";
    }

    void messages()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        QTemporaryDir directory;
        const QString output = directory.filePath("out.glb");
        writeFile(directory.filePath(name), content);
        writeFile(output, "from before");
        RecordingReport report;
        const Outcome outcome = convertFile(directory.filePath(name), output, {}, report);
        QCOMPARE(outcome.state, State::Failure);
        QVERIFY2(QString::fromStdString(outcome.message).contains(message),
                 outcome.message.c_str());
        QVERIFY(outcome.message.back() == '.');
        QCOMPARE(readFile(output), QByteArray("from before"));
        QCOMPARE(QDir(directory.path()).entryList(QDir::Files).size(), 2);
    }

    void placesThatDoNotWork_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing input") << "no.step"
                                       << "out.glb"
                                       << "no.step does not exist";
        QTest::newRow("directory") << "dir.step"
                                   << "out.glb"
                                   << "is a directory";
        QTest::newRow("output is a directory") << "gear.stl"
                                               << "dir.step"
                                               << "is a directory";
        QTest::newRow("no directory for the output") << "gear.stl"
                                                     << "no/out.glb"
                                                     << "for the output does not exist";
        QTest::newRow("onto itself") << "gear.stl"
                                     << "gear.stl"
                                     << "overwrite the input";
        QTest::newRow("unreadable") << "secret.stl"
                                    << "out.glb"
                                    << "cannot be read";
        QTest::newRow("unwritable") << "gear.stl"
                                    << "locked/out.glb"
                                    << "cannot be written";
    }

    void placesThatDoNotWork()
    {
        QFETCH(QString, input);
        QFETCH(QString, output);
        QFETCH(QString, message);
        if (geteuid() == 0 && (input == "secret.stl" || output.startsWith("locked")))
            QSKIP("Permissions do not bind the superuser.");
        QTemporaryDir directory;
        QDir(directory.path()).mkdir("dir.step");
        QDir(directory.path()).mkdir("locked");
        writeFile(directory.filePath("gear.stl"), sample("gear.stl"));
        writeFile(directory.filePath("secret.stl"), sample("gear.stl"));
        QFile::setPermissions(directory.filePath("secret.stl"), {});
        QFile::setPermissions(directory.filePath("locked"), QFile::ReadOwner | QFile::ExeOwner);
        RecordingReport report;
        const Outcome outcome =
            convertFile(directory.filePath(input), directory.filePath(output), {}, report);
        QFile::setPermissions(directory.filePath("locked"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(outcome.state, State::Failure);
        QVERIFY2(QString::fromStdString(outcome.message).contains(message),
                 outcome.message.c_str());
        QCOMPARE(readFile(directory.filePath("gear.stl")), sample("gear.stl"));
    }

    void fullDisk()
    {
        RecordingReport report;
        if (!QFile::exists("/dev/full"))
            QSKIP("There is no device that is always full.");
        QTemporaryDir directory;
        const QString output = directory.filePath("out.glb");
        QVERIFY(QFile::link("/dev/full", output + ".part"));
        const Outcome outcome = convertFile(TN_SAMPLES_DIR "/gear.stl", output, {}, report);
        QCOMPARE(outcome.state, State::Failure);
        QVERIFY2(outcome.message.find("disk may be full") != std::string::npos,
                 outcome.message.c_str());
        QVERIFY(!QFile::exists(output));
    }

    /// Damage within a Step file must end in a result or in a sentence, and soon. The kernel
    /// crashes on some of them, so each file has a process of its own.
    void damagedStepFiles()
    {
        const QByteArray original = sample("bracket.step");
        QRandomGenerator random(20260101);
        for (int round = 0; round < 12; ++round) {
            QByteArray content = original;
            const int begin = content.indexOf("DATA;") + 5;
            const int end = content.indexOf("ENDSEC;", begin);
            for (int i = 0; i <= round; ++i) {
                const int at = random.bounded(begin, end);
                if (round % 3 == 0)
                    content[at] = char(random.bounded(32, 127));
                else if (round % 3 == 1)
                    content.remove(at, random.bounded(1, 30));
                else
                    content.insert(at, content.mid(random.bounded(begin, end), 20));
            }
            QTemporaryDir directory;
            writeFile(directory.filePath("x.step"), content);
            QElapsedTimer timer;
            timer.start();
            const RunResult run =
                runConverter({directory.filePath("x.step"), directory.filePath("x.glb")});
            QVERIFY2(timer.elapsed() < 30000, QByteArray::number(round));
            if (run.exitCode == 0) {
                QCOMPARE(GlbFile(directory.filePath("x.glb")).problems(), QStringList());
            } else {
                QVERIFY(!QFile::exists(directory.filePath("x.glb")));
                QVERIFY2(run.errors.contains("tnconvert: x.step "), run.errors);
            }
        }
    }
};

QTEST_GUILESS_MAIN(tst_BadInput)
#include "tst_BadInput.moc"
