#pragma once

#include <QtCore/QMetaType>

#include <array>
#include <cstdint>

/// The vocabulary that travels in the file service's signals. The values are part of the interface
/// between host and plug-ins and never change.
namespace tnCADFileTypes {

enum FileType : std::int32_t {
    Cinema4D = 0,
    Cosmo = 1,
    Webplan = 2,
    KXT = 3,
    Lumen = 4,
    Obj = 5,
    OpenSG = 6,
    PLMXML = 7,
    Python = 8,
    Orrery = 9,
    TARN = 10,
    VRML = 11,
    ACIS = 12,
    Heron = 13,
    Draftline = 14,
    CatiaV4 = 15,
    CatiaV5 = 16,
    DGN = 17,
    Millwright = 18,
    JT = 19,
    NX = 20,
    Iges = 21,
    Parasolid = 22,
    ProEngineer = 23,
    Rhino = 24,
    SketchUp = 25,
    SolidEdge = 26,
    SolidWorks = 27,
    Step = 28,
    STL = 29,
    BCAD = 30, ///< stands for the types that share one set of options
    Undefined = 31, ///< not known yet
    Unsupported = 32,
};

/// How a conversion or a load ended.
enum JobState : std::int32_t {
    Success = 0,
    Failure = 1,
    JobAborted = 2,
    Incomplete = 3, ///< some parts are missing
};

/// What is known of one file type.
struct FileTypeFacts {
    FileType type;
    const char *name; ///< display name, not translated
    std::array<const char *, 8> suffixes; ///< lower case, without dot; null behind the last
    bool importSettings; ///< the file service keeps translator options of its own for the type
};

/// One row per value of FileType, in the order of the values. "prt" and "asm" stand in two rows
/// each: the suffix alone cannot tell those systems apart.
inline constexpr std::array<FileTypeFacts, 33> fileTypeFacts{{
    {Cinema4D, "Cinema4D", {"c4d"}, false},
    {Cosmo, "Cosmo", {"csb"}, false},
    {Webplan, "Webplan", {"dwf"}, false},
    {KXT, "KXT", {"kxt", "abc"}, false},
    {Lumen, "Lumen", {"lu", "lv"}, false},
    {Obj, "Obj", {"obj"}, false},
    {OpenSG, "OpenSG", {"osb"}, false},
    {PLMXML, "PLMXML", {"plmxml"}, false},
    {Python, "Python", {"py"}, false},
    {Orrery, "Orrery", {"orr"}, false},
    {TARN, "TARN", {"trb", "tre"}, false},
    {VRML, "VRML", {"vrml", "wrl", "slp"}, false},
    {ACIS, "ACIS", {"sat", "smt"}, true},
    {Heron, "Heron", {"wire"}, true},
    {Draftline, "Draftline", {"dwg", "dxf"}, true},
    {CatiaV4, "Catia V4", {"model", "mdl", "session", "exp", "dlv", "dlv3", "dlv4"}, true},
    {CatiaV5, "Catia V5", {"catpart", "catproduct", "cgr"}, true},
    {DGN, "DGN", {"dgn"}, true},
    {Millwright, "Millwright", {"mwa", "mwp"}, true},
    {JT, "JT", {"jt"}, true},
    {NX, "NX", {"prt"}, true},
    {Iges, "Iges", {"iges", "igs"}, true},
    {Parasolid, "Parasolid", {"x_t", "x_b"}, true},
    {ProEngineer, "ProEngineer", {"g", "prt", "asm", "neu"}, true},
    {Rhino, "Rhino", {"3dm"}, true},
    {SketchUp, "SketchUp", {"skp", "skb", "style"}, true},
    {SolidEdge, "SolidEdge", {"asm", "par", "pwd", "psm"}, true},
    {SolidWorks, "SolidWorks", {"sldprt", "sldasm"}, true},
    {Step, "Step", {"stp", "step"}, true},
    {STL, "STL", {"stl", "stla", "stlb"}, true},
    {BCAD, "BCAD", {}, false},
    {Undefined, "Undefined", {}, false},
    {Unsupported, "Unsupported", {}, false},
}};

} // namespace tnCADFileTypes

Q_DECLARE_METATYPE(tnCADFileTypes::FileType)
Q_DECLARE_METATYPE(tnCADFileTypes::JobState)
