#pragma once

#include <QtGlobal>

namespace tnhost {

/// What processes take of the machine's memory.
class ProcessMemory {
public:
    ProcessMemory() = delete;

    /// Quick counts a page that a process shares with the one that it is a copy of for each of the
    /// two. Exact shares it out, which takes the system some 50 ms for each GB.
    enum class Count { Quick, Exact };

    /// Bytes of a process and those below it, without libraries and files, which the system can
    /// drop; 0 when it has ended.
    static qint64 of(qint64 process, Count count);
};

} // namespace tnhost
