#pragma once

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace tnhost {

/// Paths under which the parts of assemblies are reported. Listeners know a file by its path alone,
/// compared letter by letter, so what is reported of a part would be taken for a file of the same
/// path, or for the part of another assembly. Where a path is in use, the part gets another one
/// that leads to the same file: "/cad/./wheel.stp". An assembly's part keeps its path from job to
/// job. Remembers every path, since listeners keep their lists when a job has ended.
class PartNames {
public:
    /// These are files of a job.
    void reserve(const QStringList &files);
    QString nameOf(const QString &part, const QString &assembly);

private:
    QSet<QString> m_files;
    QHash<QString, QStringList>
        m_users; ///< by part: an empty one if it is a file itself, then assemblies
};

} // namespace tnhost
