#include "readers/step/StepPlacements.h"

#include "readers/kernel/KernelGuard.h"

#include <Geom_Axis2Placement.hxx>
#include <StepData_GlobalFactors.hxx>
#include <StepGeom_Axis2Placement3d.hxx>
#include <StepGeom_CartesianTransformationOperator3d.hxx>
#include <StepRepr_HArray1OfRepresentationItem.hxx>
#include <StepRepr_ItemDefinedTransformation.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationContext.hxx>
#include <StepRepr_RepresentationMap.hxx>
#include <StepRepr_RepresentationRelationshipWithTransformation.hxx>
#include <StepToGeom.hxx>
#include <gp_Ax2.hxx>
#include <gp_Ax3.hxx>

#include <utility>

namespace tnconvert {

StepPlacements::StepPlacements(const Handle(StepData_StepModel) & model)
    : m_process(new Transfer_TransientProcess)
{
    m_process->SetModel(model);
}

gp_Trsf StepPlacements::of(const Handle(StepRepr_RepresentationRelationship) & relationship)
{
    const auto placed =
        Handle(StepRepr_RepresentationRelationshipWithTransformation)::DownCast(relationship);
    if (placed.IsNull())
        return {};
    const Handle(StepRepr_Representation) from = relationship->Rep1();
    const Handle(StepRepr_Representation) to = relationship->Rep2();
    const Handle(Standard_Transient) transformation = placed->TransformationOperator().Value();
    const auto items = Handle(StepRepr_ItemDefinedTransformation)::DownCast(transformation);
    if (items.IsNull())
        return systemOf(transformation, to);
    Handle(StepRepr_RepresentationItem) fromItem = items->TransformItem1();
    Handle(StepRepr_RepresentationItem) toItem = items->TransformItem2();
    // Some programs write them the other way round.
    if (!has(from, fromItem) && has(from, toItem))
        std::swap(fromItem, toItem);
    return systemOf(toItem, to) * systemOf(fromItem, from).Inverted();
}

gp_Trsf StepPlacements::of(const StepRepr_MappedItem &item,
                           const Handle(StepRepr_Representation) & parent)
{
    const Handle(StepRepr_RepresentationMap) map = item.MappingSource();
    if (map.IsNull())
        return {};
    return systemOf(item.MappingTarget(), parent)
        * systemOf(map->MappingOrigin(), map->MappedRepresentation()).Inverted();
}

/// The system that a placement defines, as what turns its coordinates into the representation's.
gp_Trsf StepPlacements::systemOf(const Handle(Standard_Transient) & placement,
                                 const Handle(StepRepr_Representation) & representation)
{
    gp_Trsf system;
    const bool isMade = KernelGuard::run([&] {
        // The kernel's functions multiply lengths by this.
        StepData_GlobalFactors::Intance().InitializeFactors(lengthFactor(representation), 1, 1);
        if (const auto axes = Handle(StepGeom_Axis2Placement3d)::DownCast(placement))
            system.SetDisplacement(gp_Ax3(), gp_Ax3(StepToGeom::MakeAxis2Placement(axes)->Ax2()));
        else if (const auto scaled =
                     Handle(StepGeom_CartesianTransformationOperator3d)::DownCast(placement))
            StepToGeom::MakeTransformation3d(scaled, system);
    });
    if (isMade)
        return system;
    m_damaged.push_back(placement);
    return {};
}

double StepPlacements::lengthFactor(const Handle(StepRepr_Representation) & representation)
{
    if (representation.IsNull())
        return 1;
    const auto [known, isNew] = m_factors.emplace(representation->ContextOfItems().get(), 1);
    if (isNew) {
        m_actor.PrepareUnits(representation, m_process);
        known->second = StepData_GlobalFactors::Intance().LengthFactor();
    }
    return known->second;
}

bool StepPlacements::has(const Handle(StepRepr_Representation) & representation,
                         const Handle(Standard_Transient) & item)
{
    if (representation.IsNull() || representation->Items().IsNull())
        return false;
    const auto [known, isNew] = m_items.try_emplace(representation.get());
    if (isNew) {
        for (const Handle(StepRepr_RepresentationItem) & own : *representation->Items())
            known->second.insert(own.get());
    }
    return known->second.count(item.get()) > 0;
}

} // namespace tnconvert
