#include "host/services/ControllerService.h"

namespace tnhost {

void ControllerService::showAssetManager(bool show)
{
    m_assetManagerWanted = show;
    emit assetManagerRequested(show);
}

} // namespace tnhost
