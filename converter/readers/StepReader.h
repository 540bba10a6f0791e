#pragma once

#include "readers/Reader.h"

namespace tnconvert {

/// ISO 10303-21 files, with the part files that they refer to.
class StepReader : public Reader {
public:
    Scene read(const std::string &path, const Settings &settings, Report &report) override;
};

} // namespace tnconvert
