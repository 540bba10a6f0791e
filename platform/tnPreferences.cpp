#include "platform/tnPreferences.h"

#include "platform/tnMessage.h"

tnMessage &tnPreferences::getData()
{
    static auto *const data = new tnMessage;
    return *data;
}
