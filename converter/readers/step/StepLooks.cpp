#include "readers/step/StepLooks.h"

#include "core/Text.h"
#include "readers/kernel/KernelGuard.h"

#include <STEPConstruct_Styles.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_Representation.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <StepVisual_CurveStyle.hxx>
#include <StepVisual_FillAreaStyle.hxx>
#include <StepVisual_FillAreaStyleColour.hxx>
#include <StepVisual_FillStyleSelect.hxx>
#include <StepVisual_HArray1OfFillStyleSelect.hxx>
#include <StepVisual_HArray1OfInvisibleItem.hxx>
#include <StepVisual_HArray1OfLayeredItem.hxx>
#include <StepVisual_HArray1OfPresentationStyleAssignment.hxx>
#include <StepVisual_HArray1OfPresentationStyleSelect.hxx>
#include <StepVisual_HArray1OfRenderingPropertiesSelect.hxx>
#include <StepVisual_HArray1OfSurfaceStyleElementSelect.hxx>
#include <StepVisual_Invisibility.hxx>
#include <StepVisual_OverRidingStyledItem.hxx>
#include <StepVisual_PresentationLayerAssignment.hxx>
#include <StepVisual_PresentationStyleByContext.hxx>
#include <StepVisual_PresentationStyleSelect.hxx>
#include <StepVisual_StyleContextSelect.hxx>
#include <StepVisual_StyledItemTarget.hxx>
#include <StepVisual_SurfaceSideStyle.hxx>
#include <StepVisual_SurfaceStyleBoundary.hxx>
#include <StepVisual_SurfaceStyleElementSelect.hxx>
#include <StepVisual_SurfaceStyleFillArea.hxx>
#include <StepVisual_SurfaceStyleRenderingWithProperties.hxx>
#include <StepVisual_SurfaceStyleTransparent.hxx>
#include <StepVisual_SurfaceStyleUsage.hxx>
#include <TCollection_HAsciiString.hxx>

#include <algorithm>

namespace tnconvert {

namespace {

using Color = std::optional<Quantity_ColorRGBA>;

/// A side's transparency is stated once, before or behind its other colours.
void setColor(Color &color, const Handle(StepVisual_Colour) & stated)
{
    Quantity_Color decoded;
    if (!stated.IsNull() && STEPConstruct_Styles::DecodeColor(stated, decoded))
        color = Quantity_ColorRGBA(decoded, color ? color->Alpha() : 1.0F);
}

void setCurve(Style &style, const Handle(Standard_Transient) & stated)
{
    if (const auto curve = Handle(StepVisual_CurveStyle)::DownCast(stated))
        setColor(style.curve, curve->CurveColour());
}

void setFill(Style &style, const StepVisual_SurfaceStyleFillArea &stated)
{
    const Handle(StepVisual_FillAreaStyle) area = stated.FillArea();
    if (area.IsNull() || area->FillStyles().IsNull())
        return;
    for (const StepVisual_FillStyleSelect &fill : *area->FillStyles()) {
        if (const auto color = Handle(StepVisual_FillAreaStyleColour)::DownCast(fill.Value()))
            setColor(style.surface, color->FillColour());
    }
}

void setRendering(Style &style, const StepVisual_SurfaceStyleRendering &stated)
{
    setColor(style.surface, stated.SurfaceColour());
    const auto *more =
        dynamic_cast<const StepVisual_SurfaceStyleRenderingWithProperties *>(&stated);
    if (!more || !style.surface || more->Properties().IsNull())
        return;
    for (const StepVisual_RenderingPropertiesSelect &property : *more->Properties()) {
        if (const auto seen =
                Handle(StepVisual_SurfaceStyleTransparent)::DownCast(property.Value()))
            style.surface->SetAlpha(float(1 - seen->Transparency()));
    }
}

void setSurface(Style &style, const StepVisual_SurfaceStyleUsage &stated)
{
    const Handle(StepVisual_SurfaceSideStyle) side = stated.Style();
    if (side.IsNull() || side->Styles().IsNull())
        return;
    for (const StepVisual_SurfaceStyleElementSelect &element : *side->Styles()) {
        const Handle(Standard_Transient) value = element.Value();
        if (const auto fill = Handle(StepVisual_SurfaceStyleFillArea)::DownCast(value))
            setFill(style, *fill);
        else if (const auto rendering = Handle(StepVisual_SurfaceStyleRendering)::DownCast(value))
            setRendering(style, *rendering);
        else if (const auto boundary = Handle(StepVisual_SurfaceStyleBoundary)::DownCast(value))
            setCurve(style, boundary->StyleOfBoundary());
    }
}

Style decoded(const StepVisual_PresentationStyleAssignment &assignment)
{
    Style style;
    if (assignment.Styles().IsNull())
        return style;
    for (const StepVisual_PresentationStyleSelect &stated : *assignment.Styles()) {
        const Handle(Standard_Transient) value = stated.Value();
        if (const auto surface = Handle(StepVisual_SurfaceStyleUsage)::DownCast(value))
            setSurface(style, *surface);
        else
            setCurve(style, value);
    }
    return style;
}

} // namespace

StepLooks::StepLooks(const StepEntities &entities)
{
    addOccurrences(entities);
    auto styled = entities.all<StepVisual_StyledItem>();
    std::stable_partition(styled.begin(), styled.end(), [](const auto &one) {
        return !one->IsKind(STANDARD_TYPE(StepVisual_OverRidingStyledItem));
    });
    std::size_t next = 0;
    while (!KernelGuard::run([&] {
        while (next < styled.size())
            addStyle(*styled[next++]);
    }))
        ++m_damagedCount;
    addLayers(entities);
    hide(entities);
}

void StepLooks::addOccurrences(const StepEntities &entities)
{
    for (const auto &entity : entities.all<StepShape_ShapeDefinitionRepresentation>()) {
        const auto shape =
            Handle(StepRepr_PropertyDefinition)::DownCast(entity->Definition().Value());
        if (shape.IsNull())
            continue;
        if (const auto occurrence =
                Handle(StepRepr_NextAssemblyUsageOccurrence)::DownCast(shape->Definition().Value()))
            m_occurrences.emplace(entity->UsedRepresentation().get(), occurrence.get());
    }
}

StepLooks::Entity StepLooks::targetOf(const StepVisual_StyledItem &styled,
                                      const Handle(StepVisual_PresentationStyleAssignment)
                                          & assignment) const
{
    if (const auto context = Handle(StepVisual_PresentationStyleByContext)::DownCast(assignment)) {
        const auto occurrence = m_occurrences.find(context->StyleContext().Value().get());
        if (occurrence != m_occurrences.end())
            return occurrence->second;
    }
    return styled.ItemAP242().Value().get();
}

void StepLooks::addStyle(const StepVisual_StyledItem &styled)
{
    if (styled.Styles().IsNull())
        return;
    for (const Handle(StepVisual_PresentationStyleAssignment) & assignment : *styled.Styles()) {
        if (!assignment.IsNull())
            m_styles[targetOf(styled, assignment)].overlay(lookOf(assignment));
    }
}

const Style &StepLooks::lookOf(const Handle(StepVisual_PresentationStyleAssignment) & assignment)
{
    const auto known = m_looks.find(assignment.get());
    return known != m_looks.end()
        ? known->second
        : m_looks.emplace(assignment.get(), decoded(*assignment)).first->second;
}

void StepLooks::addLayers(const StepEntities &entities)
{
    for (const auto &layer : entities.all<StepVisual_PresentationLayerAssignment>()) {
        if (layer->Name().IsNull() || layer->AssignedItems().IsNull())
            continue;
        for (const StepVisual_LayeredItem &item : *layer->AssignedItems())
            m_layers.emplace(item.Value().get(), validUtf8(layer->Name()->ToCString()));
    }
}

void StepLooks::hide(const StepVisual_StyledItem &styled)
{
    if (styled.Styles().IsNull()) {
        m_styles[targetOf(styled, {})].visible = false;
        return;
    }
    for (const Handle(StepVisual_PresentationStyleAssignment) & assignment : *styled.Styles())
        m_styles[targetOf(styled, assignment)].visible = false;
}

void StepLooks::hide(const StepEntities &entities)
{
    for (const auto &invisibility : entities.all<StepVisual_Invisibility>()) {
        if (invisibility->InvisibleItems().IsNull())
            continue;
        for (const StepVisual_InvisibleItem &item : *invisibility->InvisibleItems()) {
            const Handle(Standard_Transient) value = item.Value();
            if (const auto styled = Handle(StepVisual_StyledItem)::DownCast(value)) {
                hide(*styled);
            } else if (const auto layer =
                           Handle(StepVisual_PresentationLayerAssignment)::DownCast(value);
                       layer && !layer->AssignedItems().IsNull()) {
                for (const StepVisual_LayeredItem &hidden : *layer->AssignedItems())
                    m_styles[hidden.Value().get()].visible = false;
            }
        }
    }
}

const Style *StepLooks::find(const Handle(Standard_Transient) & entity) const
{
    const auto found = m_styles.find(entity.get());
    return found == m_styles.end() || entity.IsNull() ? nullptr : &found->second;
}

std::string StepLooks::layerOf(const Handle(Standard_Transient) & entity) const
{
    const auto found = m_layers.find(entity.get());
    return found == m_layers.end() ? std::string() : found->second;
}

} // namespace tnconvert
