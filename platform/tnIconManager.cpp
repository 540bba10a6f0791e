#include "platform/tnIconManager.h"

namespace {

tnIconManager::Provider &provider()
{
    static auto *const function = new tnIconManager::Provider;
    return *function;
}

} // namespace

QIcon tnIconManager::getIcon(const QString &name, const QString &variant)
{
    return provider() ? provider()(name, variant) : QIcon();
}

void tnIconManager::setProvider(Provider newProvider)
{
    provider() = std::move(newProvider);
}
