#include "host/import/Conversions.h"

#include "host/import/ReusableConversion.h"

#include <QtCore/QCryptographicHash>

#include <algorithm>

namespace tnhost {

Conversions::Conversions(const QString &program, const WorkerLimits &limits,
                         std::unique_ptr<ResultStore> store)
    : m_limits(limits)
    , m_programName(QCryptographicHash::hash(program.toUtf8(), QCryptographicHash::Sha256))
    , m_store(std::move(store))
    , m_pool(program, limits)
{
    if (m_store)
        m_program = m_store->lines(m_programName);
    connect(&m_pool, &WorkerPool::programKnown, this, &Conversions::onProgramKnown);
    connect(&m_pool, &WorkerPool::conversionEnded, this, &Conversions::conversionEnded);
}

Conversions::~Conversions()
{
    for (const auto &conversion : m_conversions)
        conversion->cancel();
}

int Conversions::running() const
{
    return m_pool.running()
        + static_cast<int>(std::count_if(m_conversions.begin(), m_conversions.end(),
                                         [](const auto &each) { return each->isLooking(); }));
}

void Conversions::prepare(int count)
{
    if (m_program.isEmpty())
        m_pool.prepare(count);
}

void Conversions::start(ConversionRequest request, ConversionObserver &observer)
{
    request.threads = m_threads;
    request.settings.insert(QStringLiteral("FollowOutside"), m_limits.followOutside);
    request.settings.insert(QStringLiteral("FullSource"), m_limits.fullSource);
    if (!m_store) {
        m_pool.start(request, observer);
        return;
    }
    const ReusableConversion::Surroundings surroundings{*m_store,    m_pool,    m_program,
                                                        m_converter, m_looking, m_keeping};
    m_conversions.push_back(std::make_unique<ReusableConversion>(surroundings, request,
                                                                 m_limits.followOutside, observer));
    ReusableConversion *conversion = m_conversions.back().get();
    connect(conversion, &ReusableConversion::ended, this,
            [this, conversion] { onEnded(conversion); });
    conversion->start();
}

void Conversions::abort(const ConversionObserver &observer)
{
    for (const auto &each : m_conversions) {
        if (&each->observer() == &observer) {
            each->abort();
            return;
        }
    }
    m_pool.abort(observer);
}

void Conversions::onProgramKnown(const QStringList &files)
{
    m_program = files;
    // Which process a result comes from is not told, so that a replaced program leaves none sure.
    const QByteArray state = ResultReuse::stateOf(files);
    m_converter = m_converter.value_or(state) == state ? state : QByteArray();
    if (m_store)
        m_store->setLines(m_programName, files);
}

void Conversions::onEnded(ReusableConversion *conversion)
{
    const auto found =
        std::find_if(m_conversions.begin(), m_conversions.end(),
                     [conversion](const auto &each) { return each.get() == conversion; });
    // It is the sender of this signal, so it must outlive the call.
    found->release()->setParent(this);
    m_conversions.erase(found);
    conversion->deleteLater();
    emit conversionEnded();
}

} // namespace tnhost
