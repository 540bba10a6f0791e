#include "readers/IgesReader.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "readers/iges/IgesDamage.h"
#include "readers/iges/IgesLines.h"
#include "readers/kernel/DocumentSceneBuilder.h"
#include "readers/kernel/Kernel.h"
#include "readers/kernel/KernelGuard.h"

#include <IGESCAFControl_Reader.hxx>

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
    KernelDocument document;
    {
        IGESCAFControl_Reader reader;
        reader.SetColorMode(Standard_True);
        reader.SetNameMode(Standard_True);
        reader.SetLayerMode(Standard_True);
        reader.SetReadVisible(!settings.importInvisibleSurfaces && !settings.importInvisibleCurves);
        bool isRead = false;
        KernelGuard::run([&] { isRead = reader.ReadFile(path.c_str()) == IFSelect_RetDone; });
        if (!isRead)
            throw ConversionError(fileName(path) + " is damaged: its entities cannot be read.");
        const Handle(KernelProgress) progress = new KernelProgress(report, 40, 60, "Transferring");
        if (!KernelGuard::run([&] { reader.Transfer(document.handle(), progress->Start()); }))
            throw ConversionError(fileName(path)
                                  + " is damaged: its entities cannot become shapes.");
        const IgesDamage damage(reader.WS(), settings);
        addLoss(damage.loss(fileName(path)), scene);
        scene.isFiltered = damage.leavesHiddenOut();
    }
    DocumentSceneBuilder builder(document.handle(), settings, report, 60, 90);
    scene.roots = builder.build();
    addLoss(builder.faces().sentence(fileName(path)), scene);
    for (const std::string &part : builder.lostParts())
        addLoss("The part \"" + part + "\" could not be tessellated.", scene);
    scene.isFiltered = scene.isFiltered || builder.faces().isFiltered;
    return scene;
}

} // namespace tnconvert
