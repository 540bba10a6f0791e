#pragma once

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <memory>

namespace tnhost {

/// A hidden directory within another one, for files that are not whole yet or are not to stay. It
/// goes with the object; if the process ends before that, the next process that makes one in the
/// same place removes it.
///
/// The file "owner" in it says whose it is, and is locked for as long as that process lives. The
/// lock, not the process's number, says whether the owner lives: it goes with the process however
/// that ends, is seen from other containers and, on most network file systems, machines, and is not
/// mistaken for that of a later process with the same number.
class WorkDirectory {
public:
    explicit WorkDirectory(const QString &place);
    ~WorkDirectory();
    Q_DISABLE_COPY_MOVE(WorkDirectory)

    /// False: nothing can be written there.
    bool isValid() const { return m_directory != nullptr; }
    const QString &path() const { return m_path; }

private:
    bool makeOwn(const QString &pattern);

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
    int m_lock = -1;
};

} // namespace tnhost
