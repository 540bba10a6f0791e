#pragma once

#include "platform/tnPlatformExport.h"

#include <QtGui/QIcon>

#include <functional>

/// The host's icons by name.
class TNPLATFORM_EXPORT tnIconManager {
public:
    using Provider = std::function<QIcon(const QString &name, const QString &variant)>;

    tnIconManager() = delete;

    /// A null icon for an unknown name. An empty variant is the standard one.
    static QIcon getIcon(const QString &name, const QString &variant);

    /// Where icons come from; set by the host.
    static void setProvider(Provider provider);
};
