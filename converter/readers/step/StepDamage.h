#pragma once

#include "readers/step/StepEntities.h"

#include <cstddef>
#include <string>

namespace tnconvert {

/// The entities of a Step file that the kernel could not read as they stand, or that refer to some
/// that are not there, parted by whether a shape needs them: a damaged date loses nothing, a
/// damaged face is gone. Costs one look at each entity of a sound file; a damaged one is followed
/// along its references once.
class StepDamage {
public:
    /// @p entities are those of the file @p path.
    StepDamage(const StepEntities &entities, const std::string &path);

    /// Damaged entities that the shapes of products or the places of occurrences are made of.
    std::size_t neededCount() const { return m_neededCount; }
    /// The other ones: dates, persons, styles.
    std::size_t otherCount() const { return m_otherCount; }
    /// The first of those that are needed, as in "#13 VERTEX_POINT"; empty when there is none.
    const std::string &firstNeeded() const { return m_firstNeeded; }

private:
    std::size_t m_neededCount = 0;
    std::size_t m_otherCount = 0;
    std::string m_firstNeeded;
};

} // namespace tnconvert
