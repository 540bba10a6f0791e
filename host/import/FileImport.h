#pragma once

#include "host/import/Conversion.h"
#include "host/import/FileResult.h"
#include "host/import/FragmentLoader.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

#include <vector>

namespace tnhost {

class ImportJob;

/// One top-level file's way through its job: conversion with the parts that turn up, then the load.
/// All of the file's signals are sent from here, so this is where their order is kept, and where
/// the file's result is written, each time before the signals that go with it.
///
/// Whoever receives a signal may run events of his own below it, and abort the job there. While
/// signals go out the phase is Reporting, in which nothing else may end the file, and what comes
/// next is decided afterwards.
class FileImport final : public ConversionObserver, public LoadObserver {
public:
    /// The result stands in the job's, at that position, and outlives this.
    FileImport(ImportJob &job, std::size_t position, FileResult &result);

    void start();
    /// Ends a file that was started as aborted, soon. One that is at its end anyway gets there.
    void abort();

private:
    enum class Phase { Waiting, Reporting, Converting, LoadQueued, Loading, Done };

    /// What the result of a part does not say.
    struct Part {
        QString file; ///< as the converter names it
        bool isConverting = true;
    };

    void onProgress(unsigned int percent, const QString &message) override;
    void onWarning(const QString &message) override;
    void onPart(const QString &file) override;
    void onPartFinished(const QString &file, tnCADFileTypes::JobState state, double seconds,
                        const QString &message) override;
    void onConversionEnded(tnCADFileTypes::JobState state, double seconds,
                           const QString &message) override;
    void onReadingStarted() override;
    void onFragmentRead(const std::shared_ptr<const SceneFragment> &fragment,
                        const QString &error) override;

    /// Reports the end of a conversion, be it the file's own or that of a part.
    void reportConversion(const FileResult &result, unsigned int percent,
                          tnCADFileTypes::JobState state, double seconds, const QString &message);
    /// Whether there is a converted file, and it stands where it is to stand; a reason in error.
    bool takeOutput(QString *error);
    void endConversion(tnCADFileTypes::JobState state, double seconds, const QString &message);
    void endPart(std::size_t index, tnCADFileTypes::JobState state, double seconds,
                 const QString &message);
    /// Ends the parts that went down with the converter.
    void closeParts(tnCADFileTypes::JobState state, const QString &message);
    void addOwnLoss(const QString &message);
    /// Brings the content into the scene; null when that was not possible.
    tndNode attach(const std::shared_ptr<const SceneFragment> &fragment);
    void endLoad(tnCADFileTypes::JobState state, const QString &message, bool wasRead);
    void endPartLoads(tnCADFileTypes::JobState state, const QString &message, bool wasRead);
    void finish(tnCADFileTypes::JobState state);
    void removeOutput();
    void step(const QString &words);
    /// What is said of a part begins with its name.
    QString wordsOf(const FileResult &result, const QString &words) const;

    ImportJob &m_job;
    const std::size_t m_position;
    FileResult &m_result;
    const QString m_path; ///< as it was given, which is how the signals name it
    QString m_output; ///< empty until the conversion starts
    Phase m_phase = Phase::Waiting;
    tnCADFileTypes::JobState m_conversionState = tnCADFileTypes::JobState::Failure;
    QElapsedTimer m_clock;
    std::vector<Part> m_parts; ///< in the order of the result's
    double m_partSeconds = 0.0;
};

} // namespace tnhost
