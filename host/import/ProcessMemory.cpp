#include "host/import/ProcessMemory.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QList>

#include <unistd.h>

namespace tnhost {

namespace {

/// The words of one of the system's files about a process; none when it has ended.
QList<QByteArray> factsOf(qint64 process, const char *file)
{
    QFile facts(QStringLiteral("/proc/%1/%2").arg(QString::number(process), QLatin1String(file)));
    return facts.open(QIODevice::ReadOnly) ? facts.readAll().simplified().split(' ')
                                           : QList<QByteArray>();
}

qint64 quickCount(qint64 process)
{
    const QList<QByteArray> pages = factsOf(process, "statm");
    return (pages.value(1).toLongLong() - pages.value(2).toLongLong()) * sysconf(_SC_PAGESIZE);
}

/// Falls back where the system does not tell, as those before Linux 5.4 do.
qint64 exactCount(qint64 process)
{
    const QList<QByteArray> facts = factsOf(process, "smaps_rollup");
    const int at = facts.indexOf("Pss_Anon:");
    return at < 0 ? quickCount(process) : facts.value(at + 1).toLongLong() * 1024;
}

} // namespace

qint64 ProcessMemory::of(qint64 process, Count count)
{
    qint64 sum = count == Count::Exact ? exactCount(process) : quickCount(process);
    const QByteArray children = "task/" + QByteArray::number(process) + "/children";
    for (const QByteArray &child : factsOf(process, children)) {
        if (!child.isEmpty())
            sum += of(child.toLongLong(), count);
    }
    return sum;
}

} // namespace tnhost
