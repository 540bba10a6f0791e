#pragma once

#include "readers/step/StepEntities.h"
#include "scene/Scene.h"

#include <StepBasic_MeasureWithUnit.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_Representation.hxx>
#include <gp_XYZ.hxx>

#include <optional>
#include <unordered_map>

namespace tnconvert {

/// What a Step file says of its products beside their shapes.
class StepProperties {
public:
    /// What the program that wrote the file measured on a product, as the CAx Implementor Forum
    /// recommends to state it ("geometric validation properties").
    struct Measured {
        std::optional<double> area; ///< mm²
        std::optional<double> volume; ///< mm³
        std::optional<gp_XYZ> centroid; ///< mm
    };
    struct OfProduct {
        Metadata metadata;
        Measured measured;
    };

    explicit StepProperties(const StepEntities &entities);

    /// What is said of a product definition, or of an item of its shape; null when it is nothing.
    const OfProduct *find(const Handle(Standard_Transient) & entity) const;

private:
    using Entity = const Standard_Transient *;

    void findAspects(const StepEntities &entities);
    Entity subjectOf(const StepRepr_PropertyDefinition &definition) const;
    void add(const StepRepr_PropertyDefinition &definition,
             const Handle(StepRepr_Representation) & representation);

    std::unordered_map<Entity, OfProduct> m_properties;
    std::unordered_map<Entity, Entity> m_aspects; ///< the only item that an aspect of a shape is
};

} // namespace tnconvert
