#include "readers/step/StepDamage.h"

#include <Interface_Check.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_RepresentationContext.hxx>
#include <StepRepr_ShapeRepresentationRelationship.hxx>
#include <StepShape_ContextDependentShapeRepresentation.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>

#include <cstdlib>
#include <initializer_list>
#include <set>
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

/// What ties shapes to products, and products to each other.
bool beginsShape(const Handle(Standard_Transient) & entity)
{
    return isOneOf(entity,
                   {STANDARD_TYPE(StepShape_ShapeDefinitionRepresentation),
                    STANDARD_TYPE(StepShape_ContextDependentShapeRepresentation),
                    STANDARD_TYPE(StepRepr_ShapeRepresentationRelationship),
                    STANDARD_TYPE(StepRepr_NextAssemblyUsageOccurrence)});
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

/// The numbers of entities that could not be read, and of those with references to nothing.
std::set<int> damagedEntities(StepData_StepModel &model)
{
    std::set<int> numbers;
    for (int i = 1; i <= model.NbEntities(); ++i) {
        if (model.IsErrorEntity(i))
            numbers.insert(i);
    }
    // "Unresolved Reference, Ent.Id.#313 Param.n0 2 (Id.#314)"
    const Handle(Interface_Check) &check = model.GlobalCheck();
    for (int i = 1; i <= check->NbFails(); ++i) {
        const std::string text = check->CFail(i);
        const std::size_t at = text.find("Ent.Id.#");
        const int ident = at == std::string::npos ? 0 : std::atoi(text.c_str() + at + 8);
        const int number =
            ident > 0 ? model.NextNumberForLabel(("#" + std::to_string(ident)).c_str()) : 0;
        if (number > 0)
            numbers.insert(number);
    }
    return numbers;
}

} // namespace

StepDamage::StepDamage(const StepEntities &entities)
{
    const std::set<int> damaged = damagedEntities(*entities.model());
    if (damaged.empty())
        return;
    const std::vector<bool> isNeeded = neededEntities(entities);
    for (const int number : damaged) {
        const Handle(Standard_Transient) &entity = entities.model()->Value(number);
        if (!isNeeded[std::size_t(number)] || (endsShape(entity) && !tiesShape(entity)))
            ++m_otherCount;
        else if (m_neededCount++ == 0)
            m_firstNeeded = entities.label(entity);
    }
}

} // namespace tnconvert
