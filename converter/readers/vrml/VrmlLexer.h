#pragma once

#include <string>
#include <string_view>

namespace tnconvert {

/// Splits the text of a VRML file into tokens. Comments and commas count as blanks.
class VrmlLexer {
public:
    enum class Kind { Word, Number, String, Sign, End };

    /// @p text must outlive the lexer.
    explicit VrmlLexer(std::string_view text);

    /// Moves on to the next token.
    void next();

    Kind kind() const { return m_kind; }
    /// The token as it stands in the file; a string's without its quotation marks.
    std::string_view text() const { return m_token; }
    double number() const { return m_number; }
    /// The content of a string, escape characters resolved.
    std::string string() const;
    bool isSign(char sign) const { return m_kind == Kind::Sign && m_token[0] == sign; }
    bool isWord(std::string_view word) const { return m_kind == Kind::Word && m_token == word; }
    std::size_t line() const { return m_line; }
    /// Whether the text ended within a string.
    bool isCut() const { return m_isCut; }

private:
    void skipBlanks();
    void readString();
    void readWord();

    std::string_view m_rest;
    std::string_view m_token;
    Kind m_kind = Kind::End;
    double m_number = 0;
    std::size_t m_line = 1;
    bool m_isCut = false;
};

} // namespace tnconvert
