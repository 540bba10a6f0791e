#pragma once

#include <StepData_StepModel.hxx>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tnconvert {

/// The products of a Step file and what they consist of, as its entities state it. Unlike the
/// kernel's transfer this makes no shapes: it costs one pass over the entities.
class StepStructure {
public:
    /// Occurrences whose product is missing are left out.
    explicit StepStructure(const Handle(StepData_StepModel) & model);

    /// How many nodes the file's tree would have; a product used twice counts twice, with all below
    /// it, and the count ends at 10^18. Linear in the number of occurrences. Throws
    /// ConversionError when a product contains itself or is nested too deeply.
    std::uint64_t nodeCount() const;

private:
    struct Product {
        std::string name;
        std::vector<std::size_t> children; ///< the product of each occurrence
        bool isUsed = false; ///< occurs within another one
    };
    class NodeCounter;

    std::vector<Product> m_products;
};

} // namespace tnconvert
