#pragma once

#include "core/Report.h"
#include "core/Settings.h"

#include <string>

namespace tnconvert {

/// One file to convert.
struct Job {
    std::string input;
    std::string output;
    std::string type; ///< display name of the format; empty: by the input's suffix
    std::string sourceId; ///< see GlbWriter
    Settings settings;
    int threads = 1; ///< that the work may take; 0: as many as there are cores
    /// Gives up all files but this one's, so that the process can convert no other one.
    bool confinesProcess = false;
};

/// Converts one file. Never throws: the outcome says what went wrong with the file.
Outcome convert(const Job &job, Report &report);

} // namespace tnconvert
