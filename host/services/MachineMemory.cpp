#include "host/services/MachineMemory.h"

#include <QtCore/QFile>

#include <algorithm>

namespace tnhost {

namespace {

QStringList lines(const QString &path)
{
    QFile file(path);
    // These files have no size, so they are read to their end in one go.
    const bool isOpen = file.open(QIODevice::ReadOnly);
    return isOpen ? QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)
                  : QStringList();
}

/// Of the group and of all that it lies in; what has no number has no limit.
qint64 lowestLimit(const QString &hierarchy, const QString &file, QString group, qint64 bound)
{
    while (true) {
        bool isNumber = false;
        const qint64 limit =
            lines(hierarchy + group + '/' + file).value(0).trimmed().toLongLong(&isNumber);
        if (isNumber && limit > 0 && (bound == 0 || limit < bound))
            bound = limit;
        if (group.isEmpty())
            return bound;
        group.truncate(std::max(0, group.lastIndexOf('/')));
    }
}

} // namespace

qint64 MachineMemory::total(const QString &root)
{
    qint64 bytes = 0;
    for (const QString &line : lines(root + QStringLiteral("/proc/meminfo"))) {
        if (line.startsWith(QLatin1String("MemTotal:")))
            bytes = line.simplified().section(' ', 1, 1).toLongLong() * 1024;
    }
    // "0::/path" in today's hierarchy, "4:memory:/path" in the one before it.
    for (const QString &line : lines(root + QStringLiteral("/proc/self/cgroup"))) {
        const QString controllers = line.section(':', 1, 1);
        const QString group = line.section(':', 2);
        const QString hierarchy = root + QStringLiteral("/sys/fs/cgroup");
        if (controllers.isEmpty())
            bytes = lowestLimit(hierarchy, QStringLiteral("memory.max"), group, bytes);
        else if (controllers.split(',').contains(QStringLiteral("memory")))
            bytes = lowestLimit(hierarchy + QStringLiteral("/memory"),
                                QStringLiteral("memory.limit_in_bytes"), group, bytes);
    }
    return bytes;
}

} // namespace tnhost
