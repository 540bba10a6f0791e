#include "readers/step/StepDamage.h"

#include "readers/step/StepReferrers.h"

#include <Interface_Check.hxx>
#include <StepBasic_DocumentProductAssociation.hxx>
#include <StepBasic_DocumentReference.hxx>
#include <StepBasic_ExternalIdentificationAssignment.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepBasic_RoleAssociation.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_RepresentationContext.hxx>
#include <StepRepr_ShapeRepresentationRelationship.hxx>
#include <StepShape_ContextDependentShapeRepresentation.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tnconvert {

namespace {

bool isOneOf(const Handle(Standard_Transient) & entity,
             std::initializer_list<Handle(Standard_Type)> types)
{
    for (const Handle(Standard_Type) & type : types) {
        if (entity->IsKind(type))
            return true;
    }
    return false;
}

/// What ties shapes and the files of parts to products, and products to each other.
bool beginsShape(const Handle(Standard_Transient) & entity)
{
    return isOneOf(entity,
                   {STANDARD_TYPE(StepShape_ShapeDefinitionRepresentation),
                    STANDARD_TYPE(StepShape_ContextDependentShapeRepresentation),
                    STANDARD_TYPE(StepRepr_ShapeRepresentationRelationship),
                    STANDARD_TYPE(StepRepr_NextAssemblyUsageOccurrence),
                    STANDARD_TYPE(StepBasic_DocumentProductAssociation),
                    STANDARD_TYPE(StepBasic_DocumentReference),
                    STANDARD_TYPE(StepBasic_ExternalIdentificationAssignment),
                    STANDARD_TYPE(StepBasic_RoleAssociation)});
}

/// What says nothing of geometry, and leads to persons, dates and tolerances.
bool endsShape(const Handle(Standard_Transient) & entity)
{
    return isOneOf(entity,
                   {STANDARD_TYPE(StepRepr_RepresentationContext),
                    STANDARD_TYPE(StepRepr_PropertyDefinition),
                    STANDARD_TYPE(StepBasic_ProductDefinition)});
}

/// What is needed for itself among those: without the product that it refers to the shape has no
/// place.
bool tiesShape(const Handle(Standard_Transient) & entity)
{
    return entity->IsKind(STANDARD_TYPE(StepRepr_ProductDefinitionShape));
}

/// For each entity by its number, whether it is reached from one that begins a shape.
std::vector<bool> neededEntities(const StepEntities &entities)
{
    std::vector<int> first;
    for (int i = 1; i <= entities.model()->NbEntities(); ++i) {
        if (beginsShape(entities.model()->Value(i)))
            first.push_back(i);
    }
    return entities.graph().reached(first, endsShape);
}

/// The numbers that are referred to and that no entity has.
std::unordered_set<std::uint64_t> missingNumbers(StepData_StepModel &model)
{
    // "Unresolved Reference, Ent.Id.#313 Param.n0 2 (Id.#314)", where the first number is none of
    // the file when the reference stands in a list.
    constexpr std::string_view mark = "(Id.#";
    std::unordered_set<std::uint64_t> numbers;
    const Handle(Interface_Check) &check = model.GlobalCheck();
    for (int i = 1; i <= check->NbFails(); ++i) {
        const std::string text = check->CFail(i);
        const std::size_t at = text.find(mark);
        if (at != std::string::npos)
            numbers.insert(std::strtoull(text.c_str() + at + mark.size(), nullptr, 10));
    }
    return numbers;
}

/// The entities that could not be read, and those with references to nothing.
std::vector<Handle(Standard_Transient)> damagedEntities(StepData_StepModel &model,
                                                        const std::string &path)
{
    const std::unordered_set<std::uint64_t> missing = missingNumbers(model);
    std::unordered_set<std::uint64_t> referrers;
    if (!missing.empty())
        referrers = referrersOf(path, missing);
    std::vector<Handle(Standard_Transient)> damaged;
    for (int i = 1; i <= model.NbEntities(); ++i) {
        const Handle(Standard_Transient) &entity = model.Value(i);
        const bool refers =
            !referrers.empty() && referrers.count(std::uint64_t(model.IdentLabel(entity))) > 0;
        if (refers || model.IsErrorEntity(i))
            damaged.push_back(entity);
    }
    return damaged;
}

} // namespace

StepDamage::StepDamage(const StepEntities &entities, const std::string &path)
{
    const std::vector<Handle(Standard_Transient)> damaged =
        damagedEntities(*entities.model(), path);
    if (damaged.empty())
        return;
    const std::vector<bool> isNeeded = neededEntities(entities);
    for (const Handle(Standard_Transient) & entity : damaged) {
        const auto number = std::size_t(entities.model()->Number(entity));
        if (!isNeeded[number] || (endsShape(entity) && !tiesShape(entity)))
            ++m_otherCount;
        else if (m_neededCount++ == 0)
            m_firstNeeded = entities.label(entity);
    }
}

} // namespace tnconvert
