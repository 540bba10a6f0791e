#pragma once

#include "platform/tnBaseService.h"

/// Access to the host's own windows.
class TNPLATFORM_EXPORT tnControllerService : public tnBaseService {
public:
    ~tnControllerService() override;

    /// Shows and raises the asset manager, or hides it.
    virtual void showAssetManager(bool show) = 0;
};
