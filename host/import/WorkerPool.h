#pragma once

#include "host/import/ConverterWorker.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <memory>
#include <vector>

namespace tnhost {

/// The converter processes: gives a conversion to one that is idle, or starts another one. How
/// many run at a time is the caller's choice, by how many conversions it starts.
class WorkerPool : public QObject {
    Q_OBJECT

public:
    explicit WorkerPool(const QString &program, const WorkerLimits &limits = {});
    /// Kills all processes. No observer is called.
    ~WorkerPool() override;

    /// Conversions that have been started and have not come to their end.
    int running() const;

    /// Starts processes until there are so many, for conversions that are about to come. They end
    /// when none come.
    void prepare(int count);
    void start(const ConversionRequest &request, ConversionObserver &observer);
    /// Ends the observer's conversion as aborted, soon; nothing when it has none.
    void abort(const ConversionObserver &observer);

signals:
    /// A process has told which files it consists of.
    void programKnown(const QStringList &files);
    /// Another conversion may be started.
    void conversionEnded();

private:
    ConverterWorker &addWorker();
    void onWatch();
    void keepBudget();
    void onWorkerEnded(ConverterWorker *worker);

    const QString m_program;
    const WorkerLimits m_limits;
    std::vector<std::unique_ptr<ConverterWorker>> m_workers;
    QTimer m_watch; ///< runs while there are conversions
};

} // namespace tnhost
