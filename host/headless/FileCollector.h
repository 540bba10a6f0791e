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
    struct Result {
        std::vector<File> files;
        QString omissions; ///< how much could not even be named, a sentence; empty: nothing
    };

    FileCollector() = delete;

    /// In the order of the arguments, each path once. A folder gives the supported files in it and
    /// in its subfolders, sorted by name and without hidden ones; of a link to a folder only the
    /// files right in it. A folder without any stands for itself, as a problem.
    static Result collect(const QStringList &arguments, tnFileIOService &service);
};

} // namespace tnhost
