#include "readers/vrml/VrmlReader.h"

#include "readers/vrml/VrmlSceneBuilder.h"

namespace tnconvert {

Scene VrmlReader::read(const std::string &path, const Settings &settings, Report &report)
{
    return VrmlSceneBuilder(settings, report).build(path);
}

} // namespace tnconvert
