#pragma once

#include "core/Settings.h"
#include "readers/vrml/VrmlNode.h"
#include "readers/vrml/VrmlParser.h"
#include "scene/FacetMeshBuilder.h"

namespace tnconvert {

/// Millimetres in one unit of a VRML file.
constexpr double vrmlUnit = 1000;

/// Makes triangles and lines of VRML geometry nodes.
class VrmlGeometry {
public:
    /// What is missing is added to @p losses, which must outlive the object.
    VrmlGeometry(const Settings &settings, VrmlParser::Warn warn, VrmlLosses &losses);

    /// The geometry without its material. Without indices when the settings leave it out, when
    /// it is empty, or when its kind is not known. Throws ConversionError when it would have too
    /// many triangles.
    Primitive primitive(const VrmlNode &geometry);

    /// Whether the settings kept something out.
    bool isFiltered() const { return m_isFiltered; }

private:
    using Facets = void (VrmlGeometry::*)(const VrmlNode &, FacetMeshBuilder &);

    void faceSet(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void elevationGrid(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void extrusion(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void box(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void sphere(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void cylinder(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void cone(const VrmlNode &vrml, FacetMeshBuilder &builder);
    void addPolygon(const std::vector<FacetMeshBuilder::Corner> &polygon, bool isClockwise,
                    FacetMeshBuilder &builder);
    void addFrustum(double bottom, double top, double height, const VrmlNode &vrml,
                    FacetMeshBuilder &builder);
    Primitive lineSet(const VrmlNode &vrml);
    int segments(double radius) const;

    const Settings &m_settings;
    const VrmlParser::Warn m_warn;
    VrmlLosses &m_losses;
    bool m_isFiltered = false;
};

} // namespace tnconvert
