#pragma once

#include "HostileFiles.h"
#include "converter/ConverterProcess.h"

#include <QTemporaryDir>

#include <memory>

/// How a conversion ended.
struct HostileAnswer {
    bool hasDied = false;
    bool hasHung = false;
    QString state; ///< empty when the worker died or hung
    QString message;
    double seconds = 0;
    double area = 0; ///< mm² of the output
    qint64 memory = 0; ///< bytes, the most that the worker held
    QStringList faults; ///< what the converter promises and did not keep
};

/// Converts files in a worker, one after the other; a worker that dies or hangs is replaced.
class HostileRun {
public:
    /// @p seconds: how long a file may take; @p arguments: those of the worker.
    explicit HostileRun(int seconds, const QStringList &arguments = {"--worker"});

    HostileAnswer convert(const HostileFile &file);

private:
    void ask(const QString &input, const QString &type, HostileAnswer &answer);
    void judgeOutput(HostileAnswer &answer) const;

    const int m_seconds;
    const QStringList m_arguments;
    QTemporaryDir m_directory;
    std::unique_ptr<ConverterProcess> m_worker;
};
