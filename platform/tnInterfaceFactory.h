#pragma once

#include "platform/tnPlatformExport.h"

class tnPulseInterface;

/// Where optional interfaces of the host are found.
class TNPLATFORM_EXPORT tnInterfaceFactory {
public:
    static tnInterfaceFactory &the();

    /// Never null: without one from the host it is an object that counts nothing. Callers keep the
    /// pointer, so a host sets its own once, before it loads modules, and never destroys it.
    tnPulseInterface *pulse() const { return m_pulse; }
    void setPulse(tnPulseInterface *pulse);

private:
    tnInterfaceFactory();

    tnPulseInterface *m_pulse;
};
