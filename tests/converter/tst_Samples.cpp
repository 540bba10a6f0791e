#include "GlbFile.h"
#include "RecordingReport.h"

#include <QTemporaryDir>
#include <QtTest>

using tnconvert::Outcome;
using tnconvert::State;

Q_DECLARE_METATYPE(GlbFile::Box)

namespace {

/// An Iges file with one line from 0 0 0 to 30 40 0 and nothing else.
QByteArray igesLine(bool isHidden)
{
    const QList<QPair<char, QByteArray>> lines{
        {'S', "A line"},
        {'G', "1H,,1H;,4Hline,8Hline.igs,4Htest,4Htest,32,38,6,308,15,4Hline,1.,2,2HMM,"},
        {'G', "1,0.01,15H20260101.000000,1E-6,100.,,,11,0,15H20260101.000000;"},
        {'D',
         "     110       1       0       0       0       0       0       0"
             + QByteArray(isHidden ? "01000000" : "00000000")},
        {'D', "     110       0       0       1       0"},
        {'P', QByteArray("110,0.,0.,0.,30.,40.,0.;").leftJustified(64) + "       1"},
        {'T', "S      1G      2D      2P      1"},
    };
    QByteArray result;
    QMap<char, int> counts;
    for (const auto &[section, text] : lines)
        result += text.leftJustified(72) + section
            + QByteArray::number(++counts[section]).rightJustified(7) + '\n';
    return result;
}

} // namespace

/// What the samples become, with the defaults and with other settings.
class tst_Samples : public QObject {
    Q_OBJECT

private:
    /// Converts a sample and hands back the result, which is checked to be well formed.
    GlbFile converted(const QString &sample, const char *settings = "{}")
    {
        m_report = std::make_unique<RecordingReport>();
        const QString output = m_directory.filePath("result.glb");
        QFile::remove(output);
        const Outcome outcome = convertFile(QString(TN_SAMPLES_DIR "/") + sample, output,
                                            settingsFrom(settings), *m_report);
        if (outcome.state != State::Success)
            qWarning("%s", outcome.message.c_str());
        return GlbFile(output);
    }

    QTemporaryDir m_directory;
    std::unique_ptr<RecordingReport> m_report;

private slots:
    void everyFormat_data()
    {
        QTest::addColumn<QString>("sample");
        QTest::addColumn<GlbFile::Box>("box");
        QTest::addColumn<double>("volume"); // mm³; 0: not known
        const double bracket = (60 * 10 + 10 * 50) * 80 - 4 * M_PI * 25 * 10; // an L with holes
        const double gear = 8 * 12
            * (16 * 20 * std::sin(6 * M_PI / 180) // flanks of the teeth
               + 0.5 * 20 * 20 * std::sin(8 * M_PI / 180)
               + 0.5 * 16 * 16 * std::sin(10 * M_PI / 180));
        const double tip = 20 * std::cos(4 * M_PI / 180);
        const double housing = 100 * 60 * 40 - 90 * 50 * 35 - M_PI * 100 * 5;
        const double wheel = M_PI * (400 - 36) * 10;
        const double shaft = M_PI * 36 * 60;
        const double gearbox = 120 * 80 * 50 - 110 * 70 * 45 + 2 * (wheel + shaft);
        const double chair = 400 * 400 * 40 + 400 * 440 * 30 + 4 * 40 * 40 * 420;
        using Box = GlbFile::Box;
        const Box gearBox{{-tip, -tip, 0}, {tip, tip, 8}};
        QTest::newRow("Iges") << "housing.iges" << Box{{0, 0, 0}, {100, 60, 40}} << housing;
        QTest::newRow("assembly") << "gearbox.step" << Box{{0, 0, 0}, {120, 80, 70}} << gearbox;
        QTest::newRow("STL as text") << "gear-ascii.stl" << gearBox << gear;
        QTest::newRow("STL binary") << "gear.stl" << gearBox << gear;
        QTest::newRow("Obj") << "chair.obj" << Box{{0, 0, 0}, {400, 900, 400}} << chair;
        QTest::newRow("Step") << "bracket.step" << Box{{0, 0, 0}, {80, 60, 60}} << bracket;
        QTest::newRow("VRML") << "lamp.wrl" << Box{{-80, -10, -80}, {250, 220, 80}} << 0.;
    }

    void everyFormat()
    {
        QFETCH(QString, sample);
        QFETCH(GlbFile::Box, box);
        QFETCH(double, volume);
        const GlbFile file = converted(sample);
        QCOMPARE(file.problems(), QStringList());
        QVERIFY2(file.box().isNear(box, 0.15), file.box().text());
        // The surfaces face outwards and the light falls on the side that faces outwards.
        QVERIFY(file.volume() > 0);
        QVERIFY2(volume == 0 || std::fabs(file.volume() - volume) < volume * 0.01,
                 QByteArray::number(file.volume()) + " instead of " + QByteArray::number(volume));
        QVERIFY2(file.leastNormalAgreement() > 0.5,
                 QByteArray::number(file.leastNormalAgreement()));
        const nlohmann::json &top = file.document()["nodes"][0];
        const bool isUpright = sample.endsWith("obj") || sample.endsWith("wrl");
        QVERIFY(top["extras"]["sourceAxes"] == (isUpright ? "Y-up" : "Z-up"));
        QCOMPARE(top.contains("rotation"), !isUpright);
        QCOMPARE(m_report->warnings, QStringList());
    }

    void assemblyKeepsItsStructure()
    {
        const GlbFile file = converted("gearbox.step");
        QCOMPARE(file.paths(),
                 QStringList({"Gearbox", "Gearbox/Geh\u00E4use", "Gearbox/Drive",
                              "Gearbox/Drive/Shaft", "Gearbox/Drive/Wheel", "Gearbox/Drive",
                              "Gearbox/Drive/Shaft", "Gearbox/Drive/Wheel"}));
        QCOMPARE(file.meshCount(), 3);
        QCOMPARE(file.instances()[3].mesh, file.instances()[6].mesh);
        const tnconvert::Vec3 second = file.instances()[6].toFile.point({});
        QVERIFY((second - tnconvert::Vec3{85, 40, 10}).length() < 1e-6);
    }

    void colors()
    {
        const struct {
            const char *sample;
            const char *path;
            QStringList colors;
        } rows[] = {
            {"bracket.step", "Bracket", {"0.20 0.40 0.80 1.00", "0.90 0.50 0.10 1.00"}},
            {"gearbox.step", "Gearbox/Drive/Wheel", {"0.20 0.40 0.80 1.00"}},
            {"housing.iges", "Housing", {"0.20 0.60 0.30 1.00"}},
            {"chair.obj", "leg-3", {"0.55 0.35 0.20 1.00"}},
            {"lamp.wrl", "Lamp/Foot", {"0.30 0.30 0.35 1.00"}},
            {"lamp.wrl", "Lamp/Head//", {"1.00 1.00 0.80 0.80"}},
        };
        for (const auto &[sample, path, colors] : rows)
            QCOMPARE(converted(sample).colors(path), colors);
    }

    void tessellationFollowsTheSettings()
    {
        const auto count = [this](const char *settings) {
            return converted("gearbox.step", settings).triangles();
        };
        const int usual = count("{}");
        const int fineChords = count(R"({"ChordDeviation": 0.002})");
        const int coarse = count(R"({"ChordDeviation": 2, "NormalTolerance": 60})");
        const int fineAngles = count(R"({"ChordDeviation": 2, "NormalTolerance": 3})");
        const int shortChords = count(R"({"MaxChordLength": 5})");
        QVERIFY(coarse > 0);
        QVERIFY2(coarse < usual && usual < fineChords && coarse < fineAngles && usual < shortChords,
                 QByteArray::number(coarse) + ' ' + QByteArray::number(usual));
        // Splitting chords changes neither the shape nor the facing of the triangles.
        const double volume = converted("gearbox.step").volume();
        const double split = converted("gearbox.step", R"({"MaxChordLength": 5})").volume();
        QVERIFY(std::fabs(split / volume - 1) < 1e-3);
    }

    void absurdTolerancesEndSoon()
    {
        for (const char *settings :
             {R"({"ChordDeviation": 1e-12})", R"({"MaxChordLength": 1e-6})"}) {
            QElapsedTimer timer;
            timer.start();
            QVERIFY(converted("assembly/base.stp", settings).triangles() > 0);
            QVERIFY2(timer.elapsed() < 60000, QByteArray::number(timer.elapsed()));
            QCOMPARE(m_report->warnings.size(), 1);
        }
    }

    void unshareAndFlush()
    {
        const GlbFile usual = converted("gearbox.step");
        const GlbFile unshared = converted("gearbox.step", R"({"UnshareNodes": true})");
        QCOMPARE(unshared.meshCount(), 5);
        const GlbFile flushed = converted("gearbox.step", R"({"FlushTransformations": true})");
        QCOMPARE(flushed.problems(), QStringList());
        QCOMPARE(flushed.paths(), usual.paths());
        for (const GlbFile::Instance &instance : flushed.instances())
            QVERIFY(instance.toFile.isIdentity());
        for (const GlbFile *file : {&unshared, &flushed}) {
            QVERIFY2(file->box().isNear(usual.box(), 1e-3), file->box().text());
            QVERIFY(file->leastNormalAgreement() > 0.5);
        }
    }

    void layers()
    {
        const GlbFile grouped = converted("gearbox.step", R"({"CreateLayerGroups": true})");
        QVERIFY(grouped.paths().contains("Gearbox/Outside/Geh\u00E4use"));
        QVERIFY(grouped.paths().contains("Gearbox/Drive/Inside/Wheel"));
        QVERIFY(grouped.box().isNear(converted("gearbox.step").box(), 1e-6));
    }

    void repairsKeepShapeAndColor()
    {
        const GlbFile usual = converted("bracket.step");
        for (const char *settings :
             {R"({"UseStitching": true})", R"({"FixSurfaceOrientation": true})",
              R"({"UseStitching": true, "FixSurfaceOrientation": true})"}) {
            const GlbFile file = converted("bracket.step", settings);
            QCOMPARE(file.problems(), QStringList());
            QVERIFY(std::fabs(file.volume() / usual.volume() - 1) < 1e-3);
            QCOMPARE(file.colors("Bracket"), usual.colors("Bracket"));
        }
    }

    void kindsOfGeometryCanBeLeftOut()
    {
        for (const auto &[sample, settings] :
             {std::pair("bracket.step", R"({"ImportSurfaces": false})"),
              std::pair("gear.stl", R"({"ImportMeshes": false})"),
              std::pair("lamp.wrl", R"({"ImportMeshes": false})"),
              std::pair("chair.obj", R"({"ImportMeshes": false})")}) {
            RecordingReport report;
            const Outcome outcome =
                convertFile(QString(TN_SAMPLES_DIR "/") + sample, m_directory.filePath("none.glb"),
                            settingsFrom(settings), report);
            QCOMPARE(outcome.state, State::Failure);
            QVERIFY2(outcome.message.find("no geometry") != std::string::npos,
                     outcome.message.c_str());
        }
    }

    void freeCurves()
    {
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
            const QString input = m_directory.filePath("line.igs");
            const QString output = m_directory.filePath("line.glb");
            writeFile(input, igesLine(isHidden));
            RecordingReport report;
            const Outcome outcome = convertFile(input, output, settingsFrom(settings), report);
            QVERIFY2((outcome.state == State::Success) == (segments > 0), settings);
            if (segments == 0)
                continue;
            const GlbFile file(output);
            QCOMPARE(file.problems(), QStringList());
            QCOMPARE(file.segments(), segments);
            QVERIFY2(file.box().isNear({{0, 0, 0}, {30, 40, 0}}, 1e-4), file.box().text());
        }
    }

    void metadata()
    {
        const GlbFile with = converted("lamp.wrl", R"({"ImportMetadata": true})");
        QCOMPARE(with.document()["nodes"][0]["extras"].value("title", ""), std::string("Lamp"));
        QVERIFY(!converted("lamp.wrl").document()["nodes"][0]["extras"].contains("title"));
    }

    void wrongSettingsHaveDefaults()
    {
        std::vector<std::string> warnings;
        const tnconvert::Settings settings =
            tnconvert::Settings::fromJson({{"ChordDeviation", "fine"},
                                           {"NormalTolerance", -3},
                                           {"ImportCurves", 1},
                                           {"UnshareNodes", true},
                                           {"NoSuchField", 1}},
                                          warnings);
        QCOMPARE(int(warnings.size()), 3);
        QCOMPARE(settings.chordDeviation, 0.1);
        QCOMPARE(settings.normalTolerance, 15.0);
        QVERIFY(!settings.importCurves && settings.unshareNodes);
    }
};

QTEST_GUILESS_MAIN(tst_Samples)
#include "tst_Samples.moc"
