#include "platform/tnKernelServiceFactory.h"

tnKernelServiceFactory &tnKernelServiceFactory::the()
{
    // Never destroyed: objects in static storage may look for services until the very end.
    static auto *const factory = new tnKernelServiceFactory;
    return *factory;
}
