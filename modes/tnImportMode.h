#pragma once

#include "logbook/tnLogFormater.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

class tnCADImportDialog;
class tnCADImportFileModel;
class tnFileIOService;
class tndNode;

/// Follows one batch: turns the file service's signals into the states of the records, the progress
/// bar and the logbook. The dialog has one object per way of running a batch, of which exactly one
/// is active. This class is the way that loads the files and keeps what was converted; subclasses
/// change the two answers. GUI thread only.
class tnImportMode : public QObject {
    Q_OBJECT

public:
    /// Connects nothing yet, and the dialog's form need not exist yet.
    explicit tnImportMode(tnCADImportDialog *dialog);
    ~tnImportMode() override;

    /// Starts to listen to the file service. Must not be called on an active mode. Like start() and
    /// reimport(), it throws std::bad_alloc without file service or dialog.
    virtual void activate();
    /// Stops to listen and forgets the batch; the logbook's files stay.
    virtual void deactivate();
    /// Writes the dialog's settings to the file service and starts a batch on the files, in their
    /// order. What is known of the last batch is forgotten.
    virtual void start(const QStringList &files);
    /// Starts a batch that imports the source of the node again, with the settings that the file
    /// service already has.
    virtual void reimport(const tndNode &node);
    /// Whether the converted files are removed from disk after the load.
    virtual bool removesConvertedFiles() const;
    /// Whether the batch goes on to load the converted files into the scene.
    virtual bool loadsIntoScene() const;

    /// The job of the current or last batch; 0 when none was started since the last reset.
    quint64 jobId() const { return m_jobId; }
    /// Says nothing of whether a batch runs: the entries stay until the next one or a change of the
    /// mode.
    bool hasLogbookEntries() const { return !m_logbook.empty(); }

    /// Adds an entry behind those of the same file, with the current local time. Without a file it
    /// stands for the whole batch and has no time. Of a run of equal messages of a file the last
    /// one stays. O(log n).
    void addLogEntry(const QString &file, const QString &message);
    /// Replaces the file at path by what the formatter makes of the logbook. An empty text leaves
    /// the file alone, and a file that can't be opened is skipped in silence.
    void writeLogbook(const QString &path, tnLogFormater &formatter) const;

private:
    void connectJob();
    void connectConversion();
    void connectLoading();
    void connectProgress();
    void finishBatch(double seconds);
    void reset();
    tnCADImportFileModel *fileModel() const;
    tndNode targetNode() const;

    void removeRepeatedEntries(tnLogTable::iterator added);

    tnFileIOService *m_service;
    tnCADImportDialog *m_dialog;
    tnLogTable m_logbook;
    quint64 m_jobId = 0;
    double m_conversionSeconds = 0.0;
};
