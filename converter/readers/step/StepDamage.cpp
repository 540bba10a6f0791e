#include "readers/step/StepDamage.h"

#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepData_StepModel.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_RepresentationContext.hxx>
#include <StepRepr_ShapeRepresentationRelationship.hxx>
#include <StepSelect_StepType.hxx>
#include <StepShape_ContextDependentShapeRepresentation.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>

#include <initializer_list>
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

/// For each entity by its number, whether it is reached from one that begins a shape.
std::vector<bool> neededEntities(const Interface_InterfaceModel &model,
                                 const Interface_Graph &graph)
{
    std::vector<bool> isNeeded(std::size_t(model.NbEntities()) + 1);
    std::vector<int> open;
    const auto reach = [&](int number) {
        if (number > 0 && !isNeeded[std::size_t(number)]) {
            isNeeded[std::size_t(number)] = true;
            open.push_back(number);
        }
    };
    for (int i = 1; i <= model.NbEntities(); ++i) {
        if (beginsShape(model.Value(i)))
            reach(i);
    }
    while (!open.empty()) {
        const Handle(Standard_Transient) &entity = model.Value(open.back());
        open.pop_back();
        for (Interface_EntityIterator it = graph.Shareds(entity); it.More(); it.Next()) {
            if (!endsShape(it.Value()))
                reach(model.Number(it.Value()));
        }
    }
    return isNeeded;
}

} // namespace

StepDamage::StepDamage(const Handle(XSControl_WorkSession) & session)
{
    const Handle(Interface_InterfaceModel) model = session->Model();
    std::vector<int> damaged;
    for (int i = 1; i <= model->NbEntities(); ++i) {
        if (model->IsErrorEntity(i))
            damaged.push_back(i);
    }
    if (damaged.empty())
        return;
    const std::vector<bool> isNeeded = neededEntities(*model, session->Graph());
    for (const int number : damaged) {
        if (!isNeeded[std::size_t(number)]) {
            ++m_otherCount;
            continue;
        }
        if (m_neededCount++ > 0)
            continue;
        StepSelect_StepType types;
        types.SetProtocol(session->Protocol());
        const Handle(Standard_Transient) entity = model->Value(number);
        const Handle(StepData_StepModel) step = Handle(StepData_StepModel)::DownCast(model);
        m_firstNeeded =
            "#" + std::to_string(step->IdentLabel(entity)) + " " + types.Value(entity, model);
    }
}

} // namespace tnconvert
