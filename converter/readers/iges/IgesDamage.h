#pragma once

#include "core/Settings.h"

#include <XSControl_WorkSession.hxx>

#include <string>

namespace tnconvert {

/// The entities of an Iges file that are wanted and came to nothing, or not to all that they
/// should: what the kernel could not read or not transfer, kinds that it does not know, and faces
/// that lost what bounds them. A damaged note loses nothing. Costs a look at each entity of a sound
/// file; the entities of a damaged one are followed along their references once.
class IgesDamage {
public:
    /// @p session has read and transferred the file.
    IgesDamage(const Handle(XSControl_WorkSession) & session, const Settings &settings);

    /// A sentence on the file @p name; empty when nothing is lost.
    std::string loss(const std::string &name) const;

    /// Whether the settings kept hidden entities out.
    bool leavesHiddenOut() const { return m_leavesHiddenOut; }

private:
    int m_count = 0;
    std::string m_first; ///< as in "type 144 at D19"
    int m_unreadLines = 0;
    bool m_leavesHiddenOut = false;
};

} // namespace tnconvert
