#include "host/import/FragmentLoader.h"

#include "host/scene/GlbReader.h"

#include <algorithm>
#include <utility>

namespace tnhost {

FragmentLoader::FragmentLoader() = default;

FragmentLoader::~FragmentLoader() = default;

void FragmentLoader::load(const QString &path, LoadObserver &observer)
{
    m_queue.push_back({path, &observer});
    QMetaObject::invokeMethod(this, &FragmentLoader::startNext, Qt::QueuedConnection);
}

void FragmentLoader::cancel(const LoadObserver &observer)
{
    if (m_current == &observer)
        m_current = nullptr;
    m_queue.erase(std::remove_if(m_queue.begin(), m_queue.end(),
                                 [&observer](const Request &request) {
                                     return request.observer == &observer;
                                 }),
                  m_queue.end());
}

void FragmentLoader::startNext()
{
    if (m_isReading || m_queue.empty())
        return;
    const Request request = m_queue.front();
    m_queue.pop_front();
    m_current = request.observer;
    m_isReading = true;
    m_thread.run([this, path = request.path] {
        QString error;
        const std::shared_ptr<const SceneFragment> fragment = GlbReader::read(path, &error);
        QMetaObject::invokeMethod(
            this, [this, fragment, error] { onRead(fragment, error); }, Qt::QueuedConnection);
    });
    request.observer->onReadingStarted();
}

void FragmentLoader::onRead(const std::shared_ptr<const SceneFragment> &fragment,
                            const QString &error)
{
    m_isReading = false;
    LoadObserver *observer = std::exchange(m_current, nullptr);
    QMetaObject::invokeMethod(this, &FragmentLoader::startNext, Qt::QueuedConnection);
    if (observer)
        observer->onFragmentRead(fragment, error);
}

} // namespace tnhost
