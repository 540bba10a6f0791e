#pragma once

#include "readers/Reader.h"

#include <memory>
#include <string>
#include <string_view>

namespace tnconvert {

/// A reader for the format of this display name, whatever the case; null when there is none.
std::unique_ptr<Reader> readerByName(std::string_view name);

/// A reader for the format that the suffix of @p path stands for, whatever the case; null when
/// there is none.
std::unique_ptr<Reader> readerBySuffix(const std::string &path);

} // namespace tnconvert
