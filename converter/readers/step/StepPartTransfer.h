#pragma once

#include "core/Settings.h"
#include "readers/kernel/SubStyles.h"
#include "readers/step/StepLooks.h"
#include "readers/step/StepLosses.h"
#include "readers/step/StepStructure.h"

#include <Message_ProgressRange.hxx>
#include <STEPControl_ActorRead.hxx>
#include <TopoDS_Shape.hxx>

#include <string>

namespace tnconvert {

/// What a product has by itself, without those that occur in it.
struct StepPart {
    TopoDS_Shape shape; ///< null when it has none
    SubStyles subStyles; ///< of what it consists of
    StepLosses losses;
    Healing healing = Healing::Full; ///< Needed: of at least one item
};

/// Makes the shapes of products, one item after the other, each for itself: one that is damaged
/// costs no other, and nothing is looked for in the rest of the file.
class StepPartTransfer {
public:
    /// Both must outlive the transfer.
    StepPartTransfer(const StepEntities &entities, const StepLooks &looks);

    /// With Healing::Needed, items that need more are still healed in full.
    StepPart transfer(const StepProduct &product, Healing healing,
                      const Message_ProgressRange &progress) const;

private:
    const StepEntities &m_entities;
    const StepLooks &m_looks;
    const Handle(STEPControl_ActorRead) m_actor;
};

} // namespace tnconvert
