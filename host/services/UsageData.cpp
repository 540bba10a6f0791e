#include "host/services/UsageData.h"

namespace tnhost {

UsageData &UsageData::the()
{
    static auto *const data = new UsageData;
    return *data;
}

} // namespace tnhost
