#pragma once

#include "platform/tnCADFileTypes.h"

#include <QtCore/QHash>
#include <QtCore/QString>

#include <cstdint>
#include <unordered_map>
#include <unordered_set>

/// What the plug-in knows of file types, on top of the vocabulary that it shares with the host.
/// The tables are built on first use, once, and never change.
namespace tnCADFileTypes {

/// One row of the catalogue.
struct CatalogueEntry {
    /// Lower case, without dot. "prt" and "asm" stand in two rows each, so a lookup by extension
    /// must not decide the type of a file: that is the file service's to say.
    std::unordered_set<QString> extensions;
    /// The type has translator options of its own.
    bool importSettings;
};

/// The types that files can have, each with its extensions. BCAD, Undefined and Unsupported are no
/// types of files and have no row. O(1).
const std::unordered_map<FileType, CatalogueEntry> &catalogue();

/// The types that count as BCAD, because they share its options. O(1).
const std::unordered_set<FileType> &baseCadTypes();

/// Which groups of options a type shows, bit by bit; one entry for each value but Unsupported.
/// O(1).
const std::unordered_map<FileType, std::uint32_t> &optionGroupMasks();

/// The name that users see, not translated; a null string for a value that is no FileType. O(1).
QString displayName(FileType type);

/// The same, with "undefined" for a value that is no FileType. Not to be mixed up with the name of
/// the type Undefined. O(1).
QString displayNameOrUndefined(FileType type);

} // namespace tnCADFileTypes
