#pragma once

#include "platform/tnPlatformExport.h"

#include <cstddef>
#include <typeinfo>
#include <unordered_map>

class tnBaseService;

/// Where the host's services are found, by their class. The host registers each service under the
/// abstract class that stands for it and keeps the ownership.
class TNPLATFORM_EXPORT tnKernelServiceFactory {
public:
    using Services = std::unordered_map<std::size_t, tnBaseService *>;

    static tnKernelServiceFactory &the();

    /// Registers, or replaces, the service of class T; null is kept as null.
    template <typename T>
    void registerService(T *service)
    {
        m_services[typeid(T).hash_code()] = service;
    }

    template <typename T>
    void unregisterService()
    {
        m_services.erase(typeid(T).hash_code());
    }

    /// The services by the hash code of their class's type information.
    const Services &services() const { return m_services; }

private:
    tnKernelServiceFactory() = default;

    Services m_services;
};
