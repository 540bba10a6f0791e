#pragma once

#include "platform/tnCADFileTypes.h"

#include <QtCore/QString>

namespace tnhost {

/// What can be said of a file before a converter sees it.
class InputCheck {
public:
    InputCheck() = delete;

    /// Whether there is a converter for files of the type.
    static bool isConvertible(tnCADFileTypes::FileType type);
    /// Why the file cannot be converted, a sentence for the user; empty: it can be tried. Sets the
    /// type by the content, if that can be looked at.
    static QString problemOf(const QString &path, tnCADFileTypes::FileType &type);
};

} // namespace tnhost
