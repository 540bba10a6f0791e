#include "host/services/HostServices.h"

#include "host/import/TmpDirectory.h"
#include "host/scene/Scene.h"
#include "host/services/ControllerService.h"
#include "host/services/FileService.h"
#include "host/services/HostIcons.h"
#include "host/services/SceneService.h"
#include "host/services/UsageData.h"
#include "platform/tnFileIO.h"
#include "platform/tnInterfaceFactory.h"
#include "platform/tnKernelServiceFactory.h"

namespace tnhost {

HostServices::HostServices(const Options &options)
    : m_converterProgram(options.converterProgram)
    , m_scene(std::make_unique<Scene>())
    , m_sceneService(std::make_unique<SceneService>(*m_scene))
    , m_controllerService(std::make_unique<ControllerService>())
{
    // The file service may ask for the preferences as soon as it exists.
    TmpDirectory::setPreferred(options.tmpDirectory);
    tnInterfaceFactory::the().setPulse(&UsageData::the());
    HostIcons::install();

    m_fileService = std::make_unique<FileService>(
        *m_scene, options.converterProgram, options.limits,
        options.cacheSize > 0
            ? std::make_unique<ResultStore>(ResultStore::usualFolder(), options.cacheSize)
            : nullptr);
    if (options.maxProcesses >= 0)
        m_fileService->setMaxParallelProcesses(options.maxProcesses);
    announceReadTypes();

    tnKernelServiceFactory &factory = tnKernelServiceFactory::the();
    factory.registerService<tnScenegraphService>(m_sceneService.get());
    factory.registerService<tnControllerService>(m_controllerService.get());
    factory.registerService<tnFileIOService>(m_fileService.get());
}

HostServices::~HostServices()
{
    tnKernelServiceFactory &factory = tnKernelServiceFactory::the();
    factory.unregisterService<tnFileIOService>();
    factory.unregisterService<tnControllerService>();
    factory.unregisterService<tnScenegraphService>();
    m_fileService.reset();
}

void HostServices::announceReadTypes() const
{
    std::vector<tnFileIO::ReadFileType> types;
    for (const tnCADFileTypes::FileTypeFacts &facts : tnCADFileTypes::fileTypeFacts) {
        tnFileIO::ReadFileType type;
        type.name = QString::fromUtf8(facts.name);
        for (const char *suffix : facts.suffixes) {
            // Far more is supported by name than there are converters for; the service loads
            // directly what it can convert.
            if (suffix
                && m_fileService->isDirectLoadCandidate(QStringLiteral("any.")
                                                        + QLatin1String(suffix)))
                type.suffixes << QString::fromUtf8(suffix);
        }
        if (!type.suffixes.isEmpty())
            types.push_back(std::move(type));
    }
    tnFileIO::setReadFileTypes(std::move(types));
}

} // namespace tnhost
