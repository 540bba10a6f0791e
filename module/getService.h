#pragma once

#include "platform/tnBaseService.h"
#include "platform/tnKernelServiceFactory.h"

#include <cstdio>
#include <typeinfo>

/// The host's service of class T, not owned. Null, with a line on the standard error stream, when
/// the host has none.
template <typename T>
T *getService()
{
    const auto &services = tnKernelServiceFactory::the().services();
    const auto found = services.find(typeid(T).hash_code());
    if (found == services.end()) {
        std::fprintf(stderr, "tnKernelServiceFactory: couldn't find class '%s'!\n",
                     typeid(T).name());
        return nullptr;
    }
    if (!found->second) {
        std::fprintf(stderr, "tnKernelServiceFactory: service '%s' is NULL!\n", typeid(T).name());
        return nullptr;
    }
    return dynamic_cast<T *>(found->second);
}
