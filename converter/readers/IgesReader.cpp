#include "readers/IgesReader.h"

#include "core/Text.h"
#include "readers/iges/IgesDamage.h"
#include "readers/iges/IgesLines.h"
#include "readers/iges/IgesTransfer.h"
#include "readers/kernel/DocumentSceneBuilder.h"
#include "readers/kernel/Kernel.h"

namespace tnconvert {

namespace {

void addLoss(const std::string &loss, Scene &scene)
{
    if (!loss.empty())
        scene.losses.push_back(loss);
}

} // namespace

Scene IgesReader::read(const std::string &path, const Settings &settings, Report &report)
{
    Scene scene;
    addLoss(IgesLines(path).loss(), scene);
    prepareKernel();
    report.progress(0, "Reading");
    IgesTransfer transfer(path, settings, report);
    const IgesDamage damage(transfer.session(), settings);
    addLoss(damage.loss(fileName(path)), scene);
    scene.isFiltered = damage.leavesHiddenOut();
    DocumentSceneBuilder builder(transfer.document(), settings, report, 60, 90);
    scene.roots = builder.build();
    addLoss(builder.faces().sentence(fileName(path)), scene);
    for (const std::string &part : builder.lostParts())
        addLoss("The part \"" + part + "\" could not be tessellated.", scene);
    scene.isFiltered = scene.isFiltered || builder.faces().isFiltered;
    return scene;
}

} // namespace tnconvert
