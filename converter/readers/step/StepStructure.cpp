#include "readers/step/StepStructure.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "core/Text.h"
#include "readers/step/StepNodeCount.h"

#include <StepBasic_Product.hxx>
#include <StepBasic_ProductDefinitionFormation.hxx>
#include <StepRepr_HArray1OfRepresentationItem.hxx>
#include <StepRepr_MappedItem.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_RepresentationMap.hxx>
#include <StepRepr_ShapeRepresentationRelationship.hxx>
#include <StepShape_BooleanResult.hxx>
#include <StepShape_ContextDependentShapeRepresentation.hxx>
#include <StepShape_EdgeBasedWireframeModel.hxx>
#include <StepShape_Face.hxx>
#include <StepShape_FaceBasedSurfaceModel.hxx>
#include <StepShape_GeometricSet.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <StepShape_ShapeRepresentation.hxx>
#include <StepShape_ShellBasedSurfaceModel.hxx>
#include <StepShape_SolidModel.hxx>
#include <TCollection_HAsciiString.hxx>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tnconvert {

namespace {

/// Damaged files lack any of the links.
std::string nameOf(const StepBasic_ProductDefinition &definition)
{
    const Handle(StepBasic_ProductDefinitionFormation) formation = definition.Formation();
    if (formation.IsNull() || formation->OfProduct().IsNull())
        return {};
    for (const Handle(TCollection_HAsciiString) & name :
         {formation->OfProduct()->Name(), formation->OfProduct()->Id()}) {
        if (!name.IsNull() && !name->IsEmpty())
            return validUtf8(name->ToCString());
    }
    return {};
}

bool isShape(const Handle(StepRepr_RepresentationItem) & item)
{
    for (const Handle(Standard_Type) & type :
         {STANDARD_TYPE(StepShape_SolidModel), STANDARD_TYPE(StepShape_ShellBasedSurfaceModel),
          STANDARD_TYPE(StepShape_FaceBasedSurfaceModel), STANDARD_TYPE(StepShape_BooleanResult),
          STANDARD_TYPE(StepShape_Face), STANDARD_TYPE(StepShape_GeometricSet),
          STANDARD_TYPE(StepShape_EdgeBasedWireframeModel)}) {
        if (item->IsKind(type))
            return true;
    }
    return false;
}

/// The items that are there.
std::vector<Handle(StepRepr_RepresentationItem)> itemsOf(const Handle(StepRepr_Representation)
                                                         & representation)
{
    std::vector<Handle(StepRepr_RepresentationItem)> result;
    if (representation.IsNull() || representation->Items().IsNull())
        return result;
    for (const Handle(StepRepr_RepresentationItem) & item : *representation->Items()) {
        if (!item.IsNull())
            result.push_back(item);
    }
    return result;
}

} // namespace

class StepStructure::Builder {
public:
    explicit Builder(const StepEntities &entities)
        : m_entities(entities)
        , m_placements(entities.model())
    {
    }

    const StepPlacements &placements() const { return m_placements; }

    std::vector<StepProduct> build()
    {
        addProducts();
        addRepresentations();
        addRelationships();
        for (std::size_t i = 0; i < m_products.size(); ++i)
            collectRelated(i);
        addOccurrences();
        for (std::size_t i = 0; i < m_products.size(); ++i)
            addItems(i);
        addLooseRepresentations();
        return std::move(m_products);
    }

private:
    using Entity = const Standard_Transient *;
    using Relationship = Handle(StepRepr_ShapeRepresentationRelationship);

    /// A representation of a product, in the coordinates of the product's first one.
    struct Placed {
        Handle(StepRepr_Representation) representation;
        gp_Trsf placement;
    };

    void addProducts()
    {
        for (const auto &entity : m_entities.all<StepBasic_ProductDefinition>()) {
            m_numbers.emplace(entity.get(), m_products.size());
            m_products.emplace_back();
            m_products.back().name = nameOf(*entity);
            m_products.back().entity = entity;
        }
    }

    void addRepresentations()
    {
        for (const auto &entity : m_entities.all<StepShape_ShapeDefinitionRepresentation>()) {
            const Handle(StepRepr_Representation) representation = entity->UsedRepresentation();
            m_isDefined.insert(representation.get());
            const auto shape =
                Handle(StepRepr_PropertyDefinition)::DownCast(entity->Definition().Value());
            if (shape.IsNull() || representation.IsNull())
                continue;
            const auto product = m_numbers.find(shape->Definition().Value().get());
            if (product == m_numbers.end())
                continue;
            m_products[product->second].representations.push_back(representation);
            m_owners.emplace(representation.get(), product->second);
        }
    }

    /// The relationships that place an occurrence, and the others by the two they connect.
    void addRelationships()
    {
        std::unordered_set<Entity> placing;
        for (const auto &entity : m_entities.all<StepShape_ContextDependentShapeRepresentation>()) {
            const auto shape = entity->RepresentedProductRelation();
            const Relationship relationship = entity->RepresentationRelation();
            if (shape.IsNull() || relationship.IsNull())
                continue;
            m_placing.emplace(shape->Definition().Value().get(), relationship);
            placing.insert(relationship.get());
        }
        for (const auto &entity : m_entities.all<StepRepr_ShapeRepresentationRelationship>()) {
            if (placing.count(entity.get()) > 0 || entity->Rep1().IsNull()
                || entity->Rep2().IsNull())
                continue;
            m_related[entity->Rep1().get()].push_back(entity);
            m_related[entity->Rep2().get()].push_back(entity);
        }
    }

    /// A product's representations and those that relationships tie to them, up to what is defined
    /// as another product's.
    void collectRelated(std::size_t product)
    {
        std::vector<Placed> &all = m_placed[product];
        std::unordered_set<Entity> known;
        for (const auto &representation : m_products[product].representations) {
            if (known.insert(representation.get()).second)
                all.push_back({representation, gp_Trsf()});
        }
        const auto add = [&](const Handle(StepRepr_Representation) & representation,
                             const gp_Trsf &placement) {
            if (m_isDefined.count(representation.get()) == 0
                && known.insert(representation.get()).second) {
                m_owners.emplace(representation.get(), product);
                all.push_back({representation, placement});
            }
        };
        for (std::size_t i = 0; i < all.size(); ++i) {
            const Placed from = all[i];
            const auto related = m_related.find(from.representation.get());
            if (related == m_related.end())
                continue;
            for (const Relationship &relationship : related->second) {
                const gp_Trsf placement = m_placements.of(relationship);
                if (relationship->Rep1() == from.representation)
                    add(relationship->Rep2(), from.placement * placement.Inverted());
                else
                    add(relationship->Rep1(), from.placement * placement);
            }
        }
    }

    void addOccurrences()
    {
        for (const auto &entity : m_entities.all<StepRepr_NextAssemblyUsageOccurrence>()) {
            const auto whole = m_numbers.find(entity->RelatingProductDefinition().get());
            const auto part = m_numbers.find(entity->RelatedProductDefinition().get());
            if (whole == m_numbers.end() || part == m_numbers.end())
                continue;
            StepOccurrence occurrence{part->second, entity, gp_Trsf()};
            const auto placing = m_placing.find(entity.get());
            if (placing != m_placing.end())
                occurrence.placement = placementOf(placing->second, whole->second, part->second);
            else
                m_unplaced[whole->second][part->second].push_back(
                    m_products[whole->second].occurrences.size());
            m_products[whole->second].occurrences.push_back(occurrence);
            m_products[part->second].isUsed = true;
        }
    }

    gp_Trsf placementOf(const Relationship &relationship, std::size_t whole, std::size_t part)
    {
        const gp_Trsf placement = m_placements.of(relationship);
        const bool isTurned = owns(whole, relationship->Rep1()) && owns(part, relationship->Rep2());
        return isTurned ? placement.Inverted() : placement;
    }

    bool owns(std::size_t product, const Handle(StepRepr_Representation) & representation) const
    {
        const auto owner = m_owners.find(representation.get());
        return owner != m_owners.end() && owner->second == product;
    }

    void addItems(std::size_t product)
    {
        for (const Placed &placed : m_placed[product])
            addItems(product, placed.representation, placed.placement, 0);
    }

    void addItems(std::size_t product, const Handle(StepRepr_Representation) & representation,
                  const gp_Trsf &placement, int depth)
    {
        if (depth > depthBound)
            throw ConversionError("The mapped items are nested too deeply.");
        m_isReached.insert(representation.get());
        for (const auto &item : itemsOf(representation)) {
            const auto mapped = Handle(StepRepr_MappedItem)::DownCast(item);
            if (mapped.IsNull() && !isShape(item))
                continue;
            checkNodeCount("The file", ++m_itemCount);
            if (mapped.IsNull())
                m_products[product].items.push_back({item, representation, placement});
            else
                addMapped(product, *mapped, representation, placement, depth);
        }
    }

    void addMapped(std::size_t product, const StepRepr_MappedItem &item,
                   const Handle(StepRepr_Representation) & parent, const gp_Trsf &parentPlacement,
                   int depth)
    {
        const Handle(StepRepr_RepresentationMap) map = item.MappingSource();
        if (map.IsNull() || map->MappedRepresentation().IsNull())
            return;
        const gp_Trsf placement = parentPlacement * m_placements.of(item, parent);
        const auto owner = m_owners.find(map->MappedRepresentation().get());
        if (owner == m_owners.end() || owner->second == product)
            addItems(product, map->MappedRepresentation(), placement, depth + 1);
        else
            placeOccurrence(product, owner->second, placement);
    }

    /// A mapped item of a product's representation is the other way to place an occurrence, beside
    /// the usual one or without any.
    void placeOccurrence(std::size_t whole, std::size_t part, const gp_Trsf &placement)
    {
        std::vector<StepOccurrence> &occurrences = m_products[whole].occurrences;
        auto &unplaced = m_unplaced[whole];
        const auto waiting = unplaced.find(part);
        if (waiting != unplaced.end() && !waiting->second.empty()) {
            occurrences[waiting->second.front()].placement = placement;
            waiting->second.erase(waiting->second.begin());
        } else if (waiting == unplaced.end()
                   && std::none_of(occurrences.begin(), occurrences.end(), [part](const auto &o) {
                          return o.entity && o.product == part;
                      })) {
            occurrences.push_back({part, {}, placement});
            m_products[part].isUsed = true;
        }
    }

    /// Shapes that no product has; some programs write such files.
    void addLooseRepresentations()
    {
        for (const auto &representation : m_entities.all<StepShape_ShapeRepresentation>()) {
            if (m_isReached.count(representation.get()) > 0
                || m_isDefined.count(representation.get()) > 0)
                continue;
            const std::vector<Handle(StepRepr_RepresentationItem)> items = itemsOf(representation);
            if (std::none_of(items.begin(), items.end(), isShape))
                continue;
            m_products.emplace_back();
            if (!representation->Name().IsNull())
                m_products.back().name = validUtf8(representation->Name()->ToCString());
            m_products.back().representations.push_back(representation);
            addItems(m_products.size() - 1, representation, gp_Trsf(), 0);
        }
    }

    const StepEntities &m_entities;
    StepPlacements m_placements;
    std::vector<StepProduct> m_products;
    std::unordered_map<Entity, std::size_t> m_numbers; ///< of products, by their definition
    std::unordered_map<Entity, std::size_t> m_owners; ///< the product of a representation
    std::unordered_set<Entity> m_isDefined; ///< representations that are said to be of something
    std::unordered_set<Entity> m_isReached; ///< representations whose items were taken
    std::unordered_map<Entity, Relationship> m_placing; ///< by occurrence
    std::unordered_map<Entity, std::vector<Relationship>> m_related; ///< by representation
    std::unordered_map<std::size_t, std::vector<Placed>> m_placed; ///< by product
    /// By product and the product that occurs in it, the occurrences without a placement.
    std::unordered_map<std::size_t, std::unordered_map<std::size_t, std::vector<std::size_t>>>
        m_unplaced;
    std::uint64_t m_itemCount = 0;
};

StepStructure::StepStructure(const StepEntities &entities)
{
    Builder builder(entities);
    m_products = builder.build();
    m_damagedPlacements = builder.placements().damaged();
    m_nodeCount = countNodes(m_products);
}

} // namespace tnconvert
