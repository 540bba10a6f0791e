#include "readers/IgesReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Text.h"
#include "readers/kernel/DocumentSceneBuilder.h"
#include "readers/kernel/Kernel.h"

#include <IGESCAFControl_Reader.hxx>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace tnconvert {

namespace {

/// The column of a line's section letter.
constexpr std::size_t sectionColumn = 72;

char sectionOf(std::string_view line)
{
    return line.size() > sectionColumn ? line[sectionColumn] : ' ';
}

void checkIgesFile(const std::string &path)
{
    const std::string head = readHead(path, 512);
    const std::string_view firstLine = std::string_view(head).substr(0, head.find_first_of("\r\n"));
    const char section = sectionOf(firstLine);
    if (section == 'B' || section == 'C')
        throw ConversionError(fileName(path)
                              + " is an Iges file in binary or compressed form, which cannot be "
                                "read; please export it in the text form.");
    if (section != 'S')
        throwWrongContent(path, "an Iges file", "its first line is not marked S in column 73");

    const std::string tail = readTail(path, 4096);
    std::string_view rest = trimmed(tail);
    const std::size_t lastBreak = rest.find_last_of("\r\n");
    const std::string_view lastLine =
        lastBreak == std::string_view::npos ? rest : rest.substr(lastBreak + 1);
    if (sectionOf(lastLine) != 'T')
        throw ConversionError(fileName(path)
                              + " is truncated: its last line, marked T in column 73, is missing.");
}

/// Reads the values in column 1 to 64 of the lines marked P, which is all the kernel has of the
/// entities. It runs without end on a number that no double can hold.
class IgesNumbers {
public:
    /// Gives false when there is a number that is none.
    bool areFinite(const std::string &path)
    {
        std::ifstream file(path);
        bool isGlobalRead = false;
        for (std::string line; std::getline(file, line);) {
            if (sectionOf(line) == 'G' && !std::exchange(isGlobalRead, true))
                readDelimiters(line);
            if (sectionOf(line) == 'P' && !isLineFinite(line))
                return false;
        }
        return true;
    }

private:
    /// The first two values of the section are the delimiters, as texts: "1H,,1H;,".
    void readDelimiters(const std::string &line)
    {
        std::size_t at = 0;
        if (line.compare(0, 2, "1H") == 0) {
            m_delimiter = line[2];
            at = 3;
        }
        if (line.compare(at + 1, 2, "1H") == 0)
            m_end = line[at + 3];
    }

    bool isLineFinite(const std::string &line)
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

    bool isValueFinite() const
    {
        char *end = nullptr;
        const double number = std::strtod(m_value.c_str(), &end);
        return std::isfinite(number) || *end != '\0';
    }

    char m_delimiter = ',';
    char m_end = ';';
    std::string m_entity;
    std::string m_value; ///< as far as it has been read; it may go on in the next line
    std::size_t m_textLeft = 0; ///< characters of a text that are still to come
};

} // namespace

Scene IgesReader::read(const std::string &path, const Settings &settings, Report &report)
{
    checkIgesFile(path);
    if (!IgesNumbers().areFinite(path))
        throw ConversionError(fileName(path) + " is damaged: it has impossible coordinates.");
    prepareKernel();
    report.progress(0, "Reading");
    KernelDocument document;
    {
        IGESCAFControl_Reader reader;
        reader.SetColorMode(Standard_True);
        reader.SetNameMode(Standard_True);
        reader.SetLayerMode(Standard_True);
        reader.SetReadVisible(!settings.importInvisibleSurfaces && !settings.importInvisibleCurves);
        if (reader.ReadFile(path.c_str()) != IFSelect_RetDone)
            throw ConversionError(fileName(path) + " is damaged: its entities cannot be read.");
        const Handle(KernelProgress) progress = new KernelProgress(report, 40, 60, "Transferring");
        if (!reader.Transfer(document.handle(), progress->Start()))
            throw ConversionError(fileName(path) + " contains no shape that can be read.");
    }
    Scene scene;
    scene.roots = DocumentSceneBuilder(document.handle(), settings, report, 60, 90).build();
    return scene;
}

} // namespace tnconvert
