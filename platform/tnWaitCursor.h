#pragma once

#include "platform/tnPlatformExport.h"

/// Shows the wait cursor for as long as it lives. May be nested; without a GUI it does nothing.
class TNPLATFORM_EXPORT tnWaitCursor {
public:
    tnWaitCursor();
    ~tnWaitCursor();
    Q_DISABLE_COPY_MOVE(tnWaitCursor)
};
