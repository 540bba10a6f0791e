#include "records/CADFileTypes.h"

#include <array>

namespace tnCADFileTypes {

namespace {

/// One row per type, in the order of the values; all groups that a type shows, also those that it
/// shows only inside of another group. KXT has a bit that no group answers to.
constexpr std::array<std::pair<FileType, std::uint32_t>, 32> maskTable{{
    {Cinema4D, 0x100008}, {Cosmo, 0x100108},    {Webplan, 0x100008},    {KXT, 0xD0810C},
    {Lumen, 0x100008},    {Obj, 0x100008},      {OpenSG, 0x0D200C},     {PLMXML, 0x51000D},
    {Python, 0x000000},   {Orrery, 0x100008},   {TARN, 0x0D1004},       {VRML, 0x100008},
    {ACIS, 0x100F0F},     {Heron, 0x514F6F},    {Draftline, 0x500F0B},  {CatiaV4, 0x710F2F},
    {CatiaV5, 0x730F3F},  {DGN, 0x710F2F},      {Millwright, 0x710F2F}, {JT, 0x710FAF},
    {NX, 0x714F3F},       {Iges, 0x700F0F},     {Parasolid, 0x700F0F},  {ProEngineer, 0x710F2F},
    {Rhino, 0x500F0F},    {SketchUp, 0x500F0F}, {SolidEdge, 0x710F3F},  {SolidWorks, 0x710F2F},
    {Step, 0x710F3F},     {STL, 0x100009},      {BCAD, 0x100F0B},       {Undefined, 0x000000},
}};

std::unordered_map<FileType, CatalogueEntry> makeCatalogue()
{
    std::unordered_map<FileType, CatalogueEntry> rows;
    for (const FileTypeFacts &facts : fileTypeFacts) {
        CatalogueEntry entry{{}, facts.importSettings};
        for (const char *suffix : facts.suffixes) {
            if (suffix)
                entry.extensions.insert(QLatin1String(suffix));
        }
        if (!entry.extensions.empty())
            rows.emplace(facts.type, std::move(entry));
    }
    return rows;
}

bool isFileType(FileType type)
{
    return static_cast<std::uint32_t>(type) < fileTypeFacts.size();
}

} // namespace

const std::unordered_map<FileType, CatalogueEntry> &catalogue()
{
    static const auto rows = makeCatalogue();
    return rows;
}

const std::unordered_set<FileType> &baseCadTypes()
{
    static const std::unordered_set<FileType> types{Parasolid, SketchUp};
    return types;
}

const std::unordered_map<FileType, std::uint32_t> &optionGroupMasks()
{
    static const std::unordered_map<FileType, std::uint32_t> masks(maskTable.begin(),
                                                                   maskTable.end());
    return masks;
}

QString displayName(FileType type)
{
    return isFileType(type)
        ? QString::fromLatin1(fileTypeFacts[static_cast<std::size_t>(type)].name)
        : QString();
}

QString displayNameOrUndefined(FileType type)
{
    return isFileType(type) ? displayName(type) : QStringLiteral("undefined");
}

} // namespace tnCADFileTypes
