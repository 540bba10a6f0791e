#include "host/services/ControllerService.h"

void ControllerService::showAssetManager(bool show)
{
    m_assetManagerWanted = show;
    emit assetManagerRequested(show);
}
