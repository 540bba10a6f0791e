#include "platform/tnScenegraphService.h"

#include "platform/tnKernelServiceFactory.h"

tnScenegraphService::~tnScenegraphService() = default;

tnScenegraphService *tnScenegraphService::the()
{
    const auto &services = tnKernelServiceFactory::the().services();
    const auto found = services.find(typeid(tnScenegraphService).hash_code());
    return found == services.end() ? nullptr : dynamic_cast<tnScenegraphService *>(found->second);
}
