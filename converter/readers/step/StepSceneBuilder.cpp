#include "readers/step/StepSceneBuilder.h"

#include "core/Limits.h"
#include "readers/kernel/ForkedShapes.h"
#include "readers/kernel/Kernel.h"
#include "readers/kernel/KernelGuard.h"
#include "readers/step/StepValidation.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

namespace tnconvert {

namespace {

/// Of the time that a part takes, which its triangles take the rest of.
constexpr double transferShare = 0.3;

} // namespace

StepSceneBuilder::StepSceneBuilder(const StepDocument &document, const Settings &settings,
                                   Report &report, double from, double to, std::uint64_t &nodeCount)
    : m_document(document)
    , m_settings(settings)
    , m_report(report)
    , m_from(from)
    , m_to(to)
    , m_nodeCount(nodeCount)
    , m_mesher(settings, report)
    , m_transfer(document.entities(), document.looks())
    , m_losses(document.losses())
    , m_partCount(std::size_t(std::count_if(
          document.structure().products().begin(), document.structure().products().end(),
          [](const StepProduct &product) { return !product.items.empty(); })))
{
}

const StepProduct &StepSceneBuilder::product(std::size_t number) const
{
    return m_document.structure().products()[number];
}

std::vector<Node> StepSceneBuilder::build()
{
    std::vector<Node> nodes = build({}, {});
    StepValidation(m_document, [this](std::size_t number) -> std::optional<TopoDS_Shape> {
        if (m_files.count(number) > 0)
            return std::nullopt;
        return product(number).items.empty() ? TopoDS_Shape() : partOf(number).shape;
    }).check(m_losses);
    return nodes;
}

std::vector<Node> StepSceneBuilder::build(const Style &inherited, const Style &occurrence)
{
    std::vector<Node> nodes;
    for (std::size_t i = 0; i < m_document.structure().products().size(); ++i) {
        // Documents are products as well, without any shape.
        const bool isNothing =
            product(i).representations.empty() && product(i).isEmpty() && m_files.count(i) == 0;
        if (!product(i).isUsed && !isNothing)
            nodes.push_back(productNode(i, inherited, occurrence));
    }
    return nodes;
}

Node StepSceneBuilder::productNode(std::size_t number, const Style &inherited,
                                   const Style &occurrence)
{
    checkNodeCount("The assembly", ++m_nodeCount);
    Node node;
    node.name = product(number).name;
    Style style = inherited;
    style.overlay(lookOf(product(number)));
    style.overlay(occurrence);
    node.visible = style.visible;
    node.layer = layerOf(product(number));
    if (m_settings.importMetadata)
        node.metadata = metadataOf(product(number));
    addMeshes(number, style, node);
    addOccurrences(number, style, node);
    const auto file = m_files.find(number);
    if (file != m_files.end())
        addFile(*file->second, inherited, occurrence, node);
    return node;
}

/// A product with nothing of its own is what its file has.
void StepSceneBuilder::addFile(StepSceneBuilder &file, const Style &inherited,
                               const Style &occurrence, Node &node) const
{
    std::vector<Node> roots = file.build(inherited, occurrence);
    if (roots.size() == 1 && !node.mesh && node.children.empty()) {
        const std::string name = std::move(node.name);
        node = std::move(roots.front());
        if (!name.empty())
            node.name = name;
        return;
    }
    std::move(roots.begin(), roots.end(), std::back_inserter(node.children));
}

void StepSceneBuilder::addMeshes(std::size_t number, const Style &style, Node &node)
{
    const Meshes meshes = meshesOf(number, style);
    const bool isAlone = product(number).occurrences.empty() && m_files.count(number) == 0;
    if (meshes.size() == 1 && isAlone) {
        node.mesh = meshes.front();
        return;
    }
    for (const std::shared_ptr<const Mesh> &mesh : meshes) {
        node.children.emplace_back();
        node.children.back().name = node.name + " " + std::to_string(node.children.size());
        node.children.back().mesh = mesh;
    }
}

void StepSceneBuilder::addOccurrences(std::size_t number, const Style &style, Node &node)
{
    for (const StepOccurrence &occurrence : product(number).occurrences) {
        Style stated;
        for (const Handle(Standard_Transient) & entity : occurrence.entities) {
            if (const Style *look = m_document.looks().find(entity))
                stated.overlay(*look);
        }
        node.children.push_back(productNode(occurrence.product, style, stated));
        Node &child = node.children.back();
        child.transform = transformOf(occurrence.placement);
        if (child.name.empty())
            child.name = node.name;
    }
}

StepSceneBuilder::Meshes StepSceneBuilder::meshesOf(std::size_t number, const Style &style)
{
    const bool isHidden =
        !style.visible && !m_settings.importInvisibleSurfaces && !m_settings.importInvisibleCurves;
    if (product(number).items.empty())
        return {};
    m_isFiltered = m_isFiltered || isHidden;
    if (isHidden)
        return {};
    const auto [known, isNew] = m_meshes.try_emplace(std::to_string(number) + "|" + style.key());
    if (isNew)
        known->second = meshed(partOf(number), style, product(number));
    return known->second;
}

const StepPart &StepSceneBuilder::partOf(std::size_t number)
{
    const auto known = m_parts.find(number);
    if (known != m_parts.end())
        return known->second;
    // The repairs that the settings ask for take all the more for a shape that is not healed.
    const bool isRepaired = m_settings.useStitching || m_settings.fixSurfaceOrientation;
    StepPart part = made(number, isRepaired ? Healing::Full : m_settings.healing);
    if (!part.shape.IsNull() && !isTessellated(part.shape) && part.healing == Healing::Needed) {
        part = made(number, Healing::Full);
        isTessellated(part.shape);
    }
    m_losses.add(part.losses);
    return m_parts.emplace(number, std::move(part)).first->second;
}

StepPart StepSceneBuilder::made(std::size_t number, Healing healing)
{
    const Handle(KernelProgress) progress = progressOfPart(0, transferShare, "Transferring");
    return m_transfer.transfer(product(number), healing, progress->Start());
}

/// Tessellates the shape of the part that is being made.
bool StepSceneBuilder::isTessellated(const TopoDS_Shape &shape)
{
    const Handle(KernelProgress) progress = progressOfPart(transferShare, 1, "Tessellating");
    bool isFilled = false;
    return KernelGuard::run([&] { isFilled = m_mesher.tessellate(shape, progress->Start()); })
        && isFilled;
}

/// From one share of the next part to another one.
Handle(KernelProgress) StepSceneBuilder::progressOfPart(double from, double to,
                                                        const std::string &message) const
{
    const double share = (m_to - m_from) / double(std::max<std::size_t>(m_partCount, 1));
    const double start = m_from + share * double(m_parts.size());
    return new KernelProgress(m_report, start + share * from, start + share * to, message);
}

StepSceneBuilder::Meshes StepSceneBuilder::meshed(const StepPart &part, const Style &style,
                                                  const StepProduct &product)
{
    if (part.shape.IsNull())
        return {};
    const auto look = [&](const TopoDS_Shape &piece) {
        return materialOf(piece, style, part.subStyles, m_settings);
    };
    Meshes meshes;
    const auto mesh = [&](const TopoDS_Shape &shape) {
        return KernelGuard::run([&] { meshes = m_mesher.meshes(shape, look, product.name); });
    };
    if (!mesh(part.shape) && !mesh(withoutBadFaces(part.shape, product)))
        m_losses.add(StepLosses::Kind::Shape, "of \"" + product.name + "\"");
    return meshes;
}

/// The faces of a shape that the kernel cannot tessellate as a whole, but for those over which it
/// crashes.
TopoDS_Shape StepSceneBuilder::withoutBadFaces(const TopoDS_Shape &shape,
                                               const StepProduct &product)
{
    std::vector<TopoDS_Shape> faces;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next())
        faces.push_back(face.Current());
    BRep_Builder builder;
    TopoDS_Compound survived;
    builder.MakeCompound(survived);
    const std::vector<TopoDS_Shape> tried = makeForked(faces.size(), [&](std::size_t i) {
        const BRepMesh_IncrementalMesh mesh(faces[i], m_settings.chordDeviation, false,
                                            m_settings.normalTolerance * M_PI / 180);
        return TopoDS_Shape(survived);
    });
    TopoDS_Compound sound;
    builder.MakeCompound(sound);
    for (TopExp_Explorer edge(shape, TopAbs_EDGE, TopAbs_FACE); edge.More(); edge.Next())
        builder.Add(sound, edge.Current());
    for (std::size_t i = 0; i < faces.size(); ++i) {
        if (tried[i].IsNull())
            m_losses.add(StepLosses::Kind::Face, "of \"" + product.name + "\"");
        else
            builder.Add(sound, faces[i]);
    }
    return sound;
}

Style StepSceneBuilder::lookOf(const StepProduct &product) const
{
    Style style;
    const auto overlay = [&](const Handle(Standard_Transient) & entity) {
        if (const Style *look = m_document.looks().find(entity))
            style.overlay(*look);
    };
    for (const Handle(StepRepr_Representation) & representation : product.representations)
        overlay(representation);
    for (const StepItem &item : product.items)
        overlay(item.representation);
    if (product.items.size() == 1)
        overlay(product.items.front().entity);
    return style;
}

Metadata StepSceneBuilder::metadataOf(const StepProduct &product) const
{
    Metadata metadata;
    for (const Handle(Standard_Transient) & subject : product.subjects()) {
        if (const auto *properties = m_document.properties().find(subject))
            metadata.insert(metadata.end(), properties->metadata.begin(),
                            properties->metadata.end());
    }
    return metadata;
}

/// The layer of the product's representation, or of its items.
std::string StepSceneBuilder::layerOf(const StepProduct &product) const
{
    std::string layer;
    const auto look = [&](const Handle(Standard_Transient) & entity) {
        if (layer.empty())
            layer = m_document.looks().layerOf(entity);
    };
    for (const Handle(StepRepr_Representation) & representation : product.representations)
        look(representation);
    for (const StepItem &item : product.items) {
        look(item.representation);
        look(item.entity);
    }
    return layer;
}

} // namespace tnconvert
