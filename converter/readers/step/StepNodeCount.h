#pragma once

#include "readers/step/StepStructure.h"

namespace tnconvert {

/// How many nodes the trees of all products that occur in no other one have, at most 10^18. Each
/// product is counted once, however often it occurs. Throws ConversionError when one contains
/// itself or is nested too deeply.
std::uint64_t countNodes(const std::vector<StepProduct> &products);

} // namespace tnconvert
