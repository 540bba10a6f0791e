#include "readers/vrml/VrmlSceneBuilder.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "core/Stopwatch.h"
#include "core/Text.h"
#include "readers/vrml/VrmlFile.h"
#include "readers/vrml/VrmlGeometry.h"
#include "scene/SceneOperations.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace tnconvert {

namespace {

/// A scale of nothing would leave transformations that cannot be undone.
constexpr double leastScale = 1e-9;

Vec3 vector(const VrmlNode &vrml, const char *field, const Vec3 &fallback)
{
    const VrmlNumbers &v = vrml.numbers(field);
    const Vec3 result = v.size() >= 3 ? Vec3{v[0], v[1], v[2]} : fallback;
    return result.isFinite() ? result : fallback;
}

Transform rotation(const VrmlNode &vrml, const char *field, double sign)
{
    const VrmlNumbers &v = vrml.numbers(field);
    return v.size() >= 4 ? Transform::rotation({v[0], v[1], v[2]}, sign * v[3]) : Transform();
}

Vec3 usableScale(const VrmlNode &vrml)
{
    Vec3 scale = vector(vrml, "scale", {1, 1, 1});
    for (double *factor : {&scale.x, &scale.y, &scale.z}) {
        if (std::fabs(*factor) < leastScale)
            *factor = std::copysign(leastScale, *factor);
    }
    return scale;
}

std::string decodedUrl(const std::string &url)
{
    std::string result;
    for (std::size_t i = 0; i < url.size(); ++i) {
        const auto digit = [&url](std::size_t at) {
            const std::size_t value =
                std::string_view("0123456789abcdef").find(lowerCase(url.substr(at, 1)));
            return value == std::string_view::npos ? -1 : int(value);
        };
        if (url[i] == '%' && i + 2 < url.size() && digit(i + 1) >= 0 && digit(i + 2) >= 0) {
            result += static_cast<char>(digit(i + 1) * 16 + digit(i + 2));
            i += 2;
        } else {
            result += url[i];
        }
    }
    return result;
}

/// Whether other shapes can use something of @p appearance.
bool definesLook(const VrmlNode *appearance)
{
    const VrmlNodePtr material = appearance ? appearance->child("material") : nullptr;
    return appearance && (!appearance->name.empty() || (material && !material->name.empty()));
}

bool isRemote(const std::string &url)
{
    const std::size_t colon = url.find("://");
    return colon != std::string::npos && lowerCase(url.substr(0, colon)) != "file";
}

} // namespace

VrmlSceneBuilder::VrmlSceneBuilder(const Settings &settings, Report &report)
    : m_settings(settings)
    , m_report(report)
{
}

Scene VrmlSceneBuilder::build(const std::string &path)
{
    m_report.progress(0, "Reading");
    m_references.emplace(path, m_settings.followOutside);
    Scene scene;
    scene.up = UpAxis::Y;
    scene.roots = fileNodes(absolutePath(path));
    scene.missingParts = m_missingParts;
    scene.metadata = m_metadata;
    scene.losses = m_losses.damages;
    for (const auto &[what, count] : m_losses.counts)
        scene.losses.push_back("Missing " + what + ": " + std::to_string(count) + ".");
    scene.isFiltered = m_isFiltered;
    return scene;
}

std::vector<Node> VrmlSceneBuilder::fileNodes(const std::string &path)
{
    const Nodes nodes = readVrmlFile(
        path, [this](const std::string &message) { warnOnce(message); }, m_losses);
    m_kept.insert(m_kept.end(), nodes.begin(), nodes.end());
    m_report.progress(m_open.empty() ? 50 : 0, "Tessellating");
    m_open.push_back(path);
    Node top;
    addNodes(nodes, top);
    m_open.pop_back();
    return std::move(top.children);
}

void VrmlSceneBuilder::warnOnce(const std::string &message)
{
    if (m_warnings.insert(message).second)
        m_report.warning(message);
}

void VrmlSceneBuilder::countNodes(std::size_t more)
{
    m_nodeCount += more;
    checkNodeCount("The file", m_nodeCount);
}

const std::map<std::string, VrmlSceneBuilder::Handler> &VrmlSceneBuilder::handlers()
{
    using B = VrmlSceneBuilder;
    static const std::map<std::string, Handler> table = [] {
        std::map<std::string, Handler> known = {
            {"Transform", &B::addTransform}, {"Group", &B::addGroup},     {"Anchor", &B::addGroup},
            {"Collision", &B::addGroup},     {"Billboard", &B::addGroup}, {"Switch", &B::addSwitch},
            {"LOD", &B::addLevels},          {"Inline", &B::addInline},   {"Shape", &B::addShape},
            {"WorldInfo", &B::addWorldInfo},
        };
        // Nodes that draw nothing: nobody misses them in a CAD model.
        for (const char *silent : {"AudioClip",
                                   "Background",
                                   "ColorInterpolator",
                                   "CoordinateInterpolator",
                                   "CylinderSensor",
                                   "DirectionalLight",
                                   "Fog",
                                   "NavigationInfo",
                                   "NormalInterpolator",
                                   "OrientationInterpolator",
                                   "PlaneSensor",
                                   "PointLight",
                                   "PositionInterpolator",
                                   "ProximitySensor",
                                   "ScalarInterpolator",
                                   "Script",
                                   "Sound",
                                   "SphereSensor",
                                   "SpotLight",
                                   "TimeSensor",
                                   "TouchSensor",
                                   "Viewpoint",
                                   "VisibilitySensor"})
            known[silent] = &B::addNothing;
        return known;
    }();
    return table;
}

void VrmlSceneBuilder::addNodes(const Nodes &nodes, Node &parent)
{
    for (const VrmlNodePtr &vrml : nodes) {
        const auto handler = handlers().find(vrml->type);
        if (handler == handlers().end()) {
            warnOnce("Nodes of the kind " + validUtf8(vrml->type) + " are left out.");
            continue;
        }
        countNodes(1);
        countUnknownFields(*vrml);
        (this->*handler->second)(*vrml, parent);
    }
}

/// No node that draws something has nodes in other fields, so the name of one is damaged.
void VrmlSceneBuilder::countUnknownFields(const VrmlNode &vrml)
{
    static const std::set<std::string> drawing = {"Transform", "Group",  "Anchor", "Collision",
                                                  "Billboard", "Switch", "LOD",    "Shape"};
    static const std::set<std::string> known = {"appearance", "children", "choice", "geometry",
                                                "level",      "metadata", "proxy"};
    if (drawing.count(vrml.type) == 0)
        return;
    for (const auto &[name, field] : vrml.fields) {
        if (!field.nodes.empty() && known.count(name) == 0)
            m_losses["nodes in fields of unknown names"] += field.nodes.size();
    }
}

void VrmlSceneBuilder::addGroup(const VrmlNode &vrml, Node &parent)
{
    Node node;
    node.name = vrml.name;
    node.visible = !m_isHidden;
    addNodes(vrml.children("children"), node);
    parent.children.push_back(std::move(node));
}

void VrmlSceneBuilder::addTransform(const VrmlNode &vrml, Node &parent)
{
    const Vec3 center = vector(vrml, "center", {}) * vrmlUnit;
    const Transform outer =
        Transform::translation(vector(vrml, "translation", {}) * vrmlUnit + center)
        * rotation(vrml, "rotation", 1) * rotation(vrml, "scaleOrientation", 1);
    const Transform scale = Transform::scaling(usableScale(vrml));
    const Transform placed = outer * scale;
    const Transform inner =
        rotation(vrml, "scaleOrientation", -1) * Transform::translation(center * -1);
    const Transform whole = placed * inner;

    Node node;
    node.name = vrml.name;
    node.visible = !m_isHidden;
    if (!placed.isFinite() || !inner.isFinite() || !whole.isFinite()) {
        warnOnce("Transformations with impossible values are left out.");
        addNodes(vrml.children("children"), node);
    } else if (whole.isDecomposable()) {
        node.transform = whole;
        addNodes(vrml.children("children"), node);
    } else {
        // A skewed system cannot be stated by one node of the output, but by two.
        Node content;
        content.transform = inner;
        node.transform = placed;
        addNodes(vrml.children("children"), content);
        node.children.push_back(std::move(content));
    }
    parent.children.push_back(std::move(node));
}

void VrmlSceneBuilder::addSwitch(const VrmlNode &vrml, Node &parent)
{
    const Nodes &choices = vrml.children("choice");
    const double which = vrml.number("whichChoice", -1);
    Node node;
    node.name = vrml.name;
    if (which >= 0 && which < double(choices.size())) {
        addNodes({choices[std::size_t(which)]}, node);
    } else if (m_settings.importInvisibleMeshes) {
        const bool wasHidden = m_isHidden;
        m_isHidden = true;
        addNodes(choices, node);
        m_isHidden = wasHidden;
        node.visible = false;
    } else if (!choices.empty()) {
        m_isFiltered = true;
    }
    parent.children.push_back(std::move(node));
}

void VrmlSceneBuilder::addLevels(const VrmlNode &vrml, Node &parent)
{
    const Nodes &levels = vrml.children("level");
    if (!levels.empty())
        addNodes({levels.front()}, parent);
}

void VrmlSceneBuilder::addNothing(const VrmlNode &, Node &) { }

void VrmlSceneBuilder::addWorldInfo(const VrmlNode &vrml, Node &)
{
    if (!m_settings.importMetadata)
        return;
    m_metadata.emplace_back("title", vrml.text("title"));
    if (const VrmlField *info = vrml.field("info")) {
        for (std::size_t i = 0; i < info->strings.size(); ++i)
            m_metadata.emplace_back("info " + std::to_string(i + 1), info->strings[i]);
    }
}

std::string VrmlSceneBuilder::inlinedPath(const VrmlNode &vrml) const
{
    const VrmlField *urls = vrml.field("url");
    if (!urls || urls->strings.empty())
        return {};
    // The first that exists, else the first at all: it stands in the message.
    std::string first;
    for (const std::string &url : urls->strings) {
        if (isRemote(url)) {
            if (first.empty())
                first = url;
            continue;
        }
        std::string local = lowerCase(url.substr(0, 5)) == "file:" ? url.substr(5) : url;
        if (local.compare(0, 2, "//") == 0)
            local.erase(0, 2);
        std::replace(local.begin(), local.end(), '\\', '/');
        for (const std::string &candidate : {decodedUrl(local), local}) {
            const std::filesystem::path directory =
                std::filesystem::path(m_open.back()).parent_path();
            const std::string path = absolutePath((directory / candidate).string());
            std::error_code ignored;
            if (m_references->mayFollow(path)) {
                m_report.reference(path);
                if (std::filesystem::exists(path, ignored))
                    return path;
            }
            if (first.empty())
                first = path;
        }
    }
    return first;
}

void VrmlSceneBuilder::addInline(const VrmlNode &vrml, Node &parent)
{
    const std::string path = inlinedPath(vrml);
    if (path.empty())
        return;
    if (!m_settings.importReferencedFiles) {
        m_isFiltered = true;
        return;
    }
    if (std::any_of(m_open.begin(), m_open.end(),
                    [&path](const std::string &open) { return References::isSame(open, path); })) {
        warnOnce("The file " + validUtf8(path) + " inlines itself; it is left out there.");
        return;
    }
    if (m_inlined.find(path) == m_inlined.end())
        readInlined(path);
    Node node;
    node.name = vrml.name.empty() ? fileStem(path) : vrml.name;
    node.visible = !m_isHidden;
    countNodes(nodeCount(m_inlined[path]));
    node.children = m_inlined[path];
    parent.children.push_back(std::move(node));
}

void VrmlSceneBuilder::readInlined(const std::string &path)
{
    m_report.partStarted(path);
    const Stopwatch watch;
    const std::vector<std::string> openBefore = m_open;
    const std::size_t missingBefore = m_missingParts.size();
    const VrmlLosses lossesBefore = m_losses;
    Outcome outcome;
    try {
        if (isRemote(path))
            throw ConversionError(validUtf8(path) + " is not on this machine; it is not fetched.");
        m_references->check(path);
        std::vector<Node> nodes = fileNodes(path);
        m_inlined[path] = std::move(nodes);
        if (m_missingParts.size() > missingBefore || m_losses != lossesBefore)
            outcome = {State::Incomplete, "Parts of " + fileName(path) + " are missing.", 0};
    } catch (const ConversionError &error) {
        m_open = openBefore;
        m_inlined[path] = {};
        m_missingParts.push_back(path);
        outcome = {State::Failure, error.what(), 0};
    }
    outcome.seconds = watch.seconds();
    m_report.partFinished(path, outcome);
}

Material VrmlSceneBuilder::materialOf(const VrmlNode *appearance)
{
    Material material;
    if (!appearance)
        return material;
    if (appearance->child("texture"))
        warnOnce("Textures are left out.");
    const VrmlNodePtr vrml = appearance->child("material");
    if (!vrml)
        return material;
    material.name = vrml->name.empty() ? appearance->name : vrml->name;
    const Vec3 diffuse = vector(*vrml, "diffuseColor", {0.8, 0.8, 0.8});
    const Vec3 emissive = vector(*vrml, "emissiveColor", {});
    const double transparency = vrml->number("transparency", 0);
    const double shininess = vrml->number("shininess", 0.2);
    const auto unit = [](double value) {
        return std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.0;
    };
    material.color = {unit(diffuse.x), unit(diffuse.y), unit(diffuse.z), 1 - unit(transparency)};
    material.emissive = {unit(emissive.x), unit(emissive.y), unit(emissive.z)};
    material.roughness = std::max(0.1, 1 - unit(shininess));
    return material;
}

std::shared_ptr<const Mesh> VrmlSceneBuilder::meshOf(const VrmlNode &geometry,
                                                     const VrmlNode *appearance)
{
    const auto [entry, isNew] = m_shapes.try_emplace({&geometry, appearance});
    if (!isNew)
        return entry->second;
    VrmlGeometry reader(
        m_settings, [this](const std::string &message) { warnOnce(message); }, m_losses);
    Primitive primitive = reader.primitive(geometry);
    m_isFiltered = m_isFiltered || reader.isFiltered();
    m_triangles += primitive.indices.size() / 3;
    checkTriangleCount("The file", m_triangles);
    if (primitive.indices.empty())
        return nullptr;
    primitive.material = materialOf(appearance);
    auto mesh = std::make_shared<Mesh>();
    mesh->name = geometry.name;
    if (primitive.mode == Primitive::Mode::Lines) {
        // Lines are not lit: their colour is the emissive one.
        const auto &glow = primitive.material.emissive;
        primitive.material.color = {glow[0], glow[1], glow[2], primitive.material.color[3]};
    }
    // Colours of vertices replace the material's.
    if (!primitive.colors.empty())
        primitive.material.color = {1, 1, 1, primitive.material.color[3]};
    mesh->primitives.push_back(std::move(primitive));
    entry->second = mesh;
    return mesh;
}

void VrmlSceneBuilder::addShape(const VrmlNode &vrml, Node &parent)
{
    const VrmlNodePtr geometry = vrml.child("geometry");
    const VrmlNodePtr appearance = vrml.child("appearance");
    if (!geometry) {
        // NULL is a geometry too, and some programs keep their materials in shapes without any.
        if (!vrml.field("geometry") && !definesLook(appearance.get()))
            warnOnce("Shapes without a geometry are left out.");
        return;
    }
    Node node;
    node.name = vrml.name;
    node.visible = !m_isHidden;
    node.mesh = meshOf(*geometry, appearance.get());
    parent.children.push_back(std::move(node));
}

} // namespace tnconvert
