#include "host/import/BackgroundThread.h"

namespace tnhost {

BackgroundThread::~BackgroundThread()
{
    m_isEnding = true;
    m_thread.quit();
    m_thread.wait();
}

void BackgroundThread::run(const std::function<void()> &work)
{
    if (!m_thread.isRunning()) {
        m_thread.start();
        if (m_thread.isRunning())
            m_worker.moveToThread(&m_thread);
    }
    // A loop that has been told to quit still does all that waits for it.
    QMetaObject::invokeMethod(
        &m_worker,
        [this, work] {
            if (!m_isEnding)
                work();
        },
        Qt::QueuedConnection);
}

} // namespace tnhost
