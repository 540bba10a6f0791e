#pragma once

#include "readers/Reader.h"

namespace tnconvert {

/// Wavefront files with their material libraries. One unit is one millimetre.
class ObjReader : public Reader {
public:
    Scene read(const std::string &path, const Settings &settings, Report &report) override;
};

} // namespace tnconvert
