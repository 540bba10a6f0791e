#include "host/import/FragmentLoader.h"

#include "host/scene/GlbReader.h"

#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

namespace tnhost {

FragmentLoader::FragmentLoader()
{
    m_thread.setMaxThreadCount(1);
}

FragmentLoader::~FragmentLoader()
{
    m_thread.waitForDone();
}

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
    if (m_watcher || m_queue.empty())
        return;
    const Request request = m_queue.front();
    m_queue.pop_front();
    m_current = request.observer;
    m_watcher = std::make_unique<QFutureWatcher<Result>>();
    connect(m_watcher.get(), &QFutureWatcher<Result>::finished, this, &FragmentLoader::onRead);
    m_watcher->setFuture(QtConcurrent::run(&m_thread, [path = request.path] {
        Result result;
        result.fragment = GlbReader::read(path, &result.error);
        return result;
    }));
    request.observer->onReadingStarted();
}

void FragmentLoader::onRead()
{
    const Result result = m_watcher->result();
    m_watcher->setParent(this);
    m_watcher.release()->deleteLater();
    LoadObserver *observer = std::exchange(m_current, nullptr);
    QMetaObject::invokeMethod(this, &FragmentLoader::startNext, Qt::QueuedConnection);
    if (observer)
        observer->onFragmentRead(result.fragment, result.error);
}

} // namespace tnhost
