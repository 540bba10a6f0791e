#pragma once

#include "readers/step/StepEntities.h"
#include "readers/step/StepPlacements.h"

#include <StepBasic_ProductDefinition.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationItem.hxx>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tnconvert {

/// Something that has a shape, and where it stands in its product.
struct StepItem {
    Handle(StepRepr_RepresentationItem) entity;
    Handle(StepRepr_Representation) representation; ///< whose units it has
    gp_Trsf placement; ///< mm
};

/// A product within another one.
struct StepOccurrence {
    std::size_t product = 0;
    gp_Trsf placement; ///< mm
    /// What states it: a usage occurrence, a mapped item or both.
    std::vector<Handle(Standard_Transient)> entities;
};

struct StepProduct {
    std::string name;
    /// Null for shapes that no product has, and for representations that others map into theirs.
    Handle(StepBasic_ProductDefinition) entity;
    std::vector<Handle(StepRepr_Representation)> representations;
    std::vector<StepItem> items;
    std::vector<StepOccurrence> occurrences;
    bool isUsed = false; ///< occurs within another one

    bool isEmpty() const { return items.empty() && occurrences.empty(); }

    /// What its entities state about the whole of it: its definition and, when there is but one,
    /// its item.
    std::vector<Handle(Standard_Transient)> subjects() const
    {
        std::vector<Handle(Standard_Transient)> result(1, entity);
        if (items.size() == 1)
            result.push_back(items.front().entity);
        return result;
    }
};

/// The products of a Step file and what they consist of, as its entities state it. Unlike the
/// kernel's transfer this makes no shapes and is linear in the number of entities.
class StepStructure {
public:
    /// Occurrences whose product is missing are left out. Throws ConversionError when a product
    /// contains itself or is nested too deeply.
    explicit StepStructure(const StepEntities &entities);

    const std::vector<StepProduct> &products() const { return m_products; }

    /// How many nodes the file's tree would have; a product used twice counts twice, with all below
    /// it, and the count ends at 10^18.
    std::uint64_t nodeCount() const { return m_nodeCount; }

    /// What states a place that could not be read, or should state one and does not, or places what
    /// is no shape of its product; what it places stands where its product has its origin.
    const std::vector<Handle(Standard_Transient)> &lostPlaces() const { return m_lostPlaces; }

private:
    class Builder;

    std::vector<StepProduct> m_products;
    std::vector<Handle(Standard_Transient)> m_lostPlaces;
    std::uint64_t m_nodeCount = 0;
};

} // namespace tnconvert
