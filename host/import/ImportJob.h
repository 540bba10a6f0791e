#pragma once

#include "host/import/FileImport.h"
#include "host/import/ImportContext.h"
#include "host/import/WorkDirectory.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>

#include <memory>
#include <unordered_map>
#include <vector>

namespace tnhost {

/// One job of the file service: its files, and what they have in common.
class ImportJob : public QObject {
    Q_OBJECT

public:
    /// The job sets out from the event loop. A name that stands twice in the list is two files.
    ImportJob(const ImportContext &context, ImportRequest request);
    /// No conversion or load of the job may be running.
    ~ImportJob() override;
    /// Gives back the output names and removes the temporary files, once nothing needs them.
    void cleanUp();

    quint64 id() const { return m_request.id; }
    const ImportRequest &request() const { return m_request; }
    const ImportContext &context() const { return m_context; }
    tnFileIOService &service() const { return m_context.service; }
    /// Seconds since the job was accepted.
    double seconds() const { return static_cast<double>(m_clock.elapsed()) / 1000.0; }

    /// Whether startNext() has something to do.
    bool hasWaitingFile() const { return waitingFiles() > 0; }
    int waitingFiles() const;
    void startNext();
    /// Takes back the files that wait, at once, and ends those that run, from the event loop.
    void abort();
    bool isAborted() const { return m_aborted; }
    JobResultPtr result() const { return m_result; }

    // For the job's files.
    /// Why no file can be converted, a sentence for the user; empty when nothing is wrong.
    const QString &problem() const { return m_problem; }
    /// Where the converter is to write a file: alone in a folder, to be made, within the job's own.
    QString workFile(std::size_t file) const;
    /// Whether converted files go when they are no longer needed.
    bool isOutputTemporary() const { return m_isOutputTemporary; }
    /// Finds the name under which a converted file is to stay.
    void claimOutput(std::size_t file, const QString &source);
    /// Gives the converted file that name; an empty text, with a sentence in error, when that
    /// cannot be done.
    QString publishOutput(std::size_t file, QString *error);
    /// Where the files go in the scene; null for the root.
    tndNode target();
    void onStep(std::size_t file, const QString &words);
    void onProgress(std::size_t file, unsigned int percent);
    void onFileFinished(std::size_t file);

signals:
    /// A file waits for startNext().
    void workAdded();
    /// All files have come to their ends, and startingImport has been sent. From the event loop.
    void ended();

private:
    void begin();
    void sortBySize();
    void prepareOutput();
    void checkEnd();

    const ImportContext m_context;
    ImportRequest m_request;
    const std::shared_ptr<JobResult> m_result = std::make_shared<JobResult>();
    QElapsedTimer m_clock;
    std::unique_ptr<WorkDirectory> m_work;
    bool m_isOutputTemporary = false;
    QString m_directory; ///< where converted files stay
    QString m_problem;
    std::unordered_map<std::size_t, OutputNames::Claim> m_claims; ///< by file
    std::vector<std::unique_ptr<FileImport>> m_files;
    std::vector<std::size_t> m_order; ///< the files by when they start
    std::size_t m_started = 0; ///< so many of these
    std::size_t m_reported = 0; ///< files whose end shows in the progress
    std::size_t m_ended = 0; ///< files that report nothing more
    bool m_begun = false;
    bool m_aborted = false;
    bool m_hasEnded = false;
};

} // namespace tnhost
