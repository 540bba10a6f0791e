#include "records/CADFileTypes.h"

#include <QtTest/QtTest>

using namespace tnCADFileTypes;

namespace {

/// The groups by the letters that the table below uses, from bit 0 on.
const QStringList groups{"SC", "IO", "FS", "GS", "AM", "II", "TV", "LJ", "TS", "SU", "ME", "CU",
                         "PM", "AN", "LF", "KF", "SR", "CS", "SM", "RB", "GR", "GM", "MD"};

} // namespace

class tst_FileTypes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void types_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("extensions");
        QTest::addColumn<bool>("importSettings");
        QTest::addColumn<QString>("shown");

        int value = 0;
        const auto row = [&](const char *name, const QString &extensions, bool settings,
                             const QString &shown) {
            QTest::newRow(name) << value++ << extensions << settings << shown;
        };
        row("Cinema4D", "c4d", false, "GS GR");
        row("Cosmo", "csb", false, "GS TS GR");
        row("Webplan", "dwf", false, "GS GR");
        row("KXT", "kxt abc", false, "FS GS TS KF GR MD");
        row("Lumen", "lu lv", false, "GS GR");
        row("Obj", "obj", false, "GS GR");
        row("OpenSG", "osb", false, "FS GS AN SR SM RB");
        row("PLMXML", "plmxml", false, "SC FS GS SR GR MD");
        row("Python", "py", false, "");
        row("Orrery", "orr", false, "GS GR");
        row("TARN", "trb tre", false, "FS PM SR SM RB");
        row("VRML", "vrml wrl slp", false, "GS GR");
        row("ACIS", "sat smt", true, "SC IO FS GS TS SU ME CU GR");
        row("Heron", "wire", true, "SC IO FS GS II TV TS SU ME CU LF SR GR MD");
        row("Draftline", "dwg dxf", true, "SC IO GS TS SU ME CU GR MD");
        row("Catia V4", "model mdl session exp dlv dlv3 dlv4", true,
            "SC IO FS GS II TS SU ME CU SR GR GM MD");
        row("Catia V5", "catpart catproduct cgr", true,
            "SC IO FS GS AM II TS SU ME CU SR CS GR GM MD");
        row("DGN", "dgn", true, "SC IO FS GS II TS SU ME CU SR GR GM MD");
        row("Millwright", "mwa mwp", true, "SC IO FS GS II TS SU ME CU SR GR GM MD");
        row("JT", "jt", true, "SC IO FS GS II LJ TS SU ME CU SR GR GM MD");
        row("NX", "prt", true, "SC IO FS GS AM II TS SU ME CU LF SR GR GM MD");
        row("Iges", "iges igs", true, "SC IO FS GS TS SU ME CU GR GM MD");
        row("Parasolid", "x_t x_b", true, "SC IO FS GS TS SU ME CU GR GM MD");
        row("ProEngineer", "g prt asm neu", true, "SC IO FS GS II TS SU ME CU SR GR GM MD");
        row("Rhino", "3dm", true, "SC IO FS GS TS SU ME CU GR MD");
        row("SketchUp", "skp skb style", true, "SC IO FS GS TS SU ME CU GR MD");
        row("SolidEdge", "asm par pwd psm", true, "SC IO FS GS AM II TS SU ME CU SR GR GM MD");
        row("SolidWorks", "sldprt sldasm", true, "SC IO FS GS II TS SU ME CU SR GR GM MD");
        row("Step", "stp step", true, "SC IO FS GS AM II TS SU ME CU SR GR GM MD");
        row("STL", "stl stla stlb", true, "SC GS GR");
        row("BCAD", "", false, "SC IO GS TS SU ME CU GR");
        row("Undefined", "", false, "");
        row("Unsupported", "", false, "no mask");
    }

    void types()
    {
        QFETCH(int, value);
        QFETCH(QString, extensions);
        QFETCH(bool, importSettings);
        QFETCH(QString, shown);

        const auto type = static_cast<FileType>(value);
        QCOMPARE(displayName(type), QString(QTest::currentDataTag()));
        QCOMPARE(displayNameOrUndefined(type), QString(QTest::currentDataTag()));

        const auto entry = catalogue().find(type);
        QCOMPARE(entry != catalogue().end(), !extensions.isEmpty());
        if (entry != catalogue().end()) {
            const QStringList expected = extensions.split(' ');
            QCOMPARE(entry->second.extensions,
                     std::unordered_set<QString>(expected.begin(), expected.end()));
            QCOMPARE(entry->second.importSettings, importSettings);
        }

        const auto mask = optionGroupMasks().find(type);
        QCOMPARE(mask != optionGroupMasks().end(), shown != "no mask");
        if (mask != optionGroupMasks().end()) {
            QStringList set;
            for (int bit = 0; bit < groups.size(); ++bit) {
                if (mask->second & (1U << bit))
                    set << groups[bit];
            }
            QCOMPARE(set.join(' '), shown);
            QCOMPARE(mask->second >> groups.size(), type == KXT ? 1U : 0U);
        }
    }

    void nothingBesides()
    {
        QCOMPARE(catalogue().size(), std::size_t(30));
        QCOMPARE(optionGroupMasks().size(), std::size_t(32));
        QCOMPARE(baseCadTypes(), (std::unordered_set<FileType>{Parasolid, SketchUp}));
        for (const int value : {-1, 33, 1000}) {
            QVERIFY(displayName(static_cast<FileType>(value)).isNull());
            QCOMPARE(displayNameOrUndefined(static_cast<FileType>(value)), QString("undefined"));
        }
    }
};

QTEST_APPLESS_MAIN(tst_FileTypes)

#include "tst_filetypes.moc"
