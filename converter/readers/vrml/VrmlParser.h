#pragma once

#include "readers/vrml/VrmlLexer.h"
#include "readers/vrml/VrmlNode.h"

#include <functional>

namespace tnconvert {

/// Reads the nodes of a VRML97 file. Prototypes that the file defines are replaced by their
/// content.
class VrmlParser {
public:
    using Warn = std::function<void(const std::string &)>;

    /// @p text is the file's content, which must outlive the parser; @p fileName stands in
    /// messages. What is missing is added to @p losses, which must outlive the parser too.
    VrmlParser(std::string_view text, std::string fileName, Warn warn, VrmlLosses &losses);

    /// The nodes at the top of the file. When the text is damaged or ends too early, those that
    /// stand before, with all that is sure to be part of them; the losses name the line. Throws
    /// ConversionError when nothing does, or when nodes are nested too deeply.
    std::vector<VrmlNodePtr> parse();

private:
    struct Prototype {
        std::map<std::string, VrmlField> defaults;
        VrmlNodePtr content; ///< null for external ones
    };
    /// What is known within a prototype or, in the outermost one, within the file.
    struct Scope {
        std::map<std::string, VrmlNodePtr> named;
        std::map<std::string, Prototype> prototypes;
    };

    /// A node whose body is being read.
    struct OpenNode {
        std::shared_ptr<VrmlNode> node;
        std::string field; ///< the one that is being read
    };

    void statements(bool isTop, std::vector<VrmlNodePtr> &nodes);
    VrmlNodePtr rescued();
    bool isTrueWithoutRest(const VrmlNode &node) const;
    VrmlNodePtr node();
    void completeNode(VrmlNode &node) const;
    VrmlNodePtr nodeBody(const std::string &type, const std::string &name);
    void bodyItem();
    void readValue(VrmlField &field);
    void element(VrmlField &field);
    void prototype();
    void externalPrototype();
    std::map<std::string, VrmlField> interfaceFields(bool hasDefaults);
    void route();
    VrmlNodePtr instance(const VrmlNode &use, const Prototype &prototype);
    VrmlNodePtr copied(const VrmlNodePtr &node, const std::map<std::string, VrmlField> &arguments);

    /// The innermost one of this name; null when there is none.
    template <typename T>
    const T *found(std::map<std::string, T> Scope::*names, const std::string &name) const;

    std::string word(const char *what);
    void expect(char sign);
    [[noreturn]] void fail(const std::string &what) const;
    [[noreturn]] void failAtLine(const std::string &what) const;

    VrmlLexer m_lexer;
    const std::string m_fileName;
    const Warn m_warn;
    VrmlLosses &m_losses;
    std::vector<OpenNode> m_open; ///< the innermost is the last
    std::vector<Scope> m_scopes{1}; ///< the innermost is the last
    int m_depth = 0;
    std::size_t m_copies = 0;
};

} // namespace tnconvert
