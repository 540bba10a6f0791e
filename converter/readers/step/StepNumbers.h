#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tnconvert {

/// The numbers of a Step file's entities, as its text has them. The kernel takes for granted that
/// each stands for one entity, and may run without end where it does not. One pass over the file.
class StepNumbers {
public:
    explicit StepNumbers(const std::string &path);

    /// How many entities have a number that an earlier one has.
    std::size_t twinCount() const { return m_twins.size(); }
    /// The number of the first of these, as in "#11".
    std::string firstTwin() const;
    /// @p text of the file with other numbers for these, so that references lead to the first.
    std::string renumbered(const std::string &text) const;

private:
    struct Twin {
        std::size_t offset; ///< of its first digit
        std::uint64_t number;
    };

    std::vector<Twin> m_twins; ///< in the order of the file
    std::uint64_t m_largest = 0;
};

} // namespace tnconvert
