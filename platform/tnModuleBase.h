#pragma once

#include "platform/tnPlatformExport.h"

#include <QtCore/QObject>

class QPixmap;
class tnMessage;

/// Base of every module. A module is known to tnController::modules() from its construction to its
/// destruction. All virtuals are called in the GUI thread.
class TNPLATFORM_EXPORT tnModuleBase : public QObject {
    Q_OBJECT

public:
    /// The name of the module; the menu that offers it ("IGNORE": none); flag bits that the host
    /// interprets; an icon or null, not owned. The texts are copied.
    tnModuleBase(const char *name, const char *menu, unsigned int flags, QPixmap *icon);
    ~tnModuleBase() override;

    QString name() const { return m_name; }
    QString menu() const { return m_menu; }
    unsigned int flags() const { return m_flags; }
    QPixmap *icon() const { return m_icon; }

    /// A module-specific object for the host, or null.
    virtual void *moduleQuery() = 0;
    /// The host's word that the set of modules is complete.
    virtual void moduleNotify() = 0;
    /// Once per change of the scene.
    virtual void update();
    /// Once per turn of the host's render loop.
    virtual void loop();
    /// A message to all modules. Gives 0 unless the module wants to stop its way to the others.
    virtual int message(tnMessage &message) = 0;

private:
    QString m_name;
    QString m_menu;
    unsigned int m_flags;
    QPixmap *m_icon;
};
