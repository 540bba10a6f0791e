#include "ConverterFixture.h"

#include <QDir>
#include <QtTest>

using tnconvert::State;

/// What a file may make the converter read besides itself.
class tst_References : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        for (const char *name : {"in", "in/sub", "in-other"})
            QVERIFY(QDir(m_fixture.path("")).mkdir(name));
        for (const char *name : {"box.wrl", "in/sub/box.wrl", "in-other/box.wrl"})
            m_fixture.write(name, "#VRML V2.0 utf8\nShape { geometry Box { size 1 1 1 } }");
        m_fixture.write("red.mtl", "newmtl red\nKd 1 0 0\n");
        for (const char *name : {"in/base.stp", "arm.stp", "in/gripper.stp"})
            m_fixture.write(name, ConverterFixture::read("assembly/" + QFileInfo(name).fileName()));
        const std::pair<const char *, const char *> links[] = {{"box.wrl", "in/out.wrl"},
                                                               {".", "in/up"},
                                                               {"in/sub/box.wrl", "in/sub/in.wrl"},
                                                               {"in", "in/sub/round"}};
        for (const auto &[target, link] : links)
            QVERIFY(QFile::link(m_fixture.path(target), m_fixture.path(link)));
    }

    void inlined_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("isOutside");
        QTest::newRow("above") << "../box.wrl" << true;
        QTest::newRow("above, encoded") << "%2e%2e/box.wrl" << true;
        QTest::newRow("through a folder") << "sub/../../box.wrl" << true;
        QTest::newRow("beside, with a longer name") << "../in-other/box.wrl" << true;
        QTest::newRow("absolute") << m_fixture.path("box.wrl") << true;
        QTest::newRow("url") << "file://" + m_fixture.path("box.wrl") << true;
        QTest::newRow("link") << "out.wrl" << true;
        QTest::newRow("link to a folder") << "up/box.wrl" << true;
        QTest::newRow("out and in again") << "../in/sub/box.wrl" << false;
        QTest::newRow("absolute, within") << m_fixture.path("in/sub/box.wrl") << false;
        QTest::newRow("link within") << "sub/in.wrl" << false;
    }

    void inlined()
    {
        QFETCH(const QString, url);
        QFETCH(const bool, isOutside);
        const QString top = write("#VRML V2.0 utf8\nInline { url \"%1\" } "
                                  "Shape { geometry Box { size 1 1 1 } }",
                                  url);
        const tnconvert::Outcome outcome = m_fixture.convert(top);
        QCOMPARE(outcome.state, isOutside ? State::Incomplete : State::Success);
        QCOMPARE(m_fixture.result().triangles, isOutside ? 12 : 24);
        QCOMPARE(outcome.message.find(".wrl (it lies outside the folder of top.wrl and is not "
                                      "followed)")
                     != std::string::npos,
                 isOutside);
        QCOMPARE(m_fixture.convert(top, R"({"FollowOutside": true})").state, State::Success);
        QCOMPARE(m_fixture.result().triangles, 24);
    }

    void circlesAreReadOnce()
    {
        // Each time round the path is another one.
        const QString top = write("#VRML V2.0 utf8\nInline { url \"%1\" } "
                                  "Shape { geometry Box { size 1 1 1 } }",
                                  "sub/round/top.wrl");
        QCOMPARE(m_fixture.convert(top).state, State::Success);
        QCOMPARE(m_fixture.result().triangles, 12);
        QVERIFY(m_fixture.warnings.join('\n').contains("inlines itself"));
    }

    void materials()
    {
        m_fixture.write("in/Blue.mtl", "newmtl red\nKd 0 0 1\n");
        const QString input = m_fixture.write(
            "in/top.obj", "mtllib ../red.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n");
        const tnconvert::Outcome outcome = m_fixture.convert(input);
        QCOMPARE(outcome.state, State::Incomplete);
        QVERIFY2(outcome.message.find("red.mtl are missing: it lies outside") != std::string::npos,
                 outcome.message.c_str());
        QVERIFY(!m_fixture.result().colors.values().contains(QStringList("1.00 0.00 0.00 1.00")));
        QCOMPARE(m_fixture.convert(input, R"({"FollowOutside": true})").state, State::Success);
        m_fixture.write("in/top.obj", "mtllib blue.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        QCOMPARE(m_fixture.convert(input).state, State::Success);
        QVERIFY(m_fixture.warnings.join('\n').contains("lies there as Blue.mtl"));
        QCOMPARE(m_fixture.references, QStringList("in/blue.mtl"));
    }

    void stepParts()
    {
        const struct {
            const char *arm;
            const char *message;
        } rows[] = {{"../arm.stp", "arm.stp (it lies outside the folder of top.stp"},
                    {"BASE.stp", "BASE.stp (it does not exist, but lies there as base.stp)"},
                    {"up/in/top.stp", "in/top.stp (it would be a part of itself)"}};
        for (const auto &[arm, message] : rows) {
            const QString input =
                m_fixture.write("in/top.stp",
                                ConverterFixture::read("assembly/robot.step")
                                    .replace("'arm.stp'", QByteArray("'") + arm + "'"));
            const tnconvert::Outcome outcome = m_fixture.convert(input);
            QCOMPARE(outcome.state, State::Incomplete);
            QVERIFY2(outcome.message.find(message) != std::string::npos, outcome.message.c_str());
            QCOMPARE(m_fixture.result().meshCount, 2);
            QCOMPARE(m_fixture.convert(input, R"({"FollowOutside": true})").state,
                     *arm == '.' ? State::Success : State::Incomplete);
        }
    }

    void tellsWhatItLooksAt()
    {
        // Of several urls the first that exists counts, so those before it do as well.
        const QString inlines = write("#VRML V2.0 utf8\nInline { url [ \"%1\" \"../box.wrl\" "
                                      "\"sub/box.wrl\" \"sub/in.wrl\" ] }",
                                      "missing.wrl");
        QCOMPARE(m_fixture.convert(inlines).state, State::Success);
        QCOMPARE(m_fixture.references, QStringList({"in/missing.wrl", "in/sub/box.wrl"}));
        const QString assembly =
            m_fixture.write("in/top.stp", ConverterFixture::read("assembly/robot.step"));
        m_fixture.convert(assembly);
        m_fixture.references.sort();
        QCOMPARE(m_fixture.references,
                 QStringList({"in/arm.stp", "in/base.stp", "in/gripper.stp"}));
    }

    /// Whatever ties a part file to its product may be what a damaged file has lost.
    void looseStepParts()
    {
        const char *const loose = "No product is said to be in arm.stp.";
        const struct {
            const char *lost;
            const char *message;
        } rows[] = {{"#110 =", loose},
                    {"#114 =", loose},
                    {"#144 =", loose},
                    {"#111 =", "2 entities that its shapes need cannot be read, the first is #110"},
                    {"#115 =", "1 entity that its shapes need cannot be read, #136"},
                    {"#141 =", "1 entity that its shapes need cannot be read, #139"}};
        for (const auto &[lost, message] : rows) {
            QByteArray top = ConverterFixture::read("assembly/robot.step");
            const int at = top.indexOf(lost);
            top.remove(at, top.indexOf(";\n", at) + 2 - at);
            const QString input = m_fixture.write("in/top.stp", top);
            const std::string told = m_fixture.convert(input).message;
            QVERIFY2(told.find(message) != std::string::npos, told.c_str());
        }
    }

private:
    /// in/top.wrl
    QString write(const char *text, const QString &url) const
    {
        return m_fixture.write("in/top.wrl", QString(text).arg(url).toUtf8());
    }

    ConverterFixture m_fixture;
};

QTEST_GUILESS_MAIN(tst_References)
#include "tst_References.moc"
