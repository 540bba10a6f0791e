#pragma once

#include "core/References.h"
#include "core/Report.h"
#include "core/Settings.h"
#include "readers/vrml/VrmlNode.h"
#include "scene/Scene.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tnconvert {

/// Turns VRML nodes into a scene, the files that they inline included.
class VrmlSceneBuilder {
public:
    VrmlSceneBuilder(const Settings &settings, Report &report);

    /// Reads @p path and everything below it. Throws ConversionError when @p path itself cannot be
    /// read; inlined files that cannot are noted in the scene.
    Scene build(const std::string &path);

private:
    using Nodes = std::vector<VrmlNodePtr>;
    using Handler = void (VrmlSceneBuilder::*)(const VrmlNode &, Node &);
    using ShapeKey = std::pair<const VrmlNode *, const VrmlNode *>;

    static const std::map<std::string, Handler> &handlers();

    std::vector<Node> fileNodes(const std::string &path);
    void addNodes(const Nodes &nodes, Node &parent);
    void addGroup(const VrmlNode &vrml, Node &parent);
    void addTransform(const VrmlNode &vrml, Node &parent);
    void addSwitch(const VrmlNode &vrml, Node &parent);
    void addLevels(const VrmlNode &vrml, Node &parent);
    void addInline(const VrmlNode &vrml, Node &parent);
    void addShape(const VrmlNode &vrml, Node &parent);
    void addWorldInfo(const VrmlNode &vrml, Node &parent);
    void addNothing(const VrmlNode &vrml, Node &parent);

    Material materialOf(const VrmlNode *appearance);
    std::shared_ptr<const Mesh> meshOf(const VrmlNode &geometry, const VrmlNode *appearance);
    std::string inlinedPath(const VrmlNode &vrml) const;
    void readInlined(const std::string &path);
    void countNodes(std::size_t more);
    void countUnknownFields(const VrmlNode &vrml);
    void warnOnce(const std::string &message);

    const Settings &m_settings;
    std::optional<References> m_references;
    Report &m_report;
    std::set<std::string> m_warnings;
    std::vector<std::string> m_missingParts;
    VrmlLosses m_losses;
    std::uint64_t m_triangles = 0;
    bool m_isFiltered = false;
    Metadata m_metadata;
    std::map<std::string, std::vector<Node>> m_inlined;
    std::vector<std::string> m_open; ///< the file being read and those that inline it
    Nodes m_kept; ///< keeps the nodes alive whose addresses are keys of m_shapes
    std::map<ShapeKey, std::shared_ptr<const Mesh>> m_shapes;
    std::size_t m_nodeCount = 0;
    bool m_isHidden = false;
};

} // namespace tnconvert
