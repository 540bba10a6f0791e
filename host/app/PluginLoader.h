#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace tnhost {

/// Finds, checks and starts the plug-ins. They stay loaded until the process ends.
class PluginLoader {
public:
    /// Looks into the directory, or, when it is empty, where the build and the installation put
    /// plug-ins, relative to the program's directory.
    PluginLoader(const QString &directory, const QString &programDirectory);

    /// Starts every plug-in of the directory. False when there is none, or when one of them could
    /// not be started; errors() has a sentence for each.
    bool load();
    /// Sentences for the user.
    const QStringList &errors() const { return m_errors; }

private:
    QString findDirectory();
    void start(const QString &path);

    QStringList m_candidates;
    QStringList m_errors;
};

} // namespace tnhost
