#include "readers/kernel/DocumentSceneBuilder.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "readers/kernel/Kernel.h"
#include "readers/kernel/KernelGuard.h"
#include "readers/kernel/SubStyles.h"

#include <TColStd_HSequenceOfExtendedString.hxx>
#include <TCollection_AsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDF_Tool.hxx>
#include <TDataStd_Name.hxx>
#include <TopoDS_Iterator.hxx>
#include <XCAFDoc_DocumentTool.hxx>

#include <algorithm>

namespace tnconvert {

namespace {

std::string nameOf(const TDF_Label &label)
{
    Handle(TDataStd_Name) name;
    return label.FindAttribute(TDataStd_Name::GetID(), name) ? kernelText(name->Get())
                                                             : std::string();
}

void overlayColors(XCAFDoc_ColorTool &colors, const TDF_Label &label, Style &style)
{
    Quantity_ColorRGBA color;
    if (colors.GetColor(label, XCAFDoc_ColorGen, color)) {
        style.surface = color;
        style.curve = color;
    }
    if (colors.GetColor(label, XCAFDoc_ColorSurf, color))
        style.surface = color;
    if (colors.GetColor(label, XCAFDoc_ColorCurv, color))
        style.curve = color;
}

} // namespace

DocumentSceneBuilder::DocumentSceneBuilder(const Handle(TDocStd_Document) & document,
                                           const Settings &settings, Report &report, double from,
                                           double to)
    : m_shapes(XCAFDoc_DocumentTool::ShapeTool(document->Main()))
    , m_colors(XCAFDoc_DocumentTool::ColorTool(document->Main()))
    , m_layers(XCAFDoc_DocumentTool::LayerTool(document->Main()))
    , m_settings(settings)
    , m_report(report)
    , m_from(from)
    , m_to(to)
    , m_mesher(settings, report)
{
}

std::vector<Node> DocumentSceneBuilder::build()
{
    TDF_LabelSequence roots;
    m_shapes->GetFreeShapes(roots);
    // The files of an assembly may each stay below the bound and be too many together.
    std::uint64_t count = 0;
    for (const TDF_Label &root : roots)
        count = nodeSum(count, countNodes(root, 0));
    checkNodeCount("The assembly", count);
    std::vector<Node> nodes;
    for (const TDF_Label &root : roots)
        nodes.push_back(labelNode(root, Style(), 0));
    return nodes;
}

FaceTally DocumentSceneBuilder::faces() const
{
    FaceTally tally = m_mesher.faces();
    tally.isFiltered = tally.isFiltered || m_isFiltered;
    return tally;
}

std::uint64_t DocumentSceneBuilder::countNodes(const TDF_Label &label, int depth)
{
    TDF_Label part = label;
    if (XCAFDoc_ShapeTool::IsReference(label))
        XCAFDoc_ShapeTool::GetReferredShape(label, part);
    if (const std::uint64_t *known = m_nodeCounts.Seek(part))
        return *known;
    std::uint64_t count = 1;
    if (XCAFDoc_ShapeTool::IsAssembly(part) && depth <= depthBound) {
        TDF_LabelSequence components;
        XCAFDoc_ShapeTool::GetComponents(part, components);
        for (const TDF_Label &component : components)
            count = nodeSum(count, countNodes(component, depth + 1));
    }
    m_nodeCounts.Bind(part, count);
    return count;
}

void DocumentSceneBuilder::overlay(const TDF_Label &label, Style &style) const
{
    overlayColors(*m_colors, label, style);
    if (!m_colors->IsVisible(label))
        style.visible = false;
    TDF_LabelSequence layers;
    m_layers->GetLayers(label, layers);
    for (const TDF_Label &layer : layers) {
        if (!m_layers->IsVisible(layer))
            style.visible = false;
    }
}

std::string DocumentSceneBuilder::layerOf(const TDF_Label &label) const
{
    TDF_LabelSequence layers;
    m_layers->GetLayers(label, layers);
    TCollection_ExtendedString name;
    if (layers.IsEmpty() || !m_layers->GetLayer(layers.First(), name))
        return {};
    return kernelText(name);
}

Node DocumentSceneBuilder::labelNode(const TDF_Label &label, Style style, int depth)
{
    if (depth > depthBound)
        throw ConversionError("The assembly is nested too deeply; it seems to contain itself.");
    Node node;
    TDF_Label part = label;
    if (XCAFDoc_ShapeTool::IsReference(label)) {
        XCAFDoc_ShapeTool::GetReferredShape(label, part);
        node.transform = transformOf(XCAFDoc_ShapeTool::GetLocation(label).Transformation());
        overlay(part, style);
    }
    // What the instance states goes on top of the part's own look.
    overlay(label, style);
    // The names of instances are mostly numbers that the exporting program counted up.
    node.name = nameOf(part);
    if (node.name.empty())
        node.name = nameOf(label);
    node.layer = layerOf(label);
    if (node.layer.empty())
        node.layer = layerOf(part);
    node.visible = style.visible;

    if (XCAFDoc_ShapeTool::IsAssembly(part)) {
        TDF_LabelSequence components;
        XCAFDoc_ShapeTool::GetComponents(part, components);
        for (const TDF_Label &component : components)
            node.children.push_back(labelNode(component, style, depth + 1));
        return node;
    }
    const std::vector<std::shared_ptr<const Mesh>> meshes = partMeshes(part, style, node.name);
    if (meshes.size() == 1) {
        node.mesh = meshes[0];
        return node;
    }
    for (const std::shared_ptr<const Mesh> &mesh : meshes) {
        node.children.emplace_back();
        node.children.back().name = node.name + " " + std::to_string(node.children.size());
        node.children.back().mesh = mesh;
    }
    return node;
}

std::vector<std::shared_ptr<const Mesh>>
DocumentSceneBuilder::partMeshes(const TDF_Label &part, const Style &style, const std::string &name)
{
    TCollection_AsciiString entry;
    TDF_Tool::Entry(part, entry);
    const std::string key = std::string(entry.ToCString()) + "|" + style.key();
    const auto [known, isNew] = m_known.try_emplace(key);
    if (!isNew)
        return known->second;

    if (!style.visible && !m_settings.importInvisibleSurfaces
        && !m_settings.importInvisibleCurves) {
        m_isFiltered = true;
        return {};
    }
    m_report.progress(
        m_from + (m_to - m_from) * std::min(1., double(m_known.size()) / m_nodeCounts.Extent()),
        "Tessellating");
    const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(part);
    if (shape.IsNull())
        return {};

    SubStyles subStyles;
    TDF_LabelSequence subShapes;
    XCAFDoc_ShapeTool::GetSubShapes(part, subShapes);
    for (const TDF_Label &sub : subShapes) {
        Style subStyle = style;
        overlayColors(*m_colors, sub, subStyle);
        if (!m_colors->IsVisible(sub))
            subStyle.visible = false;
        subStyles.add(XCAFDoc_ShapeTool::GetShape(sub), subStyle);
    }
    const auto look = [&](const TopoDS_Shape &piece) {
        return materialOf(piece, style, subStyles, m_settings);
    };
    std::vector<std::shared_ptr<const Mesh>> &meshes = known->second;
    if (!KernelGuard::run([&] { meshes = m_mesher.meshes(shape, look, name); }))
        m_lostParts.push_back(name);
    return meshes;
}

} // namespace tnconvert
