#include "readers/StepReader.h"

#include "readers/kernel/Kernel.h"
#include "readers/step/StepAssembly.h"

namespace tnconvert {

Scene StepReader::read(const std::string &path, const Settings &settings, Report &report)
{
    prepareKernel();
    return StepAssembly(settings, report).read(path);
}

} // namespace tnconvert
