#include "platform/tnController.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

// A plug-in that takes the command and does nothing about it; for a long time, if so wanted.

extern "C" __attribute__((visibility("default"))) const char *getPluginVersion()
{
    return "15.3";
}

extern "C" __attribute__((visibility("default"))) void initPlugin()
{
    tnController::addCB("importCAD", [](tnMessage &) {
        if (!std::getenv("TN_MUTE_BLOCKS"))
            return;
        std::puts("blocked");
        std::fflush(stdout);
        for (int i = 0; i < 60; ++i)
            ::sleep(1); // a signal ends each of them
    });
}
