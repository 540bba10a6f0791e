#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>

namespace tnconvert {

/// The numbers of the entities of the Step file @p path that refer to one of @p numbers, wherever
/// among their parameters. One pass over the text.
std::unordered_set<std::uint64_t> referrersOf(const std::string &path,
                                              const std::unordered_set<std::uint64_t> &numbers);

} // namespace tnconvert
