#pragma once

#include "readers/Reader.h"

namespace tnconvert {

/// Iges files in their fixed text form.
class IgesReader : public Reader {
public:
    Scene read(const std::string &path, const Settings &settings, Report &report) override;
};

} // namespace tnconvert
