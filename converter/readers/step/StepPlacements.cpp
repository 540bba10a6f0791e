#include "readers/step/StepPlacements.h"

#include "readers/kernel/KernelGuard.h"

#include <Geom_Axis2Placement.hxx>
#include <Geom_CartesianPoint.hxx>
#include <StepData_GlobalFactors.hxx>
#include <StepGeom_Axis2Placement3d.hxx>
#include <StepGeom_CartesianPoint.hxx>
#include <StepGeom_CartesianTransformationOperator3d.hxx>
#include <StepGeom_Direction.hxx>
#include <StepRepr_HArray1OfRepresentationItem.hxx>
#include <StepRepr_ItemDefinedTransformation.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationContext.hxx>
#include <StepRepr_RepresentationMap.hxx>
#include <StepRepr_RepresentationRelationshipWithTransformation.hxx>
#include <StepToGeom.hxx>
#include <gp_Ax2.hxx>
#include <gp_Ax3.hxx>

#include <algorithm>
#include <utility>

namespace tnconvert {

namespace {

gp_XYZ direction(const Handle(StepGeom_Direction) & stated, const gp_XYZ &usual)
{
    if (stated.IsNull() || stated->NbDirectionRatios() != 3)
        return usual;
    return {stated->DirectionRatiosValue(1), stated->DirectionRatiosValue(2),
            stated->DirectionRatiosValue(3)};
}

/// The kernel's own function for this leaves out the scale, and makes mirrors into rotations.
gp_Trsf operatorSystem(const StepGeom_CartesianTransformationOperator3d &stated)
{
    const gp_XYZ z = direction(stated.Axis3(), gp_XYZ(0, 0, 1)).Normalized();
    gp_XYZ x = direction(stated.Axis1(), gp_XYZ(1, 0, 0));
    x = (x - z * (x * z)).Normalized();
    const gp_XYZ upright = z ^ x;
    const bool isMirrored = direction(stated.Axis2(), upright) * upright < 0;
    const gp_XYZ y = isMirrored ? upright.Reversed() : upright;
    const gp_XYZ origin = StepToGeom::MakeCartesianPoint(stated.LocalOrigin())->Pnt().XYZ();
    const double scale = stated.HasScale() ? stated.Scale() : 1;
    gp_Trsf system;
    system.SetValues(scale * x.X(), scale * y.X(), scale * z.X(), origin.X(), //
                     scale * x.Y(), scale * y.Y(), scale * z.Y(), origin.Y(), //
                     scale * x.Z(), scale * y.Z(), scale * z.Z(), origin.Z());
    return system;
}

} // namespace

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
        return systemOf(transformation, to, relationship);
    Handle(StepRepr_RepresentationItem) fromItem = items->TransformItem1();
    Handle(StepRepr_RepresentationItem) toItem = items->TransformItem2();
    // Some programs write them the other way round.
    if (!has(from, fromItem) && has(from, toItem))
        std::swap(fromItem, toItem);
    return systemOf(toItem, to, relationship) * systemOf(fromItem, from, relationship).Inverted();
}

gp_Trsf StepPlacements::of(const Handle(StepRepr_MappedItem) & item,
                           const Handle(StepRepr_Representation) & parent)
{
    const Handle(StepRepr_RepresentationMap) map = item->MappingSource();
    if (map.IsNull())
        return {};
    return systemOf(item->MappingTarget(), parent, item)
        * systemOf(map->MappingOrigin(), map->MappedRepresentation(), item).Inverted();
}

/// The system that a placement defines, as what turns its coordinates into the representation's.
gp_Trsf StepPlacements::systemOf(const Handle(Standard_Transient) & placement,
                                 const Handle(StepRepr_Representation) & representation,
                                 const Handle(Standard_Transient) & of)
{
    gp_Trsf system;
    bool isKnown = true;
    const bool isMade = KernelGuard::run([&] {
        // The kernel's functions multiply lengths by this.
        StepData_GlobalFactors::Intance().InitializeFactors(lengthFactor(representation), 1, 1);
        if (const auto axes = Handle(StepGeom_Axis2Placement3d)::DownCast(placement))
            system.SetDisplacement(gp_Ax3(), gp_Ax3(StepToGeom::MakeAxis2Placement(axes)->Ax2()));
        else if (const auto scaled =
                     Handle(StepGeom_CartesianTransformationOperator3d)::DownCast(placement))
            system = operatorSystem(*scaled);
        else
            isKnown = false;
    });
    if (isMade && isKnown)
        return system;
    if (std::find(m_damaged.begin(), m_damaged.end(), of) == m_damaged.end())
        m_damaged.push_back(of);
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
