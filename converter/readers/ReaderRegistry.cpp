#include "readers/ReaderRegistry.h"

#include "core/Text.h"
#include "readers/IgesReader.h"
#include "readers/ObjReader.h"
#include "readers/StepReader.h"
#include "readers/StlReader.h"
#include "readers/vrml/VrmlReader.h"

#include <algorithm>
#include <filesystem>

namespace tnconvert {

namespace {

template <typename T>
std::unique_ptr<Reader> create()
{
    return std::make_unique<T>();
}

} // namespace

const std::vector<Format> &formats()
{
    static const std::vector<Format> table = {
        {"Step", {"stp", "step", "p21"}, &create<StepReader>},
        {"Iges", {"igs", "iges"}, &create<IgesReader>},
        {"STL", {"stl"}, &create<StlReader>},
        {"Obj", {"obj"}, &create<ObjReader>},
        {"VRML", {"wrl", "vrml", "wrz"}, &create<VrmlReader>},
    };
    return table;
}

const Format *formatByName(std::string_view name)
{
    const std::string wanted = lowerCase(name);
    const auto &all = formats();
    const auto found = std::find_if(all.begin(), all.end(), [&wanted](const Format &format) {
        return lowerCase(format.name) == wanted;
    });
    return found == all.end() ? nullptr : &*found;
}

const Format *formatBySuffix(const std::string &path)
{
    const std::string suffix = lowerCase(std::filesystem::path(path).extension().string());
    for (const Format &format : formats()) {
        for (const char *candidate : format.suffixes) {
            if (suffix == std::string(".") + candidate)
                return &format;
        }
    }
    return nullptr;
}

} // namespace tnconvert
