#pragma once

#include <QtCore/QString>

namespace tnhost {

/// Where converted files and logbooks go unless the user says otherwise.
class TmpDirectory {
public:
    TmpDirectory() = delete;

    /// Makes the wanted directory, or with an empty wish one of the user's own below the system's
    /// directory for temporary files, and gives its absolute path. Empty, with a sentence in
    /// error, when nothing can be written there.
    static QString prepare(const QString &wanted, QString *error);

    /// Makes it the preference that plug-ins read as well.
    static void setPreferred(const QString &path);
    /// The preference, else the system's directory for temporary files.
    static QString preferred();
};

} // namespace tnhost
