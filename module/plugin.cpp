#include "module/tnCAD.h"

extern "C" {

/// The version of the host for which the plug-in is built.
Q_DECL_EXPORT const char *getPluginVersion()
{
    return "15.3";
}

/// Makes the module object, which lives until the process ends. Further calls do nothing.
Q_DECL_EXPORT void initPlugin()
{
    static tnCAD module;
}
}
