#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

class tnFileIOService;

namespace tnhost {

/// Turns the command line's files and folders into a list of files.
class FileCollector {
public:
    struct File {
        QString path; ///< absolute
        QString problem; ///< why it cannot be imported; empty: it can be tried
    };

    FileCollector() = delete;

    /// In the order of the arguments, each path once. A folder gives the supported files in it and
    /// in its subfolders, sorted by name; links to folders are not followed. A folder without any
    /// stands for itself, as a problem.
    static std::vector<File> collect(const QStringList &arguments, tnFileIOService &service);
};

} // namespace tnhost
