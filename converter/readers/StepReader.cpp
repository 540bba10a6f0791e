#include "readers/StepReader.h"

#include "readers/kernel/DocumentSceneBuilder.h"
#include "readers/kernel/Kernel.h"
#include "readers/kernel/StepDocumentReader.h"

namespace tnconvert {

Scene StepReader::read(const std::string &path, const Settings &settings, Report &report)
{
    checkStepFile(path);
    prepareKernel();
    KernelDocument document;
    Scene scene;
    {
        // The reader's own model of the file is not needed while tessellating.
        StepDocumentReader reader(report, settings.importReferencedFiles);
        reader.load(path, document.handle());
        scene.missingParts = reader.missingParts();
        scene.losses = reader.losses();
    }
    scene.roots = DocumentSceneBuilder(document.handle(), settings, report, 60, 90).build();
    return scene;
}

} // namespace tnconvert
