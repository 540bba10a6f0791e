#pragma once

#include "platform/tnCADFileTypes.h"

#include <QtCore/QString>

namespace tnhost {

/// Finds out the kind of a CAD file: by its name, quickly, or by its first bytes. All operations
/// may be called from any thread.
class FileTypeProbe {
public:
    FileTypeProbe() = delete;

    /// The suffix that tells the kind, without dot and in its own case. Looks through the version
    /// number that one system appends to its names: "prt" for "part.prt.7".
    static QString suffix(const QString &path);
    /// The file's name without that suffix and what follows it; the whole name when nothing else
    /// would be left.
    static QString baseName(const QString &path);

    /// As users know the type. The value must be one of FileType.
    static QString displayName(tnCADFileTypes::FileType type);

    /// The type by suffix, whatever its case. Of the systems that share "prt" and "asm", a version
    /// number tells one; else the one that uses the suffix most stands for all. Unsupported for an
    /// unknown suffix.
    static tnCADFileTypes::FileType byName(const QString &path);
    /// As byName(), but looks into files with a shared suffix. A file that cannot be read, or says
    /// nothing, is known by its name.
    static tnCADFileTypes::FileType byContent(const QString &path);
};

} // namespace tnhost
