#pragma once

#include <STEPControl_ActorRead.hxx>
#include <StepData_StepModel.hxx>
#include <StepRepr_MappedItem.hxx>
#include <StepRepr_RepresentationRelationship.hxx>
#include <Transfer_TransientProcess.hxx>
#include <gp_Trsf.hxx>

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tnconvert {

/// Where the items of one representation stand in another one, in millimetres whatever the units of
/// the two. What is damaged counts as the identity.
class StepPlacements {
public:
    explicit StepPlacements(const Handle(StepData_StepModel) & model);

    /// From the coordinates of the relationship's first representation to those of its second.
    gp_Trsf of(const Handle(StepRepr_RepresentationRelationship) & relationship);

    /// From the coordinates of the representation that is mapped to those of @p parent, which has
    /// the item.
    gp_Trsf of(const Handle(StepRepr_MappedItem) & item,
               const Handle(StepRepr_Representation) & parent);

    /// The relationships and mapped items whose placements are damaged.
    const std::vector<Handle(Standard_Transient)> &damaged() const { return m_damaged; }

private:
    gp_Trsf systemOf(const Handle(Standard_Transient) & placement,
                     const Handle(StepRepr_Representation) & representation,
                     const Handle(Standard_Transient) & of);
    double lengthFactor(const Handle(StepRepr_Representation) & representation);
    bool has(const Handle(StepRepr_Representation) & representation,
             const Handle(Standard_Transient) & item);

    STEPControl_ActorRead m_actor;
    Handle(Transfer_TransientProcess) m_process;
    std::unordered_map<const Standard_Transient *, double> m_factors; ///< by context
    std::unordered_map<const Standard_Transient *, std::unordered_set<const Standard_Transient *>>
        m_items; ///< by representation
    std::vector<Handle(Standard_Transient)> m_damaged;
};

} // namespace tnconvert
