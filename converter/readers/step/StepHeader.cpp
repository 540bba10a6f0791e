#include "readers/step/StepHeader.h"

#include "core/FileProbe.h"
#include "core/Text.h"

namespace tnconvert {

bool isAnalysisModel(const std::string &path)
{
    // Lists of authors can be long.
    constexpr std::size_t headSize = 1 << 16;
    const std::string head = lowerCase(readHead(path, headSize));
    const std::size_t begin = head.find("file_schema");
    if (begin == std::string::npos)
        return false;
    const std::string schema = head.substr(begin, head.find(';', begin) - begin);
    // The second is the name of its first edition.
    return schema.find("ap209") != std::string::npos
        || schema.find("structural_analysis_design") != std::string::npos;
}

} // namespace tnconvert
