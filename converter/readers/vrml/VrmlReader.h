#pragma once

#include "readers/Reader.h"

namespace tnconvert {

/// VRML97 files, plain or gzip-compressed, with the files that they inline. Lengths are metres.
class VrmlReader : public Reader {
public:
    Scene read(const std::string &path, const Settings &settings, Report &report) override;
};

} // namespace tnconvert
