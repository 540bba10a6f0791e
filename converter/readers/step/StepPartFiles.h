#pragma once

#include "readers/step/StepStructure.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tnconvert {

/// A file that a Step file names, and the product that is said to be in it. Without a product it is
/// a part file that has lost what ties it to one.
struct StepPartFile {
    std::optional<std::size_t> product;
    std::string file; ///< absolute

    /// Whether it is named as Step files are.
    bool isStepFile() const;
};

/// The files that the Step file @p path names for its products.
std::vector<StepPartFile> partFilesOf(const std::string &path, const StepEntities &entities,
                                      const StepStructure &structure);

} // namespace tnconvert
