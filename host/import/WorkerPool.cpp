#include "host/import/WorkerPool.h"

#include <algorithm>
#include <tuple>

namespace tnhost {

WorkerPool::WorkerPool(const QString &program, const WorkerLimits &limits)
    : m_program(program)
    , m_limits(limits)
{
    m_watch.setInterval(m_limits.watchInterval);
    connect(&m_watch, &QTimer::timeout, this, &WorkerPool::onWatch);
}

WorkerPool::~WorkerPool()
{
    // All at once, so that their ends are waited for side by side.
    for (const auto &worker : m_workers) {
        worker->disconnect(this);
        worker->kill();
    }
}

int WorkerPool::running() const
{
    return static_cast<int>(
        std::count_if(m_workers.begin(), m_workers.end(),
                      [](const auto &worker) { return worker->observer() != nullptr; }));
}

void WorkerPool::prepare(int count)
{
    while (static_cast<int>(m_workers.size()) < count)
        addWorker();
}

void WorkerPool::start(const ConversionRequest &request, ConversionObserver &observer)
{
    const auto idle = std::find_if(m_workers.begin(), m_workers.end(),
                                   [](const auto &worker) { return worker->isIdle(); });
    ConverterWorker &worker = idle == m_workers.end() ? addWorker() : **idle;
    worker.convert(request, observer);
    if (!m_watch.isActive())
        m_watch.start();
}

void WorkerPool::abort(const ConversionObserver &observer)
{
    for (const auto &worker : m_workers) {
        if (worker->observer() == &observer)
            worker->abort();
    }
}

ConverterWorker &WorkerPool::addWorker()
{
    m_workers.push_back(std::make_unique<ConverterWorker>(m_program, m_limits, nullptr));
    ConverterWorker *worker = m_workers.back().get();
    connect(worker, &ConverterWorker::conversionEnded, this, &WorkerPool::conversionEnded);
    connect(worker, &ConverterWorker::programKnown, this, &WorkerPool::programKnown);
    connect(worker, &ConverterWorker::ended, this, [this, worker] { onWorkerEnded(worker); });
    return *worker;
}

void WorkerPool::onWatch()
{
    if (running() == 0)
        m_watch.stop();
    for (const auto &worker : m_workers)
        worker->watch();
    keepBudget();
}

void WorkerPool::keepBudget()
{
    using Count = ProcessMemory::Count;
    if (m_limits.budget <= 0)
        return;
    for (const Count count : {Count::Quick, Count::Exact}) {
        qint64 sum = 0;
        // An idle worker goes before any file fails, then the largest: never one within its even
        // share.
        std::tuple<bool, qint64, ConverterWorker *> first(false, 0, nullptr);
        for (const auto &worker : m_workers) {
            const qint64 memory = worker->memory(count);
            sum += memory;
            if (memory > 0)
                first = std::max(first, std::make_tuple(worker->isIdle(), memory, worker.get()));
        }
        if (sum <= m_limits.budget)
            return;
        if (count == Count::Exact)
            std::get<ConverterWorker *>(first)->endForMemory(std::get<qint64>(first));
    }
}

void WorkerPool::onWorkerEnded(ConverterWorker *worker)
{
    const auto found = std::find_if(m_workers.begin(), m_workers.end(),
                                    [worker](const auto &other) { return other.get() == worker; });
    if (found == m_workers.end())
        return;
    // The worker is the sender of this signal, so it must outlive the call.
    found->release()->setParent(this);
    m_workers.erase(found);
    worker->deleteLater();

    if (const std::optional<ConverterWorker::Task> task = worker->takeUnreadTask())
        addWorker().convert(task->request, *task->observer);
}

} // namespace tnhost
