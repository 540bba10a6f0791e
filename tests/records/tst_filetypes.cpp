#include "records/CADFileTypes.h"

#include <QtTest/QtTest>

using namespace tnCADFileTypes;

class tst_FileTypes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tables()
    {
        // Option groups from bit 0 on. Per type: name, extensions, + for options of its own,
        // groups.
        const QStringList groups{"SC", "IO", "FS", "GS", "AM", "II", "TV", "LJ",
                                 "TS", "SU", "ME", "CU", "PM", "AN", "LF", "KF",
                                 "SR", "CS", "SM", "RB", "GR", "GM", "MD", "(no group)"};
        const QStringList expected{
            "Cinema4D:c4d:-:GS GR",
            "Cosmo:csb:-:GS TS GR",
            "Webplan:dwf:-:GS GR",
            "KXT:abc kxt:-:FS GS TS KF GR MD (no group)",
            "Lumen:lu lv:-:GS GR",
            "Obj:obj:-:GS GR",
            "OpenSG:osb:-:FS GS AN SR SM RB",
            "PLMXML:plmxml:-:SC FS GS SR GR MD",
            "Python:py:-:",
            "Orrery:orr:-:GS GR",
            "TARN:trb tre:-:FS PM SR SM RB",
            "VRML:slp vrml wrl:-:GS GR",
            "ACIS:sat smt:+:SC IO FS GS TS SU ME CU GR",
            "Heron:wire:+:SC IO FS GS II TV TS SU ME CU LF SR GR MD",
            "Draftline:dwg dxf:+:SC IO GS TS SU ME CU GR MD",
            "Catia V4:dlv dlv3 dlv4 exp mdl model session:+:SC IO FS GS II TS SU ME CU SR GR GM MD",
            "Catia V5:catpart catproduct cgr:+:SC IO FS GS AM II TS SU ME CU SR CS GR GM MD",
            "DGN:dgn:+:SC IO FS GS II TS SU ME CU SR GR GM MD",
            "Millwright:mwa mwp:+:SC IO FS GS II TS SU ME CU SR GR GM MD",
            "JT:jt:+:SC IO FS GS II LJ TS SU ME CU SR GR GM MD",
            "NX:prt:+:SC IO FS GS AM II TS SU ME CU LF SR GR GM MD",
            "Iges:iges igs:+:SC IO FS GS TS SU ME CU GR GM MD",
            "Parasolid:x_b x_t:+:SC IO FS GS TS SU ME CU GR GM MD",
            "ProEngineer:asm g neu prt:+:SC IO FS GS II TS SU ME CU SR GR GM MD",
            "Rhino:3dm:+:SC IO FS GS TS SU ME CU GR MD",
            "SketchUp:skb skp style:+:SC IO FS GS TS SU ME CU GR MD",
            "SolidEdge:asm par psm pwd:+:SC IO FS GS AM II TS SU ME CU SR GR GM MD",
            "SolidWorks:sldasm sldprt:+:SC IO FS GS II TS SU ME CU SR GR GM MD",
            "Step:step stp:+:SC IO FS GS AM II TS SU ME CU SR GR GM MD",
            "STL:stl stla stlb:+:SC GS GR",
            "BCAD::no row:SC IO GS TS SU ME CU GR",
            "Undefined::no row:",
            "Unsupported::no row:no mask",
            "undefined::no row:no mask", // no type at all
        };
        for (int value = 0; value < expected.size(); ++value) {
            const auto type = static_cast<FileType>(value);
            QStringList extensions;
            QString settings = "no row";
            if (catalogue().count(type)) {
                const CatalogueEntry &entry = catalogue().at(type);
                extensions = QStringList(entry.extensions.begin(), entry.extensions.end());
                extensions.sort();
                settings = entry.importSettings ? "+" : "-";
            }
            const auto mask = optionGroupMasks().find(type);
            QStringList shown;
            if (mask == optionGroupMasks().end())
                shown << "no mask";
            for (int bit = 0; shown != QStringList("no mask") && bit < groups.size(); ++bit) {
                if (mask->second >> bit & 1U)
                    shown << groups[bit];
            }
            const QStringList row{displayNameOrUndefined(type), extensions.join(' '), settings,
                                  shown.join(' ')};
            QCOMPARE(row.join(':'), expected[value]);
        }
        QVERIFY(displayName(static_cast<FileType>(33)).isNull());
        QCOMPARE(displayNameOrUndefined(static_cast<FileType>(-1)), QString("undefined"));
        QCOMPARE(baseCadTypes(), (std::unordered_set<FileType>{Parasolid, SketchUp}));
    }
};

QTEST_APPLESS_MAIN(tst_FileTypes)

#include "tst_filetypes.moc"
