#pragma once

#include "platform/tnPlatformExport.h"

/// Root of all services that a host offers through tnKernelServiceFactory.
class TNPLATFORM_EXPORT tnBaseService {
public:
    tnBaseService() = default;
    virtual ~tnBaseService();
    Q_DISABLE_COPY_MOVE(tnBaseService)
};
