#include "host/import/ConversionWatch.h"

namespace tnhost {

ConversionWatch::ConversionWatch(int silence)
    : m_silence(silence)
{
}

void ConversionWatch::restart()
{
    m_silent = 0;
    m_progress = {};
}

void ConversionWatch::notifyProgress(double percent, const QString &message)
{
    std::pair<double, QString> progress(percent, message);
    if (progress == m_progress)
        return;
    m_progress = std::move(progress);
    notifyNews();
}

bool ConversionWatch::tick(int interval)
{
    m_silent += interval;
    return m_silence > 0 && m_silent >= m_silence;
}

} // namespace tnhost
