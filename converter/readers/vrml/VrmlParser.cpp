#include "readers/vrml/VrmlParser.h"

#include "core/ConversionError.h"
#include "core/Limits.h"
#include "core/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tnconvert {

namespace {

/// Prototypes within prototypes can grow without end.
constexpr std::size_t copyBound = 1'000'000;

class DepthGuard {
public:
    explicit DepthGuard(int &depth)
        : m_depth(depth)
    {
        ++m_depth;
    }
    ~DepthGuard() { --m_depth; }
    DepthGuard(const DepthGuard &) = delete;
    DepthGuard &operator=(const DepthGuard &) = delete;

private:
    int &m_depth;
};

/// The text breaks the rules, so what follows cannot be understood.
class SyntaxError : public ConversionError {
public:
    using ConversionError::ConversionError;
};

/// Puts a list aside for as long as it lives.
template <typename List>
class PutAside {
public:
    explicit PutAside(List &list)
        : m_list(list)
        , m_kept(std::exchange(list, {}))
    {
    }
    ~PutAside() { m_list = std::move(m_kept); }
    PutAside(const PutAside &) = delete;
    PutAside &operator=(const PutAside &) = delete;

private:
    List &m_list;
    List m_kept;
};

bool isEvent(std::string_view word)
{
    return word == "eventIn" || word == "eventOut";
}

bool isDeclaration(std::string_view word)
{
    return word == "field" || word == "exposedField";
}

} // namespace

VrmlParser::VrmlParser(std::string_view text, std::string fileName, Warn warn, VrmlLosses &losses)
    : m_lexer(text)
    , m_fileName(std::move(fileName))
    , m_warn(std::move(warn))
    , m_losses(losses)
{
}

std::vector<VrmlNodePtr> VrmlParser::parse()
{
    std::vector<VrmlNodePtr> nodes;
    try {
        statements(/*isTop*/ true, nodes);
    } catch (const SyntaxError &error) {
        if (VrmlNodePtr last = rescued())
            nodes.push_back(std::move(last));
        if (nodes.empty())
            throw;
        m_losses.damages.push_back(std::string(error.what()) + " What follows is missing.");
    }
    return nodes;
}

/// What is known of the node at the top within which the reading ended; null when that is nothing.
VrmlNodePtr VrmlParser::rescued()
{
    VrmlNodePtr inner;
    for (; !m_open.empty(); m_open.pop_back()) {
        const auto &[node, field] = m_open.back();
        if (inner)
            node->fields[field].nodes.push_back(inner);
        completeNode(*node);
        const bool isKept = field == "children" && isTrueWithoutRest(*node);
        inner = isKept ? node : nullptr;
    }
    return inner;
}

/// Whether the children of a node can be shown that ends within them. Where places stand behind the
/// children, these would be shown elsewhere; programs that write one place in front write all of
/// them there.
bool VrmlParser::isTrueWithoutRest(const VrmlNode &node) const
{
    if (node.children("children").empty() || found(&Scope::prototypes, node.type))
        return false;
    if (node.type == "Group" || node.type == "Anchor" || node.type == "Collision")
        return true;
    constexpr const char *places[] = {"translation", "rotation", "scale", "scaleOrientation"};
    return node.type == "Transform"
        && std::any_of(std::begin(places), std::end(places),
                       [&node](const char *place) { return node.field(place); });
}

void VrmlParser::fail(const std::string &what) const
{
    const std::string line = std::to_string(m_lexer.line());
    if (m_lexer.kind() == VrmlLexer::Kind::End || m_lexer.isCut())
        throw SyntaxError(m_fileName + " is truncated: it ends at line " + line
                          + " within a node.");
    throw SyntaxError(m_fileName + " is damaged at line " + line + ": " + what + ".");
}

/// For what is wrong with whole nodes: nothing is truncated, even if one is the last of the file.
void VrmlParser::failAtLine(const std::string &what) const
{
    throw ConversionError(m_fileName + " is damaged at line " + std::to_string(m_lexer.line())
                          + ": " + what + ".");
}

std::string VrmlParser::word(const char *what)
{
    // Names that begin with a digit are against the rules, but exist.
    if (m_lexer.kind() != VrmlLexer::Kind::Word && m_lexer.kind() != VrmlLexer::Kind::Number)
        fail(std::string("expected ") + what);
    std::string text(m_lexer.text());
    m_lexer.next();
    return text;
}

void VrmlParser::expect(char sign)
{
    if (!m_lexer.isSign(sign))
        fail(std::string("expected ") + sign);
    m_lexer.next();
}

template <typename T>
const T *VrmlParser::found(std::map<std::string, T> Scope::*names, const std::string &name) const
{
    for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope) {
        const auto entry = ((*scope).*names).find(name);
        if (entry != ((*scope).*names).end())
            return &entry->second;
    }
    return nullptr;
}

void VrmlParser::statements(bool isTop, std::vector<VrmlNodePtr> &nodes)
{
    while (isTop ? m_lexer.kind() != VrmlLexer::Kind::End : !m_lexer.isSign('}')) {
        if (m_lexer.isWord("ROUTE")) {
            route();
        } else if (m_lexer.isWord("PROTO")) {
            prototype();
        } else if (m_lexer.isWord("EXTERNPROTO")) {
            externalPrototype();
        } else if (isTop && m_lexer.isSign('}')) {
            m_warn("A closing brace without its opening one is ignored (line "
                   + std::to_string(m_lexer.line()) + ").");
            m_lexer.next();
        } else if (VrmlNodePtr read = node()) {
            nodes.push_back(std::move(read));
        }
    }
}

VrmlNodePtr VrmlParser::node()
{
    const DepthGuard guard(m_depth);
    if (m_depth > depthBound)
        failAtLine("the nodes are nested too deeply");
    std::string type = word("a node");
    if (type == "NULL")
        return nullptr;
    if (type == "USE") {
        const std::string name = word("a name");
        if (const VrmlNodePtr *known = found(&Scope::named, name))
            return *known;
        m_warn("The node " + validUtf8(name) + " is used but not defined; it is left out.");
        ++m_losses["uses of nodes that are not defined"];
        return nullptr;
    }
    std::string name;
    if (type == "DEF") {
        name = word("a name");
        type = word("a node");
    }
    VrmlNodePtr result = nodeBody(type, name);
    // Entered after its body was read, so no node can contain itself.
    if (!name.empty())
        m_scopes.back().named[name] = result;
    return result;
}

/// Asks the children for what they know already: walking through them would take as long as the
/// instances of shared nodes are many.
void VrmlParser::completeNode(VrmlNode &node) const
{
    node.refersToPrototype = false;
    node.height = 1;
    for (const auto &[name, field] : node.fields) {
        node.refersToPrototype = node.refersToPrototype || !field.prototypeField.empty();
        for (const VrmlNodePtr &child : field.nodes) {
            node.refersToPrototype = node.refersToPrototype || child->refersToPrototype;
            node.height = std::max(node.height, child->height + 1);
        }
    }
    // Nodes may use nodes that use nodes, with no brace around a brace.
    if (node.height > depthBound)
        failAtLine("the nodes are nested too deeply");
}

VrmlNodePtr VrmlParser::nodeBody(const std::string &type, const std::string &name)
{
    auto result = std::make_shared<VrmlNode>();
    result->type = type;
    result->name = name;
    result->line = m_lexer.line();
    expect('{');
    m_open.push_back({result, {}});
    while (!m_lexer.isSign('}'))
        bodyItem();
    m_open.pop_back();
    m_lexer.next();
    completeNode(*result);
    const Prototype *prototype = found(&Scope::prototypes, type);
    if (!prototype || !prototype->content)
        return result;
    return instance(*result, *prototype);
}

void VrmlParser::bodyItem()
{
    if (m_lexer.isWord("ROUTE"))
        return route();
    if (m_lexer.isWord("PROTO"))
        return prototype();
    if (m_lexer.isWord("EXTERNPROTO"))
        return externalPrototype();
    if (m_lexer.kind() != VrmlLexer::Kind::Word)
        fail("expected the name of a field");
    std::string name = word("the name of a field");
    // Declarations stand in scripts, whose fields are read and forgotten.
    const bool event = isEvent(name);
    if (event || isDeclaration(name)) {
        word("a field type");
        name = word("the name of a field");
    }
    if (event && !m_lexer.isWord("IS"))
        return;
    m_open.back().field = name;
    VrmlField &field = m_open.back().node->fields[name];
    field = {};
    readValue(field);
}

void VrmlParser::readValue(VrmlField &field)
{
    if (m_lexer.isWord("IS")) {
        m_lexer.next();
        field.prototypeField = word("the name of a field");
    } else if (m_lexer.isSign('[')) {
        m_lexer.next();
        while (!m_lexer.isSign(']'))
            element(field);
        m_lexer.next();
    } else if (m_lexer.kind() == VrmlLexer::Kind::Number) {
        while (m_lexer.kind() == VrmlLexer::Kind::Number)
            element(field);
    } else {
        element(field);
    }
}

void VrmlParser::element(VrmlField &field)
{
    switch (m_lexer.kind()) {
    case VrmlLexer::Kind::Number:
        field.numbers.push_back(m_lexer.number());
        m_lexer.next();
        return;
    case VrmlLexer::Kind::String:
        if (m_lexer.isCut())
            fail("a string has no end");
        field.strings.push_back(m_lexer.string());
        m_lexer.next();
        return;
    case VrmlLexer::Kind::Word:
        if (m_lexer.isWord("TRUE") || m_lexer.isWord("FALSE")) {
            field.numbers.push_back(m_lexer.isWord("TRUE") ? 1 : 0);
            m_lexer.next();
        } else if (VrmlNodePtr child = node()) {
            field.nodes.push_back(std::move(child));
        }
        return;
    case VrmlLexer::Kind::Sign:
    case VrmlLexer::Kind::End:
        fail("expected the value of a field");
    }
}

void VrmlParser::route()
{
    m_lexer.next();
    word("a route");
    word("a route");
    word("a route");
}

std::map<std::string, VrmlField> VrmlParser::interfaceFields(bool hasDefaults)
{
    std::map<std::string, VrmlField> fields;
    expect('[');
    while (!m_lexer.isSign(']')) {
        const std::string kind = word("a declaration");
        if (!isEvent(kind) && !isDeclaration(kind))
            fail("expected a declaration");
        word("a field type");
        const std::string name = word("the name of a field");
        if (hasDefaults && isDeclaration(kind))
            readValue(fields[name]);
    }
    m_lexer.next();
    return fields;
}

void VrmlParser::prototype()
{
    const DepthGuard guard(m_depth);
    if (m_depth > depthBound)
        failAtLine("the prototypes are nested too deeply");
    m_lexer.next();
    const std::string name = word("the name of a prototype");
    // Nothing of a prototype is drawn where it stands, so nothing of an unfinished one either.
    const PutAside around(m_open);
    Prototype result;
    result.defaults = interfaceFields(/*hasDefaults*/ true);
    expect('{');
    // Names and prototypes defined inside are not known outside.
    m_scopes.emplace_back();
    std::vector<VrmlNodePtr> content;
    statements(/*isTop*/ false, content);
    m_scopes.pop_back();
    expect('}');
    // Only the first node of a prototype is drawn.
    if (!content.empty())
        result.content = content.front();
    m_scopes.back().prototypes[name] = std::move(result);
}

void VrmlParser::externalPrototype()
{
    m_lexer.next();
    const std::string name = word("the name of a prototype");
    interfaceFields(/*hasDefaults*/ false);
    VrmlField address;
    readValue(address);
    m_scopes.back().prototypes[name] = Prototype();
}

VrmlNodePtr VrmlParser::instance(const VrmlNode &use, const Prototype &prototype)
{
    std::map<std::string, VrmlField> arguments = prototype.defaults;
    for (const auto &[name, field] : use.fields)
        arguments[name] = field;
    VrmlNodePtr result = copied(prototype.content, arguments);
    if (use.name.empty())
        return result;
    auto named = std::make_shared<VrmlNode>(*result);
    named->name = use.name;
    return named;
}

VrmlNodePtr VrmlParser::copied(const VrmlNodePtr &original,
                               const std::map<std::string, VrmlField> &arguments)
{
    if (!original->refersToPrototype)
        return original;
    if (++m_copies > copyBound)
        failAtLine("its prototypes grow without end");
    auto copy = std::make_shared<VrmlNode>(*original);
    for (auto field = copy->fields.begin(); field != copy->fields.end();) {
        if (!field->second.prototypeField.empty()) {
            const auto argument = arguments.find(field->second.prototypeField);
            if (argument == arguments.end()) {
                field = copy->fields.erase(field);
                continue;
            }
            field->second = argument->second;
        } else {
            for (VrmlNodePtr &child : field->second.nodes)
                child = copied(child, arguments);
        }
        ++field;
    }
    // Arguments may refer to the prototype that stands around.
    completeNode(*copy);
    return copy;
}

} // namespace tnconvert
