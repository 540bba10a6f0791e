#pragma once

#include "worker/EventStream.h"

#include <iosfwd>
#include <string>

namespace tnconvert {

/// Serves conversion requests, one JSON object on each line, until one asks it to quit or they
/// end.
class Worker {
public:
    /// Events are written to the descriptor @p output, which stays the caller's.
    explicit Worker(int output);

    /// Returns the process's exit code: 0 after an orderly end, 1 when nobody reads the events.
    int run(std::istream &requests);

private:
    /// False when the request asks to quit.
    bool serve(const std::string &line);

    const EventStream m_stream;
};

} // namespace tnconvert
