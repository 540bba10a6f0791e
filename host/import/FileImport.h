#pragma once

#include "host/import/Conversion.h"
#include "host/import/FragmentLoader.h"
#include "platform/tndNode.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

#include <vector>

namespace tnhost {

class ImportJob;

/// One top-level file's way through its job: conversion with the parts that turn up, then the load.
/// All of the file's signals are sent from here, so this is where their order is kept.
///
/// Whoever hears a signal may run events of his own below it, and abort the job there. While
/// signals go out the phase is Telling, in which nothing else may end the file, and what comes next
/// is decided afterwards.
class FileImport final : public ConversionObserver, public LoadObserver {
public:
    FileImport(ImportJob &job, const QString &path);
    /// The conversion must not be running any more; what it left half-written goes.
    ~FileImport();

    /// Whether there is a converter for files of the type.
    static bool isConvertible(tnCADFileTypes::FileType type);

    void start();
    /// Ends a file that was started as aborted, soon. One that is at its end anyway gets there.
    void abort();

private:
    enum class Phase { Waiting, Telling, Converting, LoadQueued, Loading, Done };

    struct Part {
        QString path;
        bool isOpen = true;
        bool isLoadable = false;
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

    QString objection() const;
    void tellConversionEnd(tnCADFileTypes::JobState state, double seconds, const QString &message);
    void closeParts(tnCADFileTypes::JobState state, const QString &message);
    /// Brings the content into the scene; null when that was not possible.
    tndNode attach(const std::shared_ptr<const SceneFragment> &fragment);
    void endLoad(tnCADFileTypes::JobState state, const QString &message, bool wasRead);
    void endPartLoads(tnCADFileTypes::JobState state, const QString &message, bool wasRead);
    void finish();
    void removeOutput();

    ImportJob &m_job;
    const QString m_path; ///< as it was given, which is how the signals name it
    QString m_output; ///< empty until the conversion starts
    bool m_outputIsNew = false; ///< nothing stood at the output's path before
    Phase m_phase = Phase::Waiting;
    tnCADFileTypes::JobState m_conversionState = tnCADFileTypes::JobState::Failure;
    unsigned int m_percent = 0;
    QElapsedTimer m_clock;
    std::vector<Part> m_parts;
    double m_partSeconds = 0.0;
};

} // namespace tnhost
