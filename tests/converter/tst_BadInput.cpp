#include "ConverterProcess.h"
#include "GlbFile.h"
#include "RecordingReport.h"

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

void verifyFailure(const Outcome &outcome, const char *message)
{
    QCOMPARE(outcome.state, State::Failure);
    QVERIFY2(outcome.message.find(message) != std::string::npos, outcome.message.c_str());
}

} // namespace

/// Files that cannot be converted: what people are told, and that nothing is left behind.
class tst_BadInput : public QObject {
    Q_OBJECT

private slots:
    void messages()
    {
        const QByteArray step = sample("bracket.step");
        const QByteArray iges = sample("housing.iges");
        const struct {
            const char *name;
            QByteArray content;
            const char *message;
        } rows[] = {
            {"x.step", "", "x.step is empty."},
            {"x.step", "Hello\n", "it does not begin with ISO-10303-21. It seems to be text"},
            {"x.stp", iges, "It seems to be an Iges file."},
            {"x.igs", step, "It seems to be a Step file."},
            {"x.wrl", "%PDF-1.4\n", "It seems to be a PDF document."},
            {"x.stl", QByteArray("Dear reader,\n").repeated(20), "x.stl is not an STL file"},
            {"x.step", step.left(step.size() / 2), "its last line END-ISO-10303-21; is missing"},
            {"x.iges", iges.left(iges.size() / 2), "marked T in column 73"},
            {"x.stl", sample("gear.stl").left(5000), "192 triangles but has room for only 98"},
            {"x.stl", sample("gear-ascii.stl").left(3000), "damaged at line"},
            {"x.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 1 2,5 x\n",
             "damaged at line 4: a vertex has not three coordinates"},
            {"x.obj", "v 1 2 3\n", "no geometry"},
            {"x.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 99\nf -9 1 2\n", "x.obj"},
            {"x.xyz", "a", "not known by its suffix"},
        };
        for (const auto &[name, content, message] : rows) {
            QTemporaryDir directory;
            const QString output = directory.filePath("out.glb");
            writeFile(directory.filePath(name), content);
            writeFile(output, "from before");
            RecordingReport report;
            verifyFailure(convertFile(directory.filePath(name), output, {}, report), message);
            QCOMPARE(readFile(output), QByteArray("from before"));
            QCOMPARE(QDir(directory.path()).entryList(QDir::Files).size(), 2);
        }
    }

    void placesThatDoNotWork()
    {
        QTemporaryDir directory;
        const QString locked = directory.filePath("locked");
        QDir(directory.path()).mkdir("dir.step");
        QDir(directory.path()).mkdir("locked");
        writeFile(directory.filePath("gear.stl"), sample("gear.stl"));
        writeFile(directory.filePath("secret.stl"), sample("gear.stl"));
        QFile::setPermissions(directory.filePath("secret.stl"), {});
        QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner);
        const struct {
            const char *input;
            const char *output;
            const char *message;
            bool needsPermissions = false;
        } rows[] = {
            {"no.step", "out.glb", "no.step does not exist"},
            {"dir.step", "out.glb", "is a directory"},
            {"gear.stl", "dir.step", "is a directory"},
            {"gear.stl", "no/out.glb", "for the output does not exist"},
            {"gear.stl", "gear.stl", "overwrite the input"},
            {"secret.stl", "out.glb", "cannot be read", true},
            {"gear.stl", "locked/out.glb", "cannot be written", true},
        };
        for (const auto &[input, output, message, needsPermissions] : rows) {
            if (needsPermissions && geteuid() == 0)
                continue; // Permissions do not bind the superuser.
            RecordingReport report;
            verifyFailure(
                convertFile(directory.filePath(input), directory.filePath(output), {}, report),
                message);
        }
        QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
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
        verifyFailure(convertFile(TN_SAMPLES_DIR "/gear.stl", output, {}, report),
                      "disk may be full");
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
            const RunResult run =
                runConverter({directory.filePath("x.step"), directory.filePath("x.glb")});
            // One that ends in a crash has no sentence to show.
            QVERIFY2(run.exitCode == 0 || run.errors.contains("tnconvert: x.step "), run.errors);
            QCOMPARE(QFile::exists(directory.filePath("x.glb")), run.exitCode == 0);
            if (run.exitCode == 0)
                QCOMPARE(GlbFile(directory.filePath("x.glb")).problems(), QStringList());
        }
    }
};

QTEST_GUILESS_MAIN(tst_BadInput)
#include "tst_BadInput.moc"
