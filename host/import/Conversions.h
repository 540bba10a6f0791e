#pragma once

#include "host/import/BackgroundThread.h"
#include "host/import/ResultStore.h"
#include "host/import/WorkerPool.h"

#include <QtCore/QObject>

#include <memory>
#include <optional>
#include <vector>

namespace tnhost {

class ReusableConversion;

/// Has files converted, or finds what an earlier conversion has made of them. To the observer there
/// is no difference but in time, and in one progress message that tells it.
class Conversions : public QObject {
    Q_OBJECT

public:
    /// Without a store each file is converted.
    Conversions(const QString &program, const WorkerLimits &limits,
                std::unique_ptr<ResultStore> store);
    /// Kills all processes and waits for the file that is being hashed. No observer is called.
    ~Conversions() override;

    /// Files that are on their way, less those that no longer need a processor.
    int running() const;
    /// Has processes ready for so many files at a time, unless their results may be there already.
    void prepare(int count);
    /// How many cores each conversion that is started next may use; one at first.
    void setThreads(int threads) { m_threads = threads; }
    void start(ConversionRequest request, ConversionObserver &observer);
    /// Ends the observer's conversion as aborted, soon; nothing when it has none.
    void abort(const ConversionObserver &observer);
    /// Null when nothing is kept.
    ResultStore *store() const { return m_store.get(); }

signals:
    /// Another conversion may be started.
    void conversionEnded();

private:
    void onProgramKnown(const QStringList &files);
    void onEnded(ReusableConversion *conversion);

    const WorkerLimits m_limits;
    int m_threads = 1;
    const QByteArray m_programName; ///< of the program's files in the store
    QStringList m_program; ///< the files of the converter, as far as they are known
    std::optional<QByteArray> m_converter; ///< see ReusableConversion::Surroundings
    std::unique_ptr<ResultStore> m_store;
    WorkerPool m_pool;
    std::vector<std::unique_ptr<ReusableConversion>> m_conversions;
    // They end before what they work for.
    BackgroundThread m_looking;
    BackgroundThread m_keeping; ///< what has to be written must not delay the next file
};

} // namespace tnhost
