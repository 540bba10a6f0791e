#pragma once

#include "platform/tnControllerService.h"
#include "platform/tnKernelServiceFactory.h"
#include "platform/tnScenegraphService.h"
#include "tests/support/ScriptedFileService.h"

/// A scene that answers what a test has set.
class ScriptedScenegraph : public tnScenegraphService {
public:
    std::vector<tndNode> selection;
    bool directLoadAllowed = true;

    std::vector<tndNode> selectedNodes(bool) override { return selection; }
    tndNode rootNode() override { return tndNode(1); }
    bool allowsDirectLoad() override { return directLoadAllowed; }
};

/// Counts how often the asset manager was asked for.
class ScriptedController : public tnControllerService {
public:
    int assetManagerShown = 0;

    void showAssetManager(bool show) override { assetManagerShown += show; }
};

/// All services that the plug-in uses, registered for as long as this object lives.
struct ScriptedServices {
    ScriptedFileService files;
    ScriptedScenegraph scene;
    ScriptedController controller;

    ScriptedServices()
    {
        auto &factory = tnKernelServiceFactory::the();
        factory.registerService<tnFileIOService>(&files);
        factory.registerService<tnScenegraphService>(&scene);
        factory.registerService<tnControllerService>(&controller);
    }
    ~ScriptedServices()
    {
        auto &factory = tnKernelServiceFactory::the();
        factory.unregisterService<tnFileIOService>();
        factory.unregisterService<tnScenegraphService>();
        factory.unregisterService<tnControllerService>();
    }
    Q_DISABLE_COPY_MOVE(ScriptedServices)
};
