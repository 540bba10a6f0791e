#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

class tnFileIOService;

/// Turns the command line's files and folders into a list of files.
class FileCollector {
public:
    FileCollector() = delete;

    /// Absolute paths in the order of the arguments, each once. A folder gives the supported files
    /// in it and in its subfolders, sorted by name; links to folders are not followed. Anything
    /// else stays as it is, also a file that is missing.
    static QStringList collect(const QStringList &arguments, tnFileIOService &service);
};
