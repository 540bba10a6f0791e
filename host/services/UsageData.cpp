#include "host/services/UsageData.h"

UsageData &UsageData::the()
{
    static auto *const data = new UsageData;
    return *data;
}
