#pragma once

#include <QtCore/QSet>
#include <QtCore/QString>

namespace tnhost {

/// Finds names for converted files, so that neither two files of the running jobs nor a stranger's
/// file on disk come to harm.
class OutputNames {
public:
    /// Where a converted file is to go.
    struct Claim {
        QString directory;
        QString baseName; ///< one that is too long for a file is cut
        QString source; ///< absolute path of the file that it is made from
        QString path; ///< the claimed one
    };

    /// What the output of a source carries, so that it is known again without telling whoever gets
    /// it where the source lies.
    static QString idOf(const QString &source);
    /// Claims the path "directory/base.glb", else with "-2", "-3" and so on behind the base name:
    /// the first that nobody in this process has claimed (names that differ only in case count as
    /// the same), and where no file stands but an earlier conversion of the same source. Reads the
    /// heads of such files.
    void claim(Claim &claim);
    /// Moves a finished file, from the same file system, to the claimed path, in place of an
    /// earlier conversion of the same source at most: where another process has been faster, the
    /// claim changes to the next name that is free. False, with a reason in error, when that
    /// cannot be done; the file is then still where it was.
    bool publish(const QString &file, Claim &claim, QString *error);
    void release(const Claim &claim);

private:
    static QString key(const QString &path);

    QSet<QString> m_claimed;
};

} // namespace tnhost
