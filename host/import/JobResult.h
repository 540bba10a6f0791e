#pragma once

#include "host/import/FileResult.h"

#include <memory>

namespace tnhost {

/// What has become of a job: one result per file, in the order of the request. It grows while the
/// job runs, and stays as long as somebody holds it.
struct JobResult {
    quint64 id = 0;
    std::vector<FileResult> files;
    quint64 percentSum = 0; ///< of all files
    int openFiles = 0; ///< that have not come to their end

    /// Keeps percentSum right. A file's percentage never falls.
    void setPercent(FileResult &file, unsigned int percent)
    {
        if (percent <= file.percent)
            return;
        percentSum += percent - file.percent;
        file.percent = percent;
    }
};

using JobResultPtr = std::shared_ptr<const JobResult>;

} // namespace tnhost
