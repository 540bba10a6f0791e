#include "worker/ProgressThrottle.h"

#include <algorithm>

namespace tnconvert {

bool ProgressThrottle::passes(double &percent, const std::string &message)
{
    percent = std::clamp(percent, std::max(m_percent, 0.0), 100.0);
    const Clock::time_point now = Clock::now();
    const bool isNews = message != m_message || (percent >= 100 && m_percent < 100);
    const bool isDue = percent > m_percent && now - m_last >= std::chrono::milliseconds(50);
    if (!isNews && !isDue)
        return false;
    m_percent = percent;
    m_message = message;
    m_last = now;
    return true;
}

} // namespace tnconvert
