#pragma once

#include <algorithm>
#include <string_view>

namespace tnconvert {

/// Takes a text line by line, whichever of the three ways the lines end in.
class LineReader {
public:
    /// @p text must outlive the reader.
    explicit LineReader(std::string_view text)
        : m_text(text)
        , m_feed(position('\n', 0))
    {
    }

    /// False at the end. @p line comes without its end.
    bool next(std::string_view &line)
    {
        if (m_at >= m_text.size())
            return false;
        ++m_number;
        if (m_feed < m_at)
            m_feed = position('\n', m_at);
        line = m_text.substr(m_at, m_feed - m_at);
        const std::size_t length = std::min(line.find('\r'), line.size());
        const bool isPair = length + 1 == line.size() && m_feed < m_text.size();
        line = line.substr(0, length);
        m_at += length + (isPair ? 2 : 1);
        return true;
    }

    /// Of the line that was taken last, from 1 on.
    std::size_t number() const { return m_number; }
    /// How much of the text has been taken, from 0 to 1.
    double done() const { return double(m_at) / double(m_text.size()); }

private:
    std::size_t position(char end, std::size_t from) const
    {
        return std::min(m_text.find(end, from), m_text.size());
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_feed; ///< the next line feed from there on; lines may end in another way
    std::size_t m_number = 0;
};

} // namespace tnconvert
