#include "readers/step/StepNumbers.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <unordered_set>
#include <utility>

namespace tnconvert {

namespace {

/// Finds where statements begin with a number: "#11 = ...". Texts are in quotes, and a quote within
/// one is doubled; comments are as those of C.
class NumberScanner {
public:
    /// Gives true at the end of a number that begins a statement.
    bool take(char c)
    {
        ++m_offset;
        const char before = std::exchange(m_before, c);
        if (m_isInComment || (!m_isInText && before == '/' && c == '*')) {
            m_isInComment = before != '*' || c != '/';
            return false;
        }
        if (m_isInText || c == '\'') {
            m_isInText = m_isInText != (c == '\'');
            m_state = State::Within;
            return false;
        }
        switch (m_state) {
        case State::Start:
            if (c == '#') {
                m_state = State::Number;
                m_number = 0;
                m_begin = m_offset;
            } else if (c != ' ' && c != '\n' && c != '\r' && c != '\t') {
                m_state = c == ';' ? State::Start : State::Within;
            }
            return false;
        case State::Number:
            if (c >= '0' && c <= '9') {
                m_number = m_number * 10 + std::uint64_t(c - '0');
                return false;
            }
            m_state = c == ';' ? State::Start : State::Within;
            return m_offset > m_begin + 1;
        case State::Within:
            if (c == ';')
                m_state = State::Start;
            return false;
        }
        return false;
    }

    std::uint64_t number() const { return m_number; }
    std::size_t begin() const { return m_begin; }

private:
    enum class State { Start, Number, Within };

    State m_state = State::Start;
    bool m_isInText = false;
    bool m_isInComment = false;
    char m_before = '\n';
    std::size_t m_offset = 0; ///< behind the last character
    std::size_t m_begin = 0;
    std::uint64_t m_number = 0;
};

} // namespace

StepNumbers::StepNumbers(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::unordered_set<std::uint64_t> known;
    NumberScanner scanner;
    std::array<char, 1 << 16> piece;
    while (file.read(piece.data(), piece.size()), file.gcount() > 0) {
        for (std::streamsize i = 0; i < file.gcount(); ++i) {
            if (!scanner.take(piece[std::size_t(i)]))
                continue;
            m_largest = std::max(m_largest, scanner.number());
            if (!known.insert(scanner.number()).second)
                m_twins.push_back({scanner.begin(), scanner.number()});
        }
    }
}

std::string StepNumbers::firstTwin() const
{
    return m_twins.empty() ? std::string() : "#" + std::to_string(m_twins.front().number);
}

std::string StepNumbers::renumbered(const std::string &text) const
{
    std::string result;
    std::size_t done = 0;
    std::uint64_t next = m_largest;
    for (const Twin &twin : m_twins) {
        result.append(text, done, twin.offset - done);
        result += std::to_string(++next);
        done = text.find_first_not_of("0123456789", twin.offset);
    }
    return result + text.substr(done);
}

} // namespace tnconvert
