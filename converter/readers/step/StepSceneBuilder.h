#pragma once

#include "readers/kernel/Kernel.h"
#include "readers/kernel/ShapeMesher.h"
#include "readers/step/StepDocument.h"
#include "readers/step/StepLosses.h"
#include "readers/step/StepPartTransfer.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tnconvert {

/// Turns a Step document into nodes. Each product is made once, and shares its meshes among all of
/// its occurrences that look the same.
class StepSceneBuilder {
public:
    /// Progress is reported between @p from and @p to percent. All must outlive the builder;
    /// @p nodeCount is counted up for all builders of a scene.
    StepSceneBuilder(const StepDocument &document, const Settings &settings, Report &report,
                     double from, double to, std::uint64_t &nodeCount);

    /// Says that a product's shape is in another file.
    void setPart(std::size_t product, StepSceneBuilder &part) { m_files[product] = &part; }

    /// The products that are within no other one, compared with what the file states of them.
    /// Throws ConversionError when there are more nodes than a scene may have.
    std::vector<Node> build();

    /// What got lost of the document so far.
    const StepLosses &losses() const { return m_losses; }
    /// What became of the faces so far.
    const FaceTally &faces() const { return m_mesher.faces(); }
    /// Whether the settings kept hidden parts out.
    bool isFiltered() const { return m_isFiltered; }

private:
    using Meshes = std::vector<std::shared_ptr<const Mesh>>;

    /// @p inherited is what the assemblies above state, @p occurrence what the occurrence does: the
    /// one gives way to the product's own look, the other does not.
    std::vector<Node> build(const Style &inherited, const Style &occurrence);
    Node productNode(std::size_t number, const Style &inherited, const Style &occurrence);
    void addFile(StepSceneBuilder &file, const Style &inherited, const Style &occurrence,
                 Node &node) const;
    void addMeshes(std::size_t number, const Style &style, Node &node);
    void addOccurrences(std::size_t number, const Style &style, Node &node);
    Meshes meshesOf(std::size_t number, const Style &style);
    Meshes meshed(const StepPart &part, const Style &style, const StepProduct &product);
    const StepPart &partOf(std::size_t number);
    StepPart made(std::size_t number, Healing healing);
    bool isTessellated(const TopoDS_Shape &shape);
    Handle(KernelProgress) progressOfPart(double from, double to, const std::string &message) const;
    TopoDS_Shape withoutBadFaces(const TopoDS_Shape &shape, const StepProduct &product);
    const StepProduct &product(std::size_t number) const;
    Style lookOf(const StepProduct &product) const;
    Metadata metadataOf(const StepProduct &product) const;
    std::string layerOf(const StepProduct &product) const;

    const StepDocument &m_document;
    const Settings &m_settings;
    Report &m_report;
    const double m_from;
    const double m_to;
    std::uint64_t &m_nodeCount;
    ShapeMesher m_mesher;
    const StepPartTransfer m_transfer;
    StepLosses m_losses;
    bool m_isFiltered = false;
    std::unordered_map<std::size_t, StepSceneBuilder *> m_files; ///< by product
    std::unordered_map<std::size_t, StepPart> m_parts; ///< by product
    std::map<std::string, Meshes> m_meshes; ///< by product and look
    std::size_t m_partCount = 0; ///< products with items
};

} // namespace tnconvert
