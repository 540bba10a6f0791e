#include "host/import/PartNames.h"

namespace tnhost {

void PartNames::reserve(const QStringList &files)
{
    for (const QString &file : files)
        m_files.insert(file);
}

QString PartNames::nameOf(const QString &part, const QString &assembly)
{
    QStringList &users = m_users[part];
    if (users.isEmpty() && m_files.contains(part))
        users << QString();
    if (!users.contains(assembly))
        users << assembly;
    QString name = part;
    return name.insert(part.lastIndexOf(QLatin1Char('/')) + 1,
                       QStringLiteral("./").repeated(users.indexOf(assembly)));
}

} // namespace tnhost
