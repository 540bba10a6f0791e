#pragma once

#include "host/scene/SceneFragment.h"

#include <QtCore/QString>

#include <memory>

namespace tnhost {

/// Reads glTF binaries, as the converter writes them.
class GlbReader {
public:
    GlbReader() = delete;

    /// Reads the whole file; takes as long as that takes. Metres become mm, and the turn from the
    /// source file's axes into those of glTF is taken back. Gives null for a file that is missing,
    /// damaged or beyond this reader, with a sentence for the user in error (which may be null).
    /// May be called from any thread, throws nothing.
    static std::shared_ptr<const SceneFragment> read(const QString &path, QString *error);
};

} // namespace tnhost
