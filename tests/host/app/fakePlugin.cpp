// A plug-in, or what is left of one: the build compiles this file once per kind.

#include <cstdlib>

#ifdef FAKE_VERSION
extern "C" __attribute__((visibility("default"))) const char *getPluginVersion()
{
    return FAKE_VERSION;
}
#endif

#ifndef FAKE_WITHOUT_INIT
extern "C" __attribute__((visibility("default"))) void initPlugin()
{
    setenv("TN_FAKE_PLUGIN", "started", 1);
}
#endif
