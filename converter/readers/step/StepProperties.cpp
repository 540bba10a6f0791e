#include "readers/step/StepProperties.h"

#include "core/Text.h"
#include "readers/kernel/KernelGuard.h"

#include <STEPConstruct_UnitContext.hxx>
#include <StepBasic_DerivedUnit.hxx>
#include <StepBasic_DerivedUnitElement.hxx>
#include <StepBasic_HArray1OfDerivedUnitElement.hxx>
#include <StepBasic_MeasureValueMember.hxx>
#include <StepBasic_NamedUnit.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepBasic_Unit.hxx>
#include <StepGeom_CartesianPoint.hxx>
#include <StepRepr_DescriptiveRepresentationItem.hxx>
#include <StepRepr_GlobalUnitAssignedContext.hxx>
#include <StepRepr_HArray1OfRepresentationItem.hxx>
#include <StepRepr_MeasureRepresentationItem.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_PropertyDefinitionRepresentation.hxx>
#include <StepRepr_ShapeAspect.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <TCollection_HAsciiString.hxx>

#include <cmath>
#include <cstddef>
#include <string>

namespace tnconvert {

namespace {

std::string text(const Handle(TCollection_HAsciiString) & string)
{
    return string.IsNull() ? std::string() : validUtf8(string->ToCString());
}

/// Millimetres for one of the unit; nothing when it is no length.
std::optional<double> lengthFactor(const Handle(StepBasic_NamedUnit) & unit)
{
    STEPConstruct_UnitContext context;
    if (unit.IsNull() || context.ComputeFactors(unit) != 0 || !context.LengthDone())
        return std::nullopt;
    return context.LengthFactor();
}

/// An area in mm², a volume in mm³; nothing when its unit is none that is made of lengths.
std::optional<double> inMillimetres(const StepBasic_MeasureWithUnit &measure)
{
    const auto unit = Handle(StepBasic_DerivedUnit)::DownCast(measure.UnitComponent().Value());
    if (unit.IsNull() || unit->Elements().IsNull())
        return std::nullopt;
    double value = measure.ValueComponent();
    for (const Handle(StepBasic_DerivedUnitElement) & element : *unit->Elements()) {
        const std::optional<double> factor =
            element.IsNull() ? std::nullopt : lengthFactor(element->Unit());
        if (!factor)
            return std::nullopt;
        value *= std::pow(*factor, element->Exponent());
    }
    return value;
}

/// The values of a representation that states validation properties.
struct Values {
    const char *item; ///< its name
    const char *key; ///< in the metadata
    std::optional<double> StepProperties::Measured::*value;
};
constexpr Values validated[] = {
    {"surface area measure", "area", &StepProperties::Measured::area},
    {"wetted area measure", "area", &StepProperties::Measured::area},
    {"volume measure", "volume", &StepProperties::Measured::volume},
};

void addMeasure(StepProperties::OfProduct &product, const std::string &name,
                const StepBasic_MeasureWithUnit &measure)
{
    const std::optional<double> value = inMillimetres(measure);
    std::string key = name;
    for (const Values &values : validated) {
        if (!value || name != values.item)
            continue;
        product.measured.*values.value = value;
        key = values.key;
    }
    product.metadata.emplace_back(key, std::to_string(value.value_or(measure.ValueComponent())));
}

/// The factor to millimetres of a representation's points.
double lengthFactor(const StepRepr_Representation &representation)
{
    STEPConstruct_UnitContext context;
    const auto units =
        Handle(StepRepr_GlobalUnitAssignedContext)::DownCast(representation.ContextOfItems());
    return !units.IsNull() && context.ComputeFactors(units) == 0 ? context.LengthFactor() : 1;
}

} // namespace

StepProperties::StepProperties(const StepEntities &entities)
{
    findAspects(entities);
    const auto all = entities.all<StepRepr_PropertyDefinitionRepresentation>();
    std::size_t next = 0;
    const auto addRest = [&] {
        while (next < all.size()) {
            const Handle(StepRepr_PropertyDefinitionRepresentation) &one = all[next++];
            const auto definition =
                Handle(StepRepr_PropertyDefinition)::DownCast(one->Definition().Value());
            if (!definition.IsNull()
                && !one->IsKind(STANDARD_TYPE(StepShape_ShapeDefinitionRepresentation)))
                add(*definition, one->UsedRepresentation());
        }
    };
    while (!KernelGuard::run(addRest)) { }
}

/// Some programs state what belongs to a solid as that of an aspect of the product's shape.
void StepProperties::findAspects(const StepEntities &entities)
{
    for (const auto &one : entities.all<StepShape_ShapeDefinitionRepresentation>()) {
        const auto definition =
            Handle(StepRepr_PropertyDefinition)::DownCast(one->Definition().Value());
        const Handle(StepRepr_Representation) representation = one->UsedRepresentation();
        if (definition.IsNull() || representation.IsNull() || representation->NbItems() != 1)
            continue;
        const Handle(Standard_Transient) aspect = definition->Definition().Value();
        if (!aspect.IsNull() && aspect->IsKind(STANDARD_TYPE(StepRepr_ShapeAspect)))
            m_aspects.emplace(aspect.get(), representation->ItemsValue(1).get());
    }
}

/// The product that a property belongs to, by itself or by way of its shape, or an item of one.
StepProperties::Entity
StepProperties::subjectOf(const StepRepr_PropertyDefinition &definition) const
{
    Handle(Standard_Transient) subject = definition.Definition().Value();
    const auto aspect = m_aspects.find(subject.get());
    if (aspect != m_aspects.end())
        return aspect->second;
    if (const auto shape = Handle(StepRepr_ProductDefinitionShape)::DownCast(subject))
        subject = shape->Definition().Value();
    return Handle(StepBasic_ProductDefinition)::DownCast(subject).get();
}

void StepProperties::add(const StepRepr_PropertyDefinition &definition,
                         const Handle(StepRepr_Representation) & representation)
{
    const Entity subject = subjectOf(definition);
    if (!subject || representation.IsNull() || representation->Items().IsNull())
        return;
    OfProduct &properties = m_properties[subject];
    for (const Handle(StepRepr_RepresentationItem) & item : *representation->Items()) {
        if (item.IsNull())
            continue;
        const std::string stated = text(item->Name());
        const std::string name = stated.empty() ? text(definition.Name()) : stated;
        if (const auto said = Handle(StepRepr_DescriptiveRepresentationItem)::DownCast(item))
            properties.metadata.emplace_back(name, text(said->Description()));
        else if (const auto measured = Handle(StepRepr_MeasureRepresentationItem)::DownCast(item);
                 measured && !measured->Measure().IsNull())
            addMeasure(properties, name, *measured->Measure());
        else if (const auto point = Handle(StepGeom_CartesianPoint)::DownCast(item);
                 point && name == "centre point" && point->NbCoordinates() == 3)
            properties.measured.centroid =
                gp_XYZ(point->CoordinatesValue(1), point->CoordinatesValue(2),
                       point->CoordinatesValue(3))
                * lengthFactor(*representation);
    }
}

const StepProperties::OfProduct *StepProperties::find(const Handle(Standard_Transient)
                                                      & entity) const
{
    const auto found = m_properties.find(entity.get());
    return found == m_properties.end() ? nullptr : &found->second;
}

} // namespace tnconvert
