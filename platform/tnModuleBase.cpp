#include "platform/tnModuleBase.h"

#include "platform/tnController.h"

tnModuleBase::tnModuleBase(const char *name, const char *menu, unsigned int flags, QPixmap *icon)
    : m_name(QString::fromUtf8(name))
    , m_menu(QString::fromUtf8(menu))
    , m_flags(flags)
    , m_icon(icon)
{
    tnController::addModule(this);
}

tnModuleBase::~tnModuleBase()
{
    tnController::removeModule(this);
}

void tnModuleBase::update() { }

void tnModuleBase::loop() { }
