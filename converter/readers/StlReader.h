#pragma once

#include "readers/Reader.h"

namespace tnconvert {

/// Stereolithography files, binary and ASCII. One unit is one millimetre.
class StlReader : public Reader {
public:
    Scene read(const std::string &path, const Settings &settings, Report &report) override;
};

} // namespace tnconvert
