#pragma once

#include "core/Report.h"
#include "core/Settings.h"
#include "scene/Scene.h"

namespace tnconvert {

/// Reads the files of one format.
class Reader {
public:
    virtual ~Reader() = default;
    Reader() = default;
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    /// Reads @p path, a readable file that is not empty. Throws ConversionError with a sentence for
    /// the user; what can be repaired or left out is reported as a warning instead.
    virtual Scene read(const std::string &path, const Settings &settings, Report &report) = 0;
};

} // namespace tnconvert
