#include "host/services/InstalledFiles.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>

namespace tnhost {

namespace {

QString find(const char *place)
{
    const QDir prefix(QCoreApplication::applicationDirPath() + QStringLiteral("/../share"));
    const QString path = QDir::cleanPath(prefix.absoluteFilePath(QLatin1String(place)));
    return QFile::exists(path) ? path : QString();
}

} // namespace

QString InstalledFiles::guide()
{
    return find("doc/tnhost/user-guide.md");
}

QString InstalledFiles::sample()
{
    return find("tnhost/samples/gearbox.step");
}

} // namespace tnhost
