#include "readers/ReaderRegistry.h"

#include "core/Text.h"
#include "protocol/Formats.h"
#include "readers/IgesReader.h"
#include "readers/ObjReader.h"
#include "readers/StepReader.h"
#include "readers/StlReader.h"
#include "readers/vrml/VrmlReader.h"

#include <filesystem>
#include <iterator>

namespace tnconvert {

namespace {

template <typename T>
std::unique_ptr<Reader> create()
{
    return std::make_unique<T>();
}

struct Entry {
    tnprotocol::Format format;
    std::unique_ptr<Reader> (*createReader)();
};

constexpr Entry registry[] = {
    {tnprotocol::step, &create<StepReader>}, {tnprotocol::iges, &create<IgesReader>},
    {tnprotocol::stl, &create<StlReader>},   {tnprotocol::obj, &create<ObjReader>},
    {tnprotocol::vrml, &create<VrmlReader>},
};
static_assert(std::size(registry) == tnprotocol::formats.size(), "Each format needs a reader.");

} // namespace

std::unique_ptr<Reader> readerByName(std::string_view name)
{
    const std::string wanted = lowerCase(name);
    for (const auto &[format, createReader] : registry) {
        if (lowerCase(format.name) == wanted)
            return createReader();
    }
    return nullptr;
}

std::unique_ptr<Reader> readerBySuffix(const std::string &path)
{
    const std::string suffix = lowerCase(std::filesystem::path(path).extension().string());
    for (const auto &[format, createReader] : registry) {
        for (const char *candidate : format.suffixes) {
            if (candidate && suffix == std::string(".") + candidate)
                return createReader();
        }
    }
    return nullptr;
}

} // namespace tnconvert
