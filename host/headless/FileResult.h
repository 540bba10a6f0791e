#pragma once

#include <QtCore/QString>

namespace tnhost {

/// What has become of one file of a job.
struct FileResult {
    enum class State { Pending, Running, Succeeded, Failed, Incomplete, Aborted };

    QString path;
    QString type; ///< display name
    State state = State::Pending;
    double seconds = 0.0; ///< from the start of its conversion to its end
    QString message; ///< what was said last of a failure; empty for a file that succeeded
};

} // namespace tnhost
