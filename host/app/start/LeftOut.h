#pragma once

#include "host/import/FolderWalk.h"

#include <QtCore/QStringList>

#include <map>

namespace tnhost {

/// What is not taken of files and folders that the user wants to import, and why.
class LeftOut {
public:
    /// Files that cannot be converted, of a kind as their suffix tells; the suffix may be empty.
    /// What converters read along with another file is not left out.
    void addKind(const QString &suffix, int count = 1);
    void add(const FolderWalk::Omissions &omissions);
    /// Gives those of the files that are there and can be read, in their order, and counts the
    /// others. Touches the disk.
    QStringList keepReadable(const QStringList &files);

    /// "8 of 20 files left out: 5 pdf, 2 fbx, 1 without access", with the number of those that are
    /// taken; the kinds with the most files first, rare ones together. Empty: nothing was left out.
    QString sentence(int taken) const;

private:
    std::map<QString, int> m_kinds;
    int m_closed = 0;
    int m_missing = 0;
    int m_unnamed = 0;
    int m_closedFolders = 0;
    int m_unnamedFolders = 0;
};

} // namespace tnhost
