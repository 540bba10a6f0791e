#pragma once

#include "readers/kernel/ShapeMesher.h"
#include "readers/kernel/Style.h"

#include <NCollection_DataMap.hxx>
#include <TDF_Label.hxx>
#include <TDF_LabelMapHasher.hxx>
#include <TDocStd_Document.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_LayerTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tnconvert {

/// Turns a document of the CAD kernel (names, colours, layers, assemblies) into a scene. Parts
/// that occur several times with the same look share their meshes.
class DocumentSceneBuilder {
public:
    /// Progress is reported between @p from and @p to percent.
    DocumentSceneBuilder(const Handle(TDocStd_Document) & document, const Settings &settings,
                         Report &report, double from, double to);

    std::vector<Node> build();

    /// What became of the faces of all parts, once the scene is built.
    FaceTally faces() const;
    /// Names of the parts that the kernel could not tessellate at all.
    const std::vector<std::string> &lostParts() const { return m_lostParts; }

private:
    Node labelNode(const TDF_Label &label, Style style, int depth);
    void overlay(const TDF_Label &label, Style &style) const;
    std::vector<std::shared_ptr<const Mesh>> partMeshes(const TDF_Label &part, const Style &style,
                                                        const std::string &name);
    std::string layerOf(const TDF_Label &label) const;
    std::uint64_t countNodes(const TDF_Label &label, int depth);

    Handle(XCAFDoc_ShapeTool) m_shapes;
    Handle(XCAFDoc_ColorTool) m_colors;
    Handle(XCAFDoc_LayerTool) m_layers;
    const Settings &m_settings;
    Report &m_report;
    const double m_from;
    const double m_to;
    ShapeMesher m_mesher;
    bool m_isFiltered = false;
    std::vector<std::string> m_lostParts;
    std::map<std::string, std::vector<std::shared_ptr<const Mesh>>> m_known;
    NCollection_DataMap<TDF_Label, std::uint64_t, TDF_LabelMapHasher> m_nodeCounts; ///< by part
};

} // namespace tnconvert
