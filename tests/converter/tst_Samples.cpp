#include "ConverterFixture.h"

#include <QtTest>

using tnconvert::State;
using tnhost::BoundingBox;

namespace {

/// An Iges file with one line from 0 0 0 to 30 40 0 and nothing else.
const QByteArray igesLine =
    "A line                                                                  S      1\n"
    "1H,,1H;,4Hline,8Hline.igs,4Htest,4Htest,32,38,6,308,15,4Hline,1.,2,2HMM,G      1\n"
    "1,0.01,15H20260101.000000,1E-6,100.,,,11,0,15H20260101.000000;          G      2\n"
    "     110       1       0       0       0       0       0       000000000D      1\n"
    "     110       0       0       1       0                                D      2\n"
    "110,0.,0.,0.,30.,40.,0.;                                               1P      1\n"
    "S      1G      2D      2P      1                                        T      1\n";

} // namespace

/// What the samples become, with the defaults and with other settings.
class tst_Samples : public QObject {
    Q_OBJECT

private:
    ConvertedFile converted(const QString &sample, const char *settings = "{}")
    {
        m_fixture.convert(sample, settings);
        return m_fixture.result();
    }

    ConverterFixture m_fixture;

private slots:
    void everyFormat()
    {
        const double bracket = (60 * 10 + 10 * 50) * 80 - 4 * M_PI * 25 * 10; // an L with holes
        const double gear = 8 * 12
            * (16 * 20 * std::sin(6 * M_PI / 180) // flanks of the teeth
               + 0.5 * 20 * 20 * std::sin(8 * M_PI / 180)
               + 0.5 * 16 * 16 * std::sin(10 * M_PI / 180));
        const float tip = 20 * std::cos(4 * float(M_PI) / 180);
        const double housing = 100 * 60 * 40 - 90 * 50 * 35 - M_PI * 100 * 5;
        const double wheelAndShaft = M_PI * (400 - 36) * 10 + M_PI * 36 * 60;
        const double gearbox = 120 * 80 * 50 - 110 * 70 * 45 + 2 * wheelAndShaft;
        const double chair = 400 * 400 * 40 + 400 * 440 * 30 + 4 * 40 * 40 * 420;
        const BoundingBox gearBox{{-tip, -tip, 0}, {tip, tip, 8}};
        const struct {
            const char *sample;
            BoundingBox box;
            double volume; // mm³; 0: not known
            const char *path;
            QStringList colors;
        } rows[] = {
            {"bracket.step",
             {{0, 0, 0}, {80, 60, 60}},
             bracket,
             "Bracket",
             {"0.20 0.40 0.80 1.00", "0.90 0.50 0.10 1.00"}},
            {"gearbox.step",
             {{0, 0, 0}, {120, 80, 70}},
             gearbox,
             "Gearbox/Drive/Wheel",
             {"0.20 0.40 0.80 1.00"}},
            {"housing.iges",
             {{0, 0, 0}, {100, 60, 40}},
             housing,
             "Housing",
             {"0.20 0.60 0.30 1.00"}},
            {"gear-ascii.stl", gearBox, gear, "", {}},
            {"gear.stl", gearBox, gear, "", {}},
            {"chair.obj", {{0, 0, 0}, {400, 900, 400}}, chair, "leg-3", {"0.55 0.35 0.20 1.00"}},
            {"lamp.wrl",
             {{-80, -10, -80}, {250, 220, 80}},
             0,
             "Lamp/Head//",
             {"1.00 1.00 0.80 0.80"}},
        };
        for (const auto &[sample, box, volume, path, colors] : rows) {
            const ConvertedFile file = converted(sample);
            QCOMPARE(file.problems, QStringList());
            QVERIFY2(file.fills(box, 0.15F), sample);
            // The surfaces face outwards and the light falls on the side that faces outwards.
            QVERIFY2(file.volume > 0 && file.leastNormalAgreement > 0.5, sample);
            QVERIFY2(volume == 0 || std::fabs(file.volume - volume) < volume * 0.01, sample);
            QVERIFY2(colors.isEmpty() || file.colors[path] == colors, sample);
            const nlohmann::json &top = file.document["nodes"][0];
            const bool isUpright = QRegularExpression("obj|wrl").match(sample).hasMatch();
            QVERIFY2(top["extras"]["sourceAxes"] == (isUpright ? "Y-up" : "Z-up"), sample);
            QVERIFY2(isUpright ? !top.contains("rotation") : top["rotation"][0] < -0.7, sample);
            QCOMPARE(m_fixture.warnings, QStringList());
        }
    }

    void beginningsOfTexts()
    {
        const QByteArray mark = "\xEF\xBB\xBF";
        m_fixture.write("chair.mtl", mark + ConverterFixture::read("chair.mtl"));
        const std::pair<QString, QByteArray> rows[] = {
            {"bracket.step", mark},
            {"gear-ascii.stl", mark},
            {"gear-ascii.stl", "solid " + QByteArray(5000, 'a') + "\nendsolid\n"},
            {"chair.obj", mark},
            {"lamp.wrl", mark},
        };
        for (const auto &[sample, beginning] : rows) {
            const ConvertedFile usual = converted(sample);
            const QByteArray content = beginning + ConverterFixture::read(sample);
            const ConvertedFile marked = converted(m_fixture.write(sample, content));
            QVERIFY2(usual.volume != 0.0 && marked.volume == usual.volume, qPrintable(sample));
            QCOMPARE(marked.colors, usual.colors);
            QCOMPARE(m_fixture.warnings, QStringList());
        }
    }

    void looksDamagedButIsNot()
    {
        const std::tuple<QString, QByteArray, QByteArray> rows[] = {
            {"housing.iges", "7HHousing;             ", "19HA,1E999;-INFLOW,1D9;"},
            {"bracket.step", "ENDSEC;\nEND-ISO", "#99999=DIRECTION('',$);\nENDSEC;\nEND-ISO"},
            {"chair.obj", "", "v 0 0 0#c\\\nv .1 0 0 # c\\\nv 0 .1 0\nf -1 -2 -3\n"},
        };
        for (const auto &[sample, usual, unusual] : rows) {
            QByteArray content = ConverterFixture::read(sample);
            QVERIFY2(content.contains(usual), qPrintable(sample));
            content = usual.isEmpty() ? content + unusual : content.replace(usual, unusual);
            const double volume = converted(sample).volume;
            const double found = converted(m_fixture.write(sample, content)).volume;
            QVERIFY2(volume > 0 && std::fabs(found / volume - 1) < 1e-6, qPrintable(sample));
        }
    }

    void assemblyKeepsItsStructure()
    {
        const ConvertedFile usual = converted("gearbox.step");
        QCOMPARE(usual.paths,
                 QStringList({"Gearbox", "Gearbox/Geh\u00E4use", "Gearbox/Drive",
                              "Gearbox/Drive/Shaft", "Gearbox/Drive/Wheel", "Gearbox/Drive",
                              "Gearbox/Drive/Shaft", "Gearbox/Drive/Wheel"}));
        QCOMPARE(usual.meshCount, 3);
        QCOMPARE(usual.instances[3].mesh, usual.instances[6].mesh);
        QCOMPARE(usual.instances[6].toFile.map(QVector3D()), QVector3D(85, 40, 10));

        const ConvertedFile unshared = converted("gearbox.step", R"({"UnshareNodes": true})");
        QCOMPARE(unshared.meshCount, 5);
        const ConvertedFile flushed =
            converted("gearbox.step", R"({"FlushTransformations": true})");
        QCOMPARE(flushed.problems, QStringList());
        QCOMPARE(flushed.paths, usual.paths);
        for (const ConvertedFile::Instance &instance : flushed.instances)
            QVERIFY(instance.toFile.isIdentity());
        const ConvertedFile grouped = converted("gearbox.step", R"({"CreateLayerGroups": true})");
        QVERIFY(grouped.paths.contains("Gearbox/Outside/Geh\u00E4use"));
        QVERIFY(grouped.paths.contains("Gearbox/Drive/Inside/Wheel"));
        for (const ConvertedFile *file : {&unshared, &flushed, &grouped})
            QVERIFY(file->fills(usual.box, 1e-3F) && file->leastNormalAgreement > 0.5);
    }

    void tessellationFollowsTheSettings()
    {
        const ConvertedFile usual = converted("gearbox.step");
        const ConvertedFile split = converted("gearbox.step", R"({"MaxChordLength": 5})");
        const auto count = [this](const char *settings) {
            return converted("gearbox.step", settings).triangles;
        };
        const int coarse = count(R"({"ChordDeviation": 2, "NormalTolerance": 60})");
        QVERIFY(0 < coarse && coarse < usual.triangles && usual.triangles < split.triangles);
        QVERIFY(usual.triangles < count(R"({"ChordDeviation": 0.002})"));
        QVERIFY(coarse < count(R"({"ChordDeviation": 2, "NormalTolerance": 3})"));
        // Splitting chords changes neither the shape nor the facing of the triangles.
        QVERIFY(std::fabs(split.volume / usual.volume - 1) < 1e-3);
    }

    void absurdTolerancesEndSoon()
    {
        for (const char *settings :
             {R"({"ChordDeviation": 1e-12})", R"({"MaxChordLength": 1e-6})"}) {
            QElapsedTimer timer;
            timer.start();
            QVERIFY(converted("assembly/base.stp", settings).triangles > 0);
            QVERIFY2(timer.elapsed() < 60000, QByteArray::number(timer.elapsed()));
            QCOMPARE(m_fixture.warnings.size(), 1);
        }
    }

    void repairsKeepShapeAndColor()
    {
        const ConvertedFile usual = converted("bracket.step");
        for (const char *settings :
             {R"({"UseStitching": true})", R"({"FixSurfaceOrientation": true})",
              R"({"UseStitching": true, "FixSurfaceOrientation": true})"}) {
            const ConvertedFile file = converted("bracket.step", settings);
            QCOMPARE(file.problems, QStringList());
            QVERIFY(std::fabs(file.volume / usual.volume - 1) < 1e-3);
            QCOMPARE(file.colors, usual.colors);
        }
    }

    void kindsOfGeometryCanBeLeftOut()
    {
        for (const auto &[sample, settings] :
             {std::pair("bracket.step", R"({"ImportSurfaces": false})"),
              std::pair("gear.stl", R"({"ImportMeshes": false})"),
              std::pair("lamp.wrl", R"({"ImportMeshes": false})"),
              std::pair("chair.obj", R"({"ImportMeshes": false})")}) {
            const tnconvert::Outcome outcome = m_fixture.convert(sample, settings);
            QCOMPARE(outcome.state, State::Failure);
            QVERIFY(
                QString::fromStdString(outcome.message).contains("no geometry that the settings"));
        }
    }

    void freeCurves()
    {
        const QByteArray hidden = QByteArray(igesLine).replace("00000000D", "01000000D");
        const struct {
            bool isHidden;
            const char *settings;
            int segments; // 0: the conversion fails
        } rows[] = {
            {false, "{}", 0},
            {false, R"({"ImportCurves": true})", 1},
            {false, R"({"ImportCurves": true, "MaxChordLength": 13})", 4},
            {true, R"({"ImportCurves": true})", 0},
            {true, R"({"ImportCurves": true, "ImportInvisibleCurves": true})", 1},
        };
        for (const auto &[isHidden, settings, segments] : rows) {
            const ConvertedFile file =
                converted(m_fixture.write("line.igs", isHidden ? hidden : igesLine), settings);
            QVERIFY2(file.problems.isEmpty() == (segments > 0), settings);
            QCOMPARE(file.segments, segments);
            QVERIFY(segments == 0 || file.fills({{0, 0, 0}, {30, 40, 0}}, 1e-4F));
        }
    }

    void smoothingGroups()
    {
        // Two triangles that meet at 45 degrees share their corners only within one group.
        for (const char *group : {"1", "2"}) {
            const ConvertedFile file = converted(
                m_fixture.write("a.obj",
                                QByteArray("v 0 0 0\nv 0 1 0\nv 1 0 0\nv -1 0 1\ns 1\nf 1 3 2\ns ")
                                    + group + "\nf 1 2 4\n"));
            const auto position =
                file.document["meshes"][0]["primitives"][0]["attributes"]["POSITION"]
                    .get<std::size_t>();
            QVERIFY(file.document["accessors"][position]["count"] == (*group == '1' ? 4 : 6));
        }
    }

    void metadata()
    {
        const ConvertedFile with = converted("lamp.wrl", R"({"ImportMetadata": true})");
        QVERIFY(with.document["nodes"][0]["extras"]["title"] == "Lamp");
        QVERIFY(!converted("lamp.wrl").document["nodes"][0]["extras"].contains("title"));
    }

    void partFiles()
    {
        const QByteArray original = ConverterFixture::read("assembly/arm.stp");
        for (const char *name : {"robot.step", "base.stp", "gripper.stp"})
            m_fixture.write(name, ConverterFixture::read(QString("assembly/") + name));
        const QString arm = m_fixture.path("arm.stp");
        for (const QByteArray &content :
             {original, QByteArray(), original.left(5000), QByteArray("An arm.\n")}) {
            const bool isWhole = content == original;
            if (content.isEmpty())
                QVERIFY(QFile::remove(arm));
            else
                m_fixture.write("arm.stp", content);
            const tnconvert::Outcome outcome = m_fixture.convert(m_fixture.path("robot.step"));
            QCOMPARE(outcome.state, isWhole ? State::Success : State::Incomplete);
            QCOMPARE(QString::fromStdString(outcome.message).contains(arm), !isWhole);
            QCOMPARE(m_fixture.parts.join(", "),
                     QString("part base.stp, success base.stp, part arm.stp, %1 arm.stp, "
                             "part gripper.stp, success gripper.stp")
                         .arg(isWhole ? "success" : "failure"));
            const ConvertedFile file = m_fixture.result();
            QCOMPARE(file.problems, QStringList());
            QVERIFY(file.paths.contains("Robot/gripper"));
            QCOMPARE(file.meshCount, isWhole ? 3 : 2);
            QCOMPARE(file.colors["Robot/arm"],
                     isWhole ? QStringList("0.90 0.50 0.10 1.00") : QStringList());
            QVERIFY(!isWhole || file.fills({{-40, -40, 0}, {40, 40, 250}}, 0.15F));
        }
        m_fixture.write(
            "arm.stp",
            QByteArray(original).replace("CLOSED_SHELL('',(#17,", "CLOSED_SHELL('',(#18,"));
        const tnconvert::Outcome damaged = m_fixture.convert(m_fixture.path("robot.step"));
        QCOMPARE(damaged.state, State::Incomplete);
        QCOMPARE(QString::fromStdString(damaged.message),
                 "arm.stp is damaged: 1 entity that its shapes need cannot be read, "
                 "#16 CLOSED_SHELL; 1 solid has a hole in its surface, "
                 "#15 MANIFOLD_SOLID_BREP.");
        QVERIFY(m_fixture.parts.contains("incomplete arm.stp"));
        QCOMPARE(m_fixture.result().meshCount, 3);
        // The assembly is a part of itself; what is drawn of a circle is open.
        m_fixture.write("arm.stp", ConverterFixture::read("assembly/robot.step"));
        QVERIFY(m_fixture.convert(m_fixture.path("robot.step")).state != State::Failure);
        QCOMPARE(m_fixture.result().problems, QStringList());
        // All of the robot's geometry stands in its parts.
        QCOMPARE(
            m_fixture.convert("assembly/robot.step", R"({"ImportReferencedFiles": false})").state,
            State::Failure);
        QCOMPARE(m_fixture.parts, QStringList());
    }
};

QTEST_GUILESS_MAIN(tst_Samples)
#include "tst_Samples.moc"
