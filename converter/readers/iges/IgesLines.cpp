#include "readers/iges/IgesLines.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Text.h"

#include <cmath>
#include <cstdlib>
#include <fstream>

namespace tnconvert {

namespace {

/// The column of a line's section letter.
constexpr std::size_t sectionColumn = 72;

/// The sections that the last line counts, in its order.
constexpr std::string_view countedSections = "SGDP";

/// The last line holds a letter and a number for each section.
constexpr std::size_t countWidth = 8;

char sectionOf(std::string_view line)
{
    return line.size() > sectionColumn ? line[sectionColumn] : ' ';
}

} // namespace

IgesLines::IgesLines(const std::string &path)
    : m_path(path)
{
    check();
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const char section = sectionOf(line);
        if (section == 'T')
            m_lastLine = line;
        const std::size_t counted = countedSections.find(section);
        if (counted == std::string_view::npos)
            continue;
        if (++m_counts[counted] == 1 && section == 'G')
            readDelimiters(line);
        // The kernel has nothing but these lines of the entities.
        if (section == 'P' && !isLineFinite(line))
            throw ConversionError(fileName(path) + " is damaged: it has impossible coordinates.");
    }
}

void IgesLines::check() const
{
    const std::string head = readHead(m_path, 512);
    const std::string_view firstLine = std::string_view(head).substr(0, head.find_first_of("\r\n"));
    const char section = sectionOf(firstLine);
    if (section == 'B' || section == 'C')
        throw ConversionError(fileName(m_path)
                              + " is an Iges file in binary or compressed form, which cannot be "
                                "read; please export it in the text form.");
    if (section != 'S')
        throwWrongContent(m_path, "an Iges file", "its first line is not marked S in column 73");

    const std::string tail = readTail(m_path, 4096);
    const std::string_view rest = trimmed(tail);
    const std::size_t lastBreak = rest.find_last_of("\r\n");
    const std::string_view lastLine =
        lastBreak == std::string_view::npos ? rest : rest.substr(lastBreak + 1);
    if (sectionOf(lastLine) != 'T')
        throw ConversionError(fileName(m_path)
                              + " is truncated: its last line, marked T in column 73, is missing.");
}

std::string IgesLines::loss() const
{
    std::string missing;
    for (std::size_t i = 0; i < countedSections.size(); ++i) {
        const std::string_view count =
            std::string_view(m_lastLine).substr(i * countWidth, countWidth);
        if (count.empty() || count[0] != countedSections[i])
            continue;
        const std::string announced(trimmed(count.substr(1)));
        if (parseNumber(announced).value_or(0) > m_counts[i])
            missing += (missing.empty() ? "" : ", ") + std::to_string(m_counts[i]) + " of "
                + announced + " lines marked " + countedSections[i];
    }
    if (missing.empty())
        return {};
    return fileName(m_path) + " is damaged: it has only " + missing + ".";
}

/// The first two values of the section are the delimiters, as texts: "1H,,1H;,".
void IgesLines::readDelimiters(const std::string &line)
{
    std::size_t at = 0;
    if (line.compare(0, 2, "1H") == 0) {
        m_delimiter = line[2];
        at = 3;
    }
    if (line.compare(at + 1, 2, "1H") == 0)
        m_end = line[at + 3];
}

bool IgesLines::isLineFinite(const std::string &line)
{
    constexpr std::size_t dataColumns = 64;
    // Whatever an entity does wrong, the next one begins afresh.
    const std::string entity = line.substr(dataColumns, sectionColumn - dataColumns);
    if (entity != m_entity) {
        m_entity = entity;
        m_textLeft = 0;
        m_value.clear();
    }
    for (std::size_t i = 0; i < dataColumns; ++i) {
        const char c = line[i];
        if (m_textLeft > 0) {
            --m_textLeft;
        } else if (c == m_delimiter || c == m_end) {
            if (!isValueFinite())
                return false;
            m_value.clear();
            if (c == m_end)
                break; // what follows is a comment
        } else if (c == 'H' && !m_value.empty()
                   && m_value.find_first_not_of("0123456789") == std::string::npos) {
            m_textLeft = std::strtoul(m_value.c_str(), nullptr, 10);
            m_value.clear();
        } else if (c != ' ') {
            m_value += c == 'D' || c == 'd' ? 'E' : c; // as FORTRAN writes exponents
        }
    }
    return true;
}

bool IgesLines::isValueFinite() const
{
    char *end = nullptr;
    const double number = std::strtod(m_value.c_str(), &end);
    return std::isfinite(number) || *end != '\0';
}

} // namespace tnconvert
