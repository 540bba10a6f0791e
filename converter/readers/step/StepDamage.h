#pragma once

#include <XSControl_WorkSession.hxx>

#include <string>

namespace tnconvert {

/// The entities of a Step file that the kernel could not read as they stand, parted by whether a
/// shape needs them: a damaged date loses nothing, a damaged face is gone. Costs one look at each
/// entity of a sound file; a damaged one is followed along its references once.
class StepDamage {
public:
    /// @p session has read the file.
    explicit StepDamage(const Handle(XSControl_WorkSession) & session);

    /// Damaged entities that the shapes of products or the places of occurrences are made of.
    int neededCount() const { return m_neededCount; }
    /// The other ones: dates, persons, styles.
    int otherCount() const { return m_otherCount; }
    /// The first of those that are needed, as in "#13 VERTEX_POINT"; empty when there is none.
    const std::string &firstNeeded() const { return m_firstNeeded; }

private:
    int m_neededCount = 0;
    int m_otherCount = 0;
    std::string m_firstNeeded;
};

} // namespace tnconvert
