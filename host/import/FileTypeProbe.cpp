#include "host/import/FileTypeProbe.h"

#include "host/import/CompoundFile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <array>
#include <optional>

namespace tnhost {

using tnCADFileTypes::FileType;

namespace {

// The system that counts the versions of a file in its name writes these; its fourth suffix, "g",
// is an exchange format and has no versions.
constexpr std::array<const char *, 3> versionedSuffixes{"prt", "asm", "neu"};

// The suffixes that several systems share, with the one that a bare name most likely stands for.
struct SharedSuffix {
    const char *suffix;
    FileType type;
};
constexpr std::array<SharedSuffix, 2> sharedSuffixes{{
    {"prt", FileType::NX},
    {"asm", FileType::SolidEdge},
}};

// What the files of the systems in question begin with.
struct Beginning {
    const char *bytes;
    FileType type;
};
constexpr std::array<Beginning, 2> beginnings{{
    {"#UGC:", FileType::ProEngineer},
    {"SPLMSSTR", FileType::NX}, // in place of a compound file, in late versions
}};

// Storages and streams that a part file of either system carries and no one else's does: the
// geometry of the one lies in storages named UG_PART and the like, the other keeps its own
// bookkeeping in streams whose names begin with J.
struct EntryName {
    const char *prefix;
    FileType type;
};
constexpr std::array<EntryName, 6> entryNames{{
    {"UG_", FileType::NX},
    {"JSitesList", FileType::SolidEdge},
    {"JProperties", FileType::SolidEdge},
    {"JDocument", FileType::SolidEdge},
    {"PARASOLID", FileType::SolidEdge},
    {"SolidEdge", FileType::SolidEdge},
}};

bool isSame(const QString &suffix, const char *known)
{
    return suffix.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
}

/// A file name taken apart.
struct NameParts {
    QString base;
    QString suffix;
    bool hasVersion = false;
};

NameParts split(const QString &path)
{
    const QFileInfo info(path);
    const QString last = info.suffix();
    const bool digits = !last.isEmpty()
        && std::all_of(last.begin(), last.end(), [](QChar c) { return c >= '0' && c <= '9'; });
    if (digits) {
        const QFileInfo unversioned(info.completeBaseName());
        const QString suffix = unversioned.suffix();
        const bool known = std::any_of(versionedSuffixes.begin(), versionedSuffixes.end(),
                                       [&](const char *each) { return isSame(suffix, each); });
        if (known)
            return {unversioned.completeBaseName(), suffix, true};
    }
    return {info.completeBaseName(), last, false};
}

std::optional<FileType> byFirstBytes(const QString &path)
{
    // Opening a pipe or a device might block for good.
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray head = file.read(CompoundFile::signature().size());
    for (const Beginning &beginning : beginnings) {
        if (head.startsWith(beginning.bytes))
            return beginning.type;
    }
    if (head != CompoundFile::signature())
        return std::nullopt;
    const QStringList names = CompoundFile::entryNames(file);
    for (const EntryName &known : entryNames) {
        const bool present = std::any_of(names.begin(), names.end(), [&known](const QString &name) {
            return name.startsWith(QLatin1String(known.prefix));
        });
        if (present)
            return known.type;
    }
    return std::nullopt;
}

} // namespace

QString FileTypeProbe::suffix(const QString &path)
{
    return split(path).suffix;
}

QString FileTypeProbe::baseName(const QString &path)
{
    const QString base = split(path).base;
    return base.isEmpty() ? QFileInfo(path).fileName() : base;
}

QString FileTypeProbe::displayName(FileType type)
{
    return QString::fromLatin1(
        tnCADFileTypes::fileTypeFacts.at(static_cast<std::size_t>(type)).name);
}

FileType FileTypeProbe::byName(const QString &path)
{
    const NameParts name = split(path);
    if (name.hasVersion)
        return FileType::ProEngineer;
    for (const SharedSuffix &shared : sharedSuffixes) {
        if (isSame(name.suffix, shared.suffix))
            return shared.type;
    }
    for (const auto &facts : tnCADFileTypes::fileTypeFacts) {
        for (const char *known : facts.suffixes) {
            if (known && isSame(name.suffix, known))
                return facts.type;
        }
    }
    return FileType::Unsupported;
}

FileType FileTypeProbe::byContent(const QString &path)
{
    const QString own = suffix(path);
    const bool shared =
        std::any_of(sharedSuffixes.begin(), sharedSuffixes.end(),
                    [&own](const SharedSuffix &each) { return isSame(own, each.suffix); });
    if (shared) {
        if (const std::optional<FileType> type = byFirstBytes(path))
            return *type;
    }
    return byName(path);
}

} // namespace tnhost
