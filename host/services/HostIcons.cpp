#include "host/services/HostIcons.h"

#include "platform/tnIconManager.h"

#include <QtCore/QFile>

// The resources stand in a static library, from which nothing is linked unless it is called; the
// macro may not stand within a namespace.
static void initResources()
{
    Q_INIT_RESOURCE(host);
}

namespace tnhost {

void HostIcons::install()
{
    initResources();
    // There is one look only, so the variant does not matter.
    tnIconManager::setProvider([](const QString &name, const QString &) { return icon(name); });
}

QIcon HostIcons::icon(const QString &name)
{
    initResources();
    const QString path = QStringLiteral(":/host/%1.svg").arg(name);
    return QFile::exists(path) ? QIcon(path) : QIcon();
}

} // namespace tnhost
