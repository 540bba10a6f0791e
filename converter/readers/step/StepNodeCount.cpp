#include "readers/step/StepNodeCount.h"

#include "core/ConversionError.h"
#include "core/Limits.h"

#include <algorithm>

namespace tnconvert {

namespace {

void checkDepth(int depth)
{
    if (depth > depthBound)
        throw ConversionError("The assembly is nested too deeply, in more than "
                              + std::to_string(depthBound) + " levels.");
}

class NodeCounter {
public:
    explicit NodeCounter(const std::vector<StepProduct> &products)
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
            for (const StepOccurrence &occurrence : m_products[product].occurrences) {
                const Tree &below = treeOf(occurrence.product, depth + 1);
                nodes = nodeSum(nodes, below.nodes);
                tree.height = std::max(tree.height, below.height);
            }
            checkDepth(++tree.height);
            tree.nodes = nodes;
            tree.isOpen = false;
        }
        return tree;
    }

    const std::vector<StepProduct> &m_products;
    std::vector<Tree> m_trees;
};

} // namespace

std::uint64_t countNodes(const std::vector<StepProduct> &products)
{
    NodeCounter counter(products);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < products.size(); ++i) {
        // Those that are used are counted as well: a circle has no product that is not.
        const std::uint64_t nodes = counter.count(i);
        if (!products[i].isUsed)
            sum = nodeSum(sum, nodes);
    }
    return sum;
}

} // namespace tnconvert
