#pragma once

#include <QtCore/QSet>
#include <QtCore/QString>

namespace tnhost {

/// Finds names for converted files, so that neither two files of the running jobs nor a stranger's
/// file on disk come to harm.
class OutputNames {
public:
    /// The path "directory/base.glb", else with "-2", "-3" and so on behind the base name, that no
    /// one has claimed (names that differ only in case count as the same), and where no file
    /// stands but an earlier conversion of the same source. Reads the heads of such files. A base
    /// name that is too long for a file is cut.
    QString claim(const QString &directory, const QString &baseName, const QString &source);
    void release(const QString &path);

private:
    static QString key(const QString &path);

    QSet<QString> m_claimed;
};

} // namespace tnhost
