#include "readers/vrml/VrmlLexer.h"

#include "core/Text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

namespace tnconvert {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == ',' || c == '\f' || c == '\0';
}

bool endsWord(char c)
{
    return isBlank(c) || c == '{' || c == '}' || c == '[' || c == ']' || c == '"' || c == '#';
}

std::optional<double> hexadecimal(std::string_view word)
{
    if (word.size() < 3 || word[0] != '0' || (word[1] != 'x' && word[1] != 'X'))
        return std::nullopt;
    unsigned long long value = 0;
    const char *end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data() + 2, end, value, 16);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return double(value);
}

/// What exporting programs print for impossible coordinates.
bool isUndefined(std::string_view word)
{
    const std::string lower = lowerCase(word);
    return lower == "nan" || lower == "-nan" || lower == "inf" || lower == "-inf"
        || lower == "-nan(ind)" || lower == "nan(ind)";
}

} // namespace

VrmlLexer::VrmlLexer(std::string_view text)
    : m_rest(text)
{
    next();
}

void VrmlLexer::skipBlanks()
{
    while (!m_rest.empty()) {
        if (m_rest[0] == '#') {
            m_rest.remove_prefix(std::min(m_rest.find_first_of("\r\n"), m_rest.size()));
        } else if (isBlank(m_rest[0])) {
            const bool isPair = m_rest.substr(0, 2) == "\r\n";
            if (m_rest[0] == '\n' || (m_rest[0] == '\r' && !isPair))
                ++m_line;
            m_rest.remove_prefix(1);
        } else {
            return;
        }
    }
}

void VrmlLexer::next()
{
    skipBlanks();
    if (m_rest.empty()) {
        m_kind = Kind::End;
        m_token = {};
    } else if (m_rest[0] == '"') {
        readString();
    } else if (endsWord(m_rest[0])) {
        m_kind = Kind::Sign;
        m_token = m_rest.substr(0, 1);
        m_rest.remove_prefix(1);
    } else {
        readWord();
    }
}

void VrmlLexer::readString()
{
    m_kind = Kind::String;
    std::size_t end = 1;
    while (end < m_rest.size() && m_rest[end] != '"') {
        m_line += m_rest[end] == '\n' ? 1 : 0;
        end += m_rest[end] == '\\' ? 2 : 1;
    }
    m_isCut = end >= m_rest.size();
    end = std::min(end, m_rest.size());
    m_token = m_rest.substr(1, end - 1);
    m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
}

void VrmlLexer::readWord()
{
    std::size_t end = 0;
    while (end < m_rest.size() && !endsWord(m_rest[end]))
        ++end;
    m_token = m_rest.substr(0, end);
    m_rest.remove_prefix(end);
    m_kind = Kind::Word;
    const char first = m_token[0];
    const bool mayBeNumber = (first >= '0' && first <= '9') || first == '-' || first == '+'
        || first == '.' || first == 'n' || first == 'N' || first == 'i' || first == 'I';
    if (!mayBeNumber)
        return;
    std::optional<double> value = parseNumber(m_token);
    if (!value)
        value = hexadecimal(m_token);
    if (!value && isUndefined(m_token))
        value = std::numeric_limits<double>::quiet_NaN();
    if (value) {
        m_kind = Kind::Number;
        m_number = *value;
    }
}

std::string VrmlLexer::string() const
{
    std::string result;
    for (std::size_t i = 0; i < m_token.size(); ++i) {
        if (m_token[i] == '\\' && i + 1 < m_token.size())
            ++i;
        result += m_token[i];
    }
    return result;
}

} // namespace tnconvert
