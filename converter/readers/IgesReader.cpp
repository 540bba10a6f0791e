#include "readers/IgesReader.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "readers/FileProbe.h"
#include "readers/kernel/DocumentSceneBuilder.h"
#include "readers/kernel/Kernel.h"

#include <IGESCAFControl_Reader.hxx>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

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

/// The kernel runs without end on a number that no double can hold. In column 1 to 64 of the lines
/// marked P there are the entities' values, apart from a few texts, which begin with their length.
void checkNumbers(const std::string &path)
{
    constexpr std::size_t dataColumns = 64;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (sectionOf(line) != 'P')
            continue;
        line.resize(dataColumns);
        std::replace(line.begin(), line.end(), 'D', 'E'); // as FORTRAN writes exponents
        for (std::size_t begin = 0; begin != std::string::npos;) {
            const std::size_t number = line.find_first_not_of(" ,;", begin);
            if (number == std::string::npos)
                break;
            const bool isNumber = line.find_first_of("+-.0123456789", number) == number;
            if (isNumber && !std::isfinite(std::strtod(line.c_str() + number, nullptr)))
                throw ConversionError(fileName(path)
                                      + " is damaged: it has impossible coordinates.");
            begin = line.find_first_of(",;", number);
        }
    }
}

} // namespace

Scene IgesReader::read(const std::string &path, const Settings &settings, Report &report)
{
    checkIgesFile(path);
    checkNumbers(path);
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
