#pragma once

#include "platform/tnCADFileTypes.h"
#include "platform/tndNode.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace tnhost {

/// What has become of one file of a job, or of one part of such a file.
struct FileResult {
    enum class State { Pending, Running, Succeeded, Failed, Incomplete, Aborted };

    /// The state of what has ended so; a value out of range counts as a failure.
    static State stateOf(tnCADFileTypes::JobState state);

    /// In English, one word, whatever the locale.
    static const char *word(State state);

    bool isOpen() const { return state == State::Pending || state == State::Running; }

    QString path; ///< as the file service's signals name it
    tnCADFileTypes::FileType type = tnCADFileTypes::Undefined;
    State state = State::Pending;
    unsigned int percent = 0; ///< of the way to its end, which is 100 however it ends
    double seconds = 0.0; ///< of a file: until its end; of a part: to convert it
    QString message; ///< why it is no success, a sentence for the user; empty for a success
    QStringList warnings; ///< what was left out or repaired
    std::vector<FileResult> parts; ///< of an assembly, in the order in which they turned up
    tndNode node; ///< null unless it has been loaded by itself
    std::size_t triangles = 0; ///< of what was loaded, each instance counted
    QString output; ///< the converted file; empty when there is none, or it was not to stay
};

} // namespace tnhost
