#pragma once

#include "platform/tnInterfaceFactory.h"

class tnPulseInterface;

/// The host's usage-data interface, fetched on first use and kept for the life of the process.
/// Never null, not owned.
inline tnPulseInterface *getPulse()
{
    static tnPulseInterface *const pulse = tnInterfaceFactory::the().pulse();
    return pulse;
}
