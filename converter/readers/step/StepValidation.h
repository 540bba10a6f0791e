#pragma once

#include "readers/step/StepDocument.h"
#include "readers/step/StepLosses.h"
#include "readers/step/StepProperties.h"

#include <TopoDS_Shape.hxx>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

namespace tnconvert {

/// Compares the area, volume and centroid that a file states for its products with those of the
/// shapes that were read. Files without such properties cost nothing.
class StepValidation {
public:
    /// The share by which they may differ: programs integrate with different precision, and one
    /// small face of a part is more.
    static constexpr double tolerance = 1e-3;

    /// @p shapeOf gives a product's own shape, null when it has none; nothing when the shape is in
    /// a file of its own, which leaves out the assemblies above.
    using ShapeOf = std::function<std::optional<TopoDS_Shape>(std::size_t product)>;
    StepValidation(const StepDocument &document, ShapeOf shapeOf);

    /// Adds the products that differ.
    void check(StepLosses &losses);

private:
    /// What can be added up over the parts of an assembly.
    struct Mass {
        double area = 0;
        double solidArea = 0; ///< without surfaces that bound no solid
        double volume = 0;
        gp_XYZ moment; ///< centroid times volume
        bool isKnown = true;
    };

    std::string differenceOf(std::size_t product, const StepProperties::Measured &stated);
    const Mass &massOf(std::size_t product);
    Mass measured(std::size_t product);

    const StepDocument &m_document;
    const ShapeOf m_shapeOf;
    std::unordered_map<std::size_t, Mass> m_masses;
};

} // namespace tnconvert
