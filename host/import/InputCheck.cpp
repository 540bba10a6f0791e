#include "host/import/InputCheck.h"

#include "host/import/FileTypeProbe.h"
#include "protocol/Formats.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace tnhost {

using tnCADFileTypes::FileType;

bool InputCheck::isConvertible(FileType type)
{
    // A new worker names its formats too, but a file of any other type needs no process to fail.
    const auto &formats = tnprotocol::formats;
    return std::any_of(formats.begin(), formats.end(),
                       [name = FileTypeProbe::displayName(type)](const auto &each) {
                           return name == QLatin1String(each.name);
                       });
}

QString InputCheck::problemOf(const QString &path, FileType &type)
{
    const QFileInfo info(path);
    const QString name = info.fileName();
    if (!info.exists())
        return QStringLiteral("The file %1 does not exist.").arg(path);
    if (info.isDir())
        return QStringLiteral("%1 is a folder.").arg(name);
    if (!info.isFile())
        return QStringLiteral("%1 is no regular file.").arg(name);
    if (!info.isReadable())
        return QStringLiteral("The file %1 cannot be read.").arg(name);
    if (info.size() == 0)
        return QStringLiteral("The file %1 is empty.").arg(name);

    // Of a shared suffix the message should name the right system.
    type = FileTypeProbe::byContent(path);
    if (type == FileType::Unsupported)
        return QStringLiteral("The type of %1 is not known.").arg(name);
    if (!isConvertible(type)) {
        return QStringLiteral("This host has no converter for %1 files.")
            .arg(FileTypeProbe::displayName(type));
    }
    return QString();
}

} // namespace tnhost
