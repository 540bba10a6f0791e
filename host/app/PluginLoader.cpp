#include "host/app/PluginLoader.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

#include <cstring>

namespace tnhost {

namespace {

constexpr const char *expectedVersion = "15.3";

using VersionFunction = const char *(*)();
using InitFunction = void (*)();

} // namespace

PluginLoader::PluginLoader(const QString &directory, const QString &programDirectory)
{
    if (!directory.isEmpty()) {
        m_candidates << QDir(directory).absolutePath();
        return;
    }
    const QDir program(programDirectory);
    m_candidates << QDir::cleanPath(program.absoluteFilePath(QStringLiteral("../plugins")));
    // lib, lib64, and with a further level where libraries are kept apart by architecture
    const QDir prefix(QDir::cleanPath(program.absoluteFilePath(QStringLiteral(".."))));
    const auto filter = QDir::Dirs | QDir::NoDotAndDotDot;
    for (const QString &lib : prefix.entryList({QStringLiteral("lib*")}, filter, QDir::Name)) {
        const QDir libDirectory(prefix.absoluteFilePath(lib));
        m_candidates << libDirectory.absoluteFilePath(QStringLiteral("tnhost/plugins"));
        for (const QString &architecture : libDirectory.entryList(filter, QDir::Name)) {
            if (architecture.contains(QLatin1Char('-')))
                m_candidates << libDirectory.absoluteFilePath(architecture
                                                              + QStringLiteral("/tnhost/plugins"));
        }
    }
}

bool PluginLoader::load()
{
    m_errors.clear();
    const QString directory = findDirectory();
    if (directory.isEmpty())
        return false;
    bool found = false;
    for (const QFileInfo &file : QDir(directory).entryInfoList(QDir::Files, QDir::Name)) {
        if (!QLibrary::isLibrary(file.fileName()))
            continue;
        found = true;
        start(file.absoluteFilePath());
    }
    if (!found)
        m_errors << QStringLiteral("There is no plug-in in the directory %1.").arg(directory);
    return m_errors.isEmpty();
}

QString PluginLoader::findDirectory()
{
    for (const QString &candidate : qAsConst(m_candidates)) {
        if (QFileInfo(candidate).isDir())
            return candidate;
    }
    m_errors << QStringLiteral("The directory for plug-ins does not exist: %1.")
                    .arg(m_candidates.constFirst());
    return {};
}

void PluginLoader::start(const QString &path)
{
    QLibrary library(path);
    // Its code is still needed when objects in static storage take their leave.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!library.load()) {
        m_errors << QStringLiteral("The plug-in cannot be loaded: %1").arg(library.errorString());
        return;
    }
    const auto version = reinterpret_cast<VersionFunction>(library.resolve("getPluginVersion"));
    const auto init = reinterpret_cast<InitFunction>(library.resolve("initPlugin"));
    if (!version || !init) {
        m_errors << QStringLiteral("%1 is no plug-in: it does not export %2.")
                        .arg(path,
                             version ? QStringLiteral("initPlugin")
                                     : QStringLiteral("getPluginVersion"));
        return;
    }
    const char *actual = version();
    if (!actual || std::strcmp(actual, expectedVersion) != 0) {
        m_errors << QStringLiteral("The plug-in %1 is made for version %2 of the host, this is %3.")
                        .arg(path, actual ? QString::fromUtf8(actual) : QStringLiteral("?"),
                             QString::fromUtf8(expectedVersion));
        return;
    }
    init();
}

} // namespace tnhost
