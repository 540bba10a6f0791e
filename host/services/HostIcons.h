#pragma once

#include <QtCore/QString>
#include <QtGui/QIcon>

namespace tnhost {

/// The icons that come with the host.
class HostIcons {
public:
    HostIcons() = delete;

    /// Makes them known to tnIconManager.
    static void install();
    /// A null icon for an unknown name.
    static QIcon icon(const QString &name);
};

} // namespace tnhost
