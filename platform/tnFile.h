#pragma once

#include "platform/tnPlatformExport.h"

#include <QtCore/QString>

#include <string>

/// Tests and helpers for paths. Paths are UTF-8, whatever the locale.
class TNPLATFORM_EXPORT tnFile {
public:
    tnFile() = delete;

    /// Makes the directory with all its parents. True when it exists afterwards.
    static bool createPath(const std::string &path);

    /// Whether something can be written there: into the directory, or with isFile into the file,
    /// which need not exist yet. With report a negative answer goes to the log as well. An empty
    /// path is not writable.
    static bool checkWrite(const std::string &path, bool isFile, bool report);

    /// The system's directory for temporary files, without a separator at the end.
    static QString getTmpDir();
};
