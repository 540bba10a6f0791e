#pragma once

#include "readers/Reader.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tnconvert {

/// One format that can be read.
struct Format {
    const char *name; ///< display name, also used in the worker protocol
    std::vector<const char *> suffixes; ///< lower case, without the dot
    std::unique_ptr<Reader> (*createReader)();
};

/// All formats, in the order in which they are listed to people.
const std::vector<Format> &formats();

/// The format of this display name, whatever the case; null when there is none.
const Format *formatByName(std::string_view name);

/// The format that the suffix of @p path stands for, whatever the case; null when there is none.
const Format *formatBySuffix(const std::string &path);

} // namespace tnconvert
