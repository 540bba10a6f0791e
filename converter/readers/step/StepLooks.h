#pragma once

#include "readers/kernel/Style.h"
#include "readers/step/StepEntities.h"

#include <StepVisual_PresentationStyleAssignment.hxx>
#include <StepVisual_StyledItem.hxx>

#include <cstddef>
#include <string>
#include <unordered_map>

namespace tnconvert {

/// Colours, visibility and layers that a Step file states.
class StepLooks {
public:
    explicit StepLooks(const StepEntities &entities);

    /// The look of a representation, an item of one or an occurrence; null when there is none, or
    /// the entity is null.
    const Style *find(const Handle(Standard_Transient) & entity) const;
    /// The name of the layer of a representation or an item; empty when there is none.
    std::string layerOf(const Handle(Standard_Transient) & entity) const;

    /// How many styles are damaged and have been left out.
    std::size_t damagedCount() const { return m_damagedCount; }

private:
    using Entity = const Standard_Transient *;

    /// What a styled item gives one of its looks to: its item, or the occurrence that the look's
    /// context stands for.
    Entity targetOf(const StepVisual_StyledItem &styled,
                    const Handle(StepVisual_PresentationStyleAssignment) & assignment) const;
    void addStyle(const StepVisual_StyledItem &styled);
    void addOccurrences(const StepEntities &entities);
    void addLayers(const StepEntities &entities);
    void hide(const StepVisual_StyledItem &styled);
    void hide(const StepEntities &entities);
    const Style &lookOf(const Handle(StepVisual_PresentationStyleAssignment) & assignment);

    std::unordered_map<Entity, Style> m_styles;
    std::unordered_map<Entity, std::string> m_layers;
    std::unordered_map<Entity, Style> m_looks; ///< by assignment; files share few of them
    /// Occurrences by the representation that stands for them where styles are given by context.
    std::unordered_map<Entity, Entity> m_occurrences;
    std::size_t m_damagedCount = 0;
};

} // namespace tnconvert
