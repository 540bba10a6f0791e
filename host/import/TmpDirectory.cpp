#include "host/import/TmpDirectory.h"

#include "platform/tnFile.h"
#include "platform/tnMessage.h"
#include "platform/tnPreferences.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

namespace tnhost {

namespace {

constexpr const char *preference = "FileIO tmp path";

/// The directory belongs to this user alone. The system's directory for temporary files is open to
/// everybody, so the name alone proves nothing.
bool isOurs(const QString &path)
{
    struct stat facts { };
    return ::lstat(QFile::encodeName(path).constData(), &facts) == 0 && S_ISDIR(facts.st_mode)
        && facts.st_uid == ::getuid() && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

QString ownDirectory()
{
    const QString path = tnFile::getTmpDir() + QStringLiteral("/tnhost-%1").arg(::getuid());
    ::mkdir(QFile::encodeName(path).constData(), S_IRWXU);
    if (isOurs(path))
        return path;
    QTemporaryDir fresh(path + QStringLiteral("-XXXXXX"));
    fresh.setAutoRemove(false);
    return fresh.isValid() ? fresh.path() : QString();
}

} // namespace

QString TmpDirectory::prepare(const QString &wanted, QString *error)
{
    const QString path = wanted.isEmpty() ? ownDirectory() : QDir(wanted).absolutePath();
    const std::string utf8 = path.toStdString();
    if (!path.isEmpty() && tnFile::createPath(utf8) && tnFile::checkWrite(utf8, false, false))
        return path;
    if (error)
        *error = QStringLiteral("The directory for temporary files cannot be written: %1")
                     .arg(path.isEmpty() ? tnFile::getTmpDir() : path);
    return {};
}

void TmpDirectory::setPreferred(const QString &path)
{
    tnPreferences::getData().set(preference, path, true);
}

QString TmpDirectory::preferred()
{
    const boost::any &value = tnPreferences::getData().get(preference);
    const auto *path = boost::any_cast<QString>(&value);
    return path && !path->isEmpty() ? *path : tnFile::getTmpDir();
}

} // namespace tnhost
