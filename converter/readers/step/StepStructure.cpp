#include "readers/step/StepStructure.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "core/Text.h"

#include <StepBasic_Product.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepBasic_ProductDefinitionFormation.hxx>
#include <StepRepr_NextAssemblyUsageOccurrence.hxx>
#include <TCollection_HAsciiString.hxx>

#include <algorithm>
#include <unordered_map>

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

} // namespace

StepStructure::StepStructure(const Handle(StepData_StepModel) & model)
{
    std::unordered_map<const Standard_Transient *, std::size_t> indexOf;
    std::vector<Handle(StepRepr_NextAssemblyUsageOccurrence)> occurrences;
    for (int i = 1; i <= model->NbEntities(); ++i) {
        const Handle(Standard_Transient) entity = model->Value(i);
        if (const auto definition = Handle(StepBasic_ProductDefinition)::DownCast(entity)) {
            indexOf.emplace(definition.get(), m_products.size());
            m_products.push_back({nameOf(*definition), {}, false});
        } else if (auto occurrence =
                       Handle(StepRepr_NextAssemblyUsageOccurrence)::DownCast(entity)) {
            occurrences.push_back(std::move(occurrence));
        }
    }
    for (const Handle(StepRepr_NextAssemblyUsageOccurrence) & occurrence : occurrences) {
        const auto whole = indexOf.find(occurrence->RelatingProductDefinition().get());
        const auto part = indexOf.find(occurrence->RelatedProductDefinition().get());
        if (whole == indexOf.end() || part == indexOf.end())
            continue;
        m_products[whole->second].children.push_back(part->second);
        m_products[part->second].isUsed = true;
    }
}

/// Counts each product once, however often it occurs.
class StepStructure::NodeCounter {
public:
    explicit NodeCounter(const std::vector<Product> &products)
        : m_products(products)
        , m_trees(products.size())
    {
    }

    /// The nodes of the product's tree, itself included.
    std::uint64_t count(std::size_t product) { return treeOf(product, 1).nodes; }

private:
    struct Tree {
        std::uint64_t nodes = 0; ///< 0: not counted yet
        int height = 0;
        bool isOpen = false; ///< the products below it are being counted
    };

    const Tree &treeOf(std::size_t product, int depth)
    {
        Tree &tree = m_trees[product];
        if (tree.isOpen)
            throw ConversionError("The product \"" + m_products[product].name
                                  + "\" contains itself.");
        if (tree.nodes == 0) {
            tree.isOpen = true;
            checkDepth(depth);
            std::uint64_t nodes = 1;
            for (const std::size_t child : m_products[product].children) {
                const Tree &below = treeOf(child, depth + 1);
                nodes = nodeSum(nodes, below.nodes);
                tree.height = std::max(tree.height, below.height);
            }
            checkDepth(++tree.height);
            tree.nodes = nodes;
            tree.isOpen = false;
        }
        return tree;
    }

    static void checkDepth(int depth)
    {
        if (depth > depthBound)
            throw ConversionError("The assembly is nested too deeply, in more than "
                                  + std::to_string(depthBound) + " levels.");
    }

    const std::vector<Product> &m_products;
    std::vector<Tree> m_trees;
};

std::uint64_t StepStructure::nodeCount() const
{
    NodeCounter counter(m_products);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < m_products.size(); ++i) {
        // Those that are used are counted as well: a circle has no product that is not.
        const std::uint64_t nodes = counter.count(i);
        if (!m_products[i].isUsed)
            sum = nodeSum(sum, nodes);
    }
    return sum;
}

} // namespace tnconvert
