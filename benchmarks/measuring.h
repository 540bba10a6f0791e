#pragma once

#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <ctime>

/// Seconds for which this process has had a processor, all threads together.
inline double processorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Asks the disk what a record asks when its file enters the list. Gives the sum of the sizes.
inline qint64 readFacts(const QStringList &paths)
{
    qint64 sum = 0;
    for (const QString &path : paths)
        sum += QFileInfo(path).size();
    return sum;
}
