#include "platform/tnController.h"

// A plug-in that takes the command and does nothing about it.

extern "C" __attribute__((visibility("default"))) const char *getPluginVersion()
{
    return "15.3";
}

extern "C" __attribute__((visibility("default"))) void initPlugin()
{
    tnController::addCB("importCAD", [](tnMessage &) {});
}
