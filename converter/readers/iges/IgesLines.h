#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tnconvert {

/// The lines of an Iges file in text form, looked at before the kernel reads them.
class IgesLines {
public:
    /// Throws ConversionError when @p path is no whole Iges file in text form, or when a number in
    /// it is too large for any: the kernel would run on that without end.
    explicit IgesLines(const std::string &path);

    /// A sentence about the lines that the last line of the file counts and that are not there;
    /// empty when none is missing.
    std::string loss() const;

private:
    void check() const;
    void readDelimiters(const std::string &line);
    bool isLineFinite(const std::string &line);
    bool isValueFinite() const;

    const std::string m_path;
    std::array<int, 4> m_counts{}; ///< lines of the sections S, G, D, P
    std::string m_lastLine;
    char m_delimiter = ',';
    char m_end = ';';
    std::string m_entity;
    std::string m_value; ///< as far as it has been read; it may go on in the next line
    std::size_t m_textLeft = 0; ///< characters of a text that are still to come
};

} // namespace tnconvert
