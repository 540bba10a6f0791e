#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <map>

namespace tnhost {

/// Looks through folders for files, by the names' bytes: Qt passes over names that are no UTF-8,
/// and over folders that cannot be read, and does not say so. May be used in any thread.
class FolderWalk {
public:
    /// Whether a file of that path is wanted.
    using Test = std::function<bool(const QString &path)>;
    /// Told of each folder before it is looked through; false ends the walk for good.
    using Visitor = std::function<bool(const QString &folder)>;

    struct Omissions {
        std::map<QString, int> files; ///< that are not wanted, by suffix in lower case
        int unnamedFiles = 0; ///< that are wanted, but have a name that is no UTF-8
        int unnamedFolders = 0;
        int closedFolders = 0; ///< that cannot be read
    };

    explicit FolderWalk(Test isWanted, Visitor visitor = {});

    /// The wanted files in the folder and its subfolders, without hidden ones, sorted; of a link to
    /// a folder only the files right in it. After the visitor's end what was found until then.
    QStringList filesIn(const QString &folder);
    /// Of all folders so far.
    const Omissions &omissions() const { return m_omissions; }

private:
    void enter(const QString &folder, bool withSubfolders);
    void addFile(const QString &path, bool isNamed);

    const Test m_isWanted;
    const Visitor m_visitor;
    bool m_hasEnded = false;
    QStringList m_files;
    Omissions m_omissions;
};

} // namespace tnhost
