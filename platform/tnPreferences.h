#pragma once

#include "platform/tnPlatformExport.h"

class tnMessage;

/// The host's preferences, as attributes of one message. The host fills it before it loads modules.
class TNPLATFORM_EXPORT tnPreferences {
public:
    tnPreferences() = delete;

    static tnMessage &getData();
};
