#include "readers/step/StepStructure.h"

#include "core/Text.h"
#include "readers/step/StepNodeCount.h"

#include <StepBasic_Product.hxx>
#include <StepBasic_ProductDefinitionFormation.hxx>
#include <StepRepr_HArray1OfRepresentationItem.hxx>
#include <StepRepr_MappedItem.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_PropertyDefinitionRepresentation.hxx>
#include <StepRepr_RepresentationMap.hxx>
#include <StepRepr_ShapeAspect.hxx>
#include <StepRepr_ShapeRepresentationRelationship.hxx>
#include <StepShape_Block.hxx>
#include <StepShape_BooleanResult.hxx>
#include <StepShape_ConnectedFaceSet.hxx>
#include <StepShape_ContextDependentShapeRepresentation.hxx>
#include <StepShape_EdgeBasedWireframeModel.hxx>
#include <StepShape_Face.hxx>
#include <StepShape_FaceBasedSurfaceModel.hxx>
#include <StepShape_GeometricSet.hxx>
#include <StepShape_RightAngularWedge.hxx>
#include <StepShape_RightCircularCone.hxx>
#include <StepShape_RightCircularCylinder.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <StepShape_ShapeRepresentation.hxx>
#include <StepShape_ShellBasedSurfaceModel.hxx>
#include <StepShape_SolidModel.hxx>
#include <StepShape_Sphere.hxx>
#include <StepShape_Torus.hxx>
#include <TCollection_HAsciiString.hxx>

#include <algorithm>
#include <deque>
#include <map>
#include <set>
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

/// What has a shape of its own, be it one that the kernel can make or not.
bool isShape(const Handle(StepRepr_RepresentationItem) & item)
{
    for (const Handle(Standard_Type) & type :
         {STANDARD_TYPE(StepShape_SolidModel), STANDARD_TYPE(StepShape_ShellBasedSurfaceModel),
          STANDARD_TYPE(StepShape_FaceBasedSurfaceModel), STANDARD_TYPE(StepShape_BooleanResult),
          STANDARD_TYPE(StepShape_Face), STANDARD_TYPE(StepShape_GeometricSet),
          STANDARD_TYPE(StepShape_EdgeBasedWireframeModel),
          STANDARD_TYPE(StepShape_ConnectedFaceSet), STANDARD_TYPE(StepShape_Block),
          STANDARD_TYPE(StepShape_RightAngularWedge), STANDARD_TYPE(StepShape_Sphere),
          STANDARD_TYPE(StepShape_Torus), STANDARD_TYPE(StepShape_RightCircularCone),
          STANDARD_TYPE(StepShape_RightCircularCylinder)}) {
        if (item->IsKind(type))
            return true;
    }
    return false;
}

bool isBody(const Handle(StepRepr_RepresentationItem) & item)
{
    return isShape(item) && !item->IsKind(STANDARD_TYPE(StepShape_Face))
        && !item->IsKind(STANDARD_TYPE(StepShape_ConnectedFaceSet));
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

    std::vector<StepProduct> build()
    {
        addProducts();
        addRepresentations();
        addRelationships();
        for (std::size_t i = 0; i < m_products.size(); ++i)
            collectRelated(i);
        addOccurrences();
        addAllItems();
        addAspects();
        addLooseRepresentations();
        addAllItems();
        return std::move(m_products);
    }

    /// After build().
    std::vector<Handle(Standard_Transient)> lostPlaces(const std::vector<StepProduct> &products)
    {
        std::vector<Handle(Standard_Transient)> lost = m_placements.damaged();
        lost.insert(lost.end(), m_shapeless.begin(), m_shapeless.end());
        // Files that place nothing at all mean it so.
        if (m_placing.empty() && !m_isMapping)
            return lost;
        for (const auto &[pair, waiting] : m_unplaced) {
            for (const std::size_t number : waiting) {
                if (!products[pair.second].isEmpty())
                    lost.push_back(products[pair.first].occurrences[number].entities.front());
            }
        }
        return lost;
    }

private:
    using Entity = const Standard_Transient *;
    using Relationship = Handle(StepRepr_ShapeRepresentationRelationship);
    using Pair = std::pair<std::size_t, std::size_t>; ///< a product and one that occurs in it

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
        for (const auto &entity : m_entities.all<StepRepr_PropertyDefinitionRepresentation>()) {
            const Handle(StepRepr_Representation) representation = entity->UsedRepresentation();
            m_isDefined.insert(representation.get());
            const auto shape =
                Handle(StepRepr_PropertyDefinition)::DownCast(entity->Definition().Value());
            if (shape.IsNull() || representation.IsNull()
                || !entity->IsKind(STANDARD_TYPE(StepShape_ShapeDefinitionRepresentation)))
                continue;
            const Handle(Standard_Transient) subject = shape->Definition().Value();
            const auto product = m_numbers.find(subject.get());
            if (product != m_numbers.end())
                own(product->second, representation, gp_Trsf());
            else if (const auto aspect = Handle(StepRepr_ShapeAspect)::DownCast(subject))
                m_aspects.emplace_back(aspect, representation);
        }
        for (StepProduct &product : m_products) {
            for (const Placed &placed : m_placed[std::size_t(&product - m_products.data())])
                product.representations.push_back(placed.representation);
        }
    }

    void own(std::size_t product, const Handle(StepRepr_Representation) & representation,
             const gp_Trsf &placement)
    {
        if (!m_places.emplace(std::make_pair(product, representation.get()), placement).second)
            return;
        m_owners.emplace(representation.get(), product);
        m_placed[product].push_back({representation, placement});
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

    /// What relationships tie to a product's representations, up to what is defined as something
    /// else's.
    void collectRelated(std::size_t product)
    {
        for (std::size_t i = 0; i < m_placed[product].size(); ++i) {
            const Placed from = m_placed[product][i];
            const auto related = m_related.find(from.representation.get());
            if (related == m_related.end())
                continue;
            for (const Relationship &relationship : related->second) {
                const bool isFirst = relationship->Rep1() == from.representation;
                const Handle(StepRepr_Representation) other =
                    isFirst ? relationship->Rep2() : relationship->Rep1();
                if (m_isDefined.count(other.get()) > 0)
                    continue;
                const gp_Trsf placement = m_placements.of(relationship);
                own(product, other, from.placement * (isFirst ? placement.Inverted() : placement));
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
            const Pair pair(whole->second, part->second);
            StepOccurrence occurrence{part->second, gp_Trsf(), {}};
            occurrence.entities.emplace_back(entity);
            const auto placing = m_placing.find(entity.get());
            if (placing == m_placing.end()) {
                m_unplaced[pair].push_back(m_products[whole->second].occurrences.size());
            } else {
                occurrence.placement = placementOf(placing->second, pair);
                m_isPlaced.insert(pair);
                // It places a shape, and the part has lost what says that the shape is its own.
                if (m_placed[part->second].empty())
                    m_shapeless.emplace_back(entity);
            }
            m_products[whole->second].occurrences.push_back(occurrence);
            m_products[part->second].isUsed = true;
        }
    }

    /// The two may be given the wrong way round, and each stand elsewhere in its product.
    gp_Trsf placementOf(const Relationship &relationship, const Pair &pair)
    {
        const auto place = [this](std::size_t product, const auto &representation) {
            const auto found = m_places.find(std::make_pair(product, representation.get()));
            return found == m_places.end() ? nullptr : &found->second;
        };
        Handle(StepRepr_Representation) from = relationship->Rep1();
        Handle(StepRepr_Representation) to = relationship->Rep2();
        gp_Trsf placement = m_placements.of(relationship);
        if (place(pair.first, from) && place(pair.second, to)) {
            std::swap(from, to);
            placement.Invert();
        }
        if (const gp_Trsf *inPart = place(pair.second, from))
            placement = placement * inPart->Inverted();
        if (const gp_Trsf *inWhole = place(pair.first, to))
            placement = *inWhole * placement;
        return placement;
    }

    /// Of all products whose items were not looked at yet; mapped items bring further ones.
    void addAllItems()
    {
        for (; m_next < m_products.size(); ++m_next) {
            // A copy: what is mapped adds to the table.
            const std::vector<Placed> representations = m_placed[m_next];
            for (const Placed &placed : representations)
                addItems(m_next, placed);
        }
    }

    void addItems(std::size_t product, const Placed &placed)
    {
        for (const auto &item : itemsOf(placed.representation)) {
            if (const auto mapped = Handle(StepRepr_MappedItem)::DownCast(item)) {
                addMapped(product, mapped, placed);
            } else if (isShape(item)) {
                m_products[product].items.push_back(
                    {item, placed.representation, placed.placement});
                m_isTaken.insert(item.get());
            }
        }
    }

    void addMapped(std::size_t product, const Handle(StepRepr_MappedItem) & item,
                   const Placed &parent)
    {
        const Handle(StepRepr_RepresentationMap) map = item->MappingSource();
        if (map.IsNull() || map->MappedRepresentation().IsNull())
            return;
        m_isMapping = true;
        const auto [owner, isNew] =
            m_owners.emplace(map->MappedRepresentation().get(), m_products.size());
        if (isNew)
            addUnowned(map->MappedRepresentation());
        placeOccurrence(Pair(product, owner->second), item,
                        parent.placement * m_placements.of(item, parent.representation));
    }

    /// A mapped item is the other way to place an occurrence, beside the usual one or without any.
    void placeOccurrence(const Pair &pair, const Handle(StepRepr_MappedItem) & item,
                         const gp_Trsf &placement)
    {
        std::vector<StepOccurrence> &occurrences = m_products[pair.first].occurrences;
        const auto unplaced = m_unplaced.find(pair);
        if (unplaced != m_unplaced.end() && !unplaced->second.empty()) {
            StepOccurrence &waiting = occurrences[unplaced->second.front()];
            unplaced->second.pop_front();
            waiting.placement = placement;
            waiting.entities.emplace_back(item);
        } else if (m_isPlaced.count(pair) == 0) {
            occurrences.push_back({pair.second, placement, {}});
            occurrences.back().entities.emplace_back(item);
            m_products[pair.second].isUsed = true;
        }
    }

    std::size_t addUnowned(const Handle(StepRepr_Representation) & representation)
    {
        m_products.emplace_back();
        if (!representation->Name().IsNull())
            m_products.back().name = validUtf8(representation->Name()->ToCString());
        m_products.back().representations.push_back(representation);
        own(m_products.size() - 1, representation, gp_Trsf());
        collectRelated(m_products.size() - 1);
        return m_products.size() - 1;
    }

    /// Some programs tie bodies to their product only by an aspect of its shape.
    void addAspects()
    {
        for (const auto &[aspect, representation] : m_aspects) {
            const Handle(StepRepr_ProductDefinitionShape) shape = aspect->OfShape();
            const auto product = shape.IsNull() ? m_numbers.end()
                                                : m_numbers.find(shape->Definition().Value().get());
            if (product == m_numbers.end())
                continue;
            for (const auto &item : itemsOf(representation)) {
                if (isBody(item) && m_isTaken.insert(item.get()).second)
                    m_products[product->second].items.push_back({item, representation, gp_Trsf()});
            }
        }
    }

    /// Shapes that no product has; some programs write such files.
    void addLooseRepresentations()
    {
        std::unordered_set<Entity> mapped;
        for (const auto &map : m_entities.all<StepRepr_RepresentationMap>())
            mapped.insert(map->MappedRepresentation().get());
        for (const auto &representation : m_entities.all<StepShape_ShapeRepresentation>()) {
            if (m_owners.count(representation.get()) > 0 || mapped.count(representation.get()) > 0
                || m_isDefined.count(representation.get()) > 0)
                continue;
            const std::vector<Handle(StepRepr_RepresentationItem)> items = itemsOf(representation);
            if (std::any_of(items.begin(), items.end(), [](const auto &item) {
                    return isShape(item) || item->IsKind(STANDARD_TYPE(StepRepr_MappedItem));
                }))
                addUnowned(representation);
        }
    }

    const StepEntities &m_entities;
    StepPlacements m_placements;
    std::vector<StepProduct> m_products;
    std::size_t m_next = 0; ///< product whose items are not known yet
    std::unordered_map<Entity, std::size_t> m_numbers; ///< of products, by their definition
    std::unordered_map<Entity, std::size_t> m_owners; ///< the first product of a representation
    std::unordered_set<Entity> m_isDefined; ///< representations that are said to be of something
    std::unordered_set<Entity> m_isTaken; ///< items that are some product's
    std::vector<std::pair<Handle(StepRepr_ShapeAspect), Handle(StepRepr_Representation)>> m_aspects;
    std::unordered_map<Entity, Relationship> m_placing; ///< by occurrence
    std::unordered_map<Entity, std::vector<Relationship>> m_related; ///< by representation
    std::unordered_map<std::size_t, std::vector<Placed>> m_placed; ///< by product
    std::map<std::pair<std::size_t, Entity>, gp_Trsf> m_places; ///< the same by representation
    std::set<Pair> m_isPlaced; ///< by a relationship
    std::map<Pair, std::deque<std::size_t>> m_unplaced; ///< occurrences, by their number
    std::vector<Handle(Standard_Transient)> m_shapeless; ///< occurrences of parts without a shape
    bool m_isMapping = false; ///< there are mapped items
};

StepStructure::StepStructure(const StepEntities &entities)
{
    Builder builder(entities);
    m_products = builder.build();
    m_lostPlaces = builder.lostPlaces(m_products);
    m_nodeCount = countNodes(m_products);
}

} // namespace tnconvert
