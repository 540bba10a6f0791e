#include "platform/tnInterfaceFactory.h"

#include "platform/tnPulseInterface.h"

namespace {

class SilentPulse : public tnPulseInterface {
public:
    void notifyActivity() override { }
};

tnPulseInterface *silentPulse()
{
    static auto *const pulse = new SilentPulse;
    return pulse;
}

} // namespace

tnPulseInterface::~tnPulseInterface() = default;

tnInterfaceFactory::tnInterfaceFactory()
    : m_pulse(silentPulse())
{
}

tnInterfaceFactory &tnInterfaceFactory::the()
{
    static auto *const factory = new tnInterfaceFactory;
    return *factory;
}

void tnInterfaceFactory::setPulse(tnPulseInterface *pulse)
{
    m_pulse = pulse ? pulse : silentPulse();
}
