#pragma once

#include "records/tnFileTyp.h"

#include <functional>
#include <utility>

/// Does the work, and in the midst of the next folder search, once, what happens there. Gives
/// whether it came to that.
inline bool duringSearch(const std::function<void()> &work, const std::function<void()> &happens)
{
    bool hasHappened = false;
    QObject context;
    QObject::connect(
        &tnFileTyp::instance(), &tnFileTyp::enterDirectory, &context,
        [&] {
            if (!std::exchange(hasHappened, true))
                happens();
        },
        Qt::QueuedConnection); // as a click would come: when the search lets events through
    work();
    return hasHappened;
}
