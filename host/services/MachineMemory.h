#pragma once

#include <QtCore/QString>

namespace tnhost {

/// How much memory there is for the processes of this machine.
class MachineMemory {
public:
    MachineMemory() = delete;

    /// Bytes: what the machine has, or less where a container (any group of processes that this one
    /// belongs to) has a limit. 0 when it is not known. The system's files are read below @p root.
    static qint64 total(const QString &root = QString());
};

} // namespace tnhost
