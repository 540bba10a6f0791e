#pragma once

#include <QtCore/QIODevice>
#include <QtCore/QStringList>

namespace tnhost {

/// Reads the directory of a compound file: the small file system in one file that several CAD
/// systems keep their parts in.
class CompoundFile {
public:
    CompoundFile() = delete;

    /// The eight bytes that such a file begins with.
    static const QByteArray &signature();

    /// The names of the storages and streams, in the order of the directory and without its root,
    /// at most some thousand of them. What is damaged ends the list early; another kind of file
    /// has none. The device must be open and not sequential.
    static QStringList entryNames(QIODevice &device);
};

} // namespace tnhost
