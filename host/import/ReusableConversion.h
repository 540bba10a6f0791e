#pragma once

#include "host/import/Conversion.h"
#include "host/import/ConversionRecord.h"
#include "host/import/ResultReuse.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <atomic>
#include <optional>

namespace tnhost {

class BackgroundThread;
class ResultStore;
class WorkerPool;

/// One file's way past the store of results: it is looked up, else converted, and what comes of
/// that is kept.
class ReusableConversion final : public QObject, public ConversionObserver {
    Q_OBJECT

public:
    /// What all conversions share. Outlives them.
    struct Surroundings {
        ResultStore &store;
        WorkerPool &pool;
        const QStringList &program; ///< the files of the converter, as far as they are known
        /// What it was like when its processes began; empty when not all were the same.
        const std::optional<QByteArray> &converter;
        BackgroundThread &looking;
        BackgroundThread &keeping;
    };

    ReusableConversion(const Surroundings &surroundings, const ConversionRequest &request,
                       bool followsOutside, ConversionObserver &observer);

    /// Must live until ended(), or until both background threads are gone.
    void start();
    void abort();
    /// Has work in the background end soon, whatever comes of it.
    void cancel() { m_isCancelled = true; }
    const ConversionObserver &observer() const { return m_observer; }
    /// Whether it takes the place of a conversion, without being one in the pool.
    bool isLooking() const { return m_phase == Phase::Looking; }

signals:
    /// The observer is told next.
    void ended();

private:
    enum class Phase { Looking, Converting, Keeping, Done };

    void onProgress(unsigned int percent, const QString &message) override;
    void onWarning(const QString &message) override;
    void onPart(const QString &file) override;
    void onPartFinished(const QString &file, tnCADFileTypes::JobState state, double seconds,
                        const QString &message) override;
    void onReference(const QString &file) override;
    void onConversionEnded(tnCADFileTypes::JobState state, double seconds,
                           const QString &message) override;

    void onLookedUp(const std::optional<ConversionRecord> &record);
    void tell(const ConversionRecord &record);
    void end(tnCADFileTypes::JobState state, double seconds, const QString &message);

    const Surroundings m_surroundings;
    const ConversionRequest m_request;
    ConversionObserver &m_observer;
    ResultReuse m_reuse; ///< for the background, while that works for this
    std::atomic<bool> m_isCancelled{false};
    Phase m_phase = Phase::Looking;
    QElapsedTimer m_clock;
    ConversionRecord m_record;
};

} // namespace tnhost
