#pragma once

#include "platform/tnPlatformExport.h"

/// The host's usage data: how busy the application is.
class TNPLATFORM_EXPORT tnPulseInterface {
public:
    tnPulseInterface() = default;
    virtual ~tnPulseInterface();
    Q_DISABLE_COPY_MOVE(tnPulseInterface)

    /// Something worth counting has happened. Cheap; called per progress step.
    virtual void notifyActivity() = 0;
};
