#include "readers/vrml/VrmlFile.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Limits.h"
#include "core/MappedFile.h"
#include "core/Text.h"

#include <memory>

#include <zlib.h>

namespace tnconvert {

namespace {

std::string inflated(const std::string &path)
{
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(path.c_str(), "rb"), &gzclose);
    if (!file)
        throw ConversionError(fileName(path) + " cannot be read.");
    std::string content;
    std::string block(1 << 18, '\0');
    int count = 0;
    while ((count = gzread(file.get(), block.data(), unsigned(block.size()))) > 0) {
        content.append(block, 0, std::size_t(count));
        if (content.size() > unpackedBound)
            throw ConversionError(fileName(path) + " unpacks to more than "
                                  + std::to_string(unpackedBound) + " bytes; it is not read.");
    }
    int error = Z_OK;
    gzerror(file.get(), &error);
    if (count < 0 || error == Z_BUF_ERROR)
        throw ConversionError(fileName(path) + " is damaged: it cannot be decompressed.");
    return content;
}

} // namespace

std::vector<VrmlNodePtr> readVrmlFile(const std::string &path, const VrmlParser::Warn &warn,
                                      VrmlLosses &losses)
{
    checkReadable(path);
    const bool isCompressed = readHead(path, 2) == "\x1F\x8B";
    const MappedFile file(path);
    const std::string unpacked = isCompressed ? inflated(path) : std::string();
    const std::string_view text = withoutByteOrderMark(isCompressed ? unpacked : file.bytes());
    if (text.substr(0, 8) == "#VRML V1")
        throw ConversionError(fileName(path)
                              + " is a VRML 1.0 file, which cannot be read; please export it as "
                                "VRML 2.0 (VRML97).");
    if (text.substr(0, 10) != "#VRML V2.0")
        throwWrongContent(path, "a VRML97 file", "it does not begin with #VRML V2.0 utf8");
    return VrmlParser(text, fileName(path), warn, losses).parse();
}

} // namespace tnconvert
