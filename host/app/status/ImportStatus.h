#pragma once

#include "host/import/JobResult.h"

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QWidget>

#include <vector>

class QProgressBar;
class QToolButton;

namespace tnhost {

class FileService;

/// How far the imports are, all running jobs together, with buttons to end them and to see the
/// plug-in's dialog; after their end what has become of them, until the next one begins.
class ImportStatus : public QWidget {
    Q_OBJECT

public:
    /// The service must outlive it.
    explicit ImportStatus(FileService &service, QWidget *parent = nullptr);

    bool isRunning() const { return m_running > 0; }
    /// Shows a sentence, with the icon of a state, in the place of what has become of imports.
    /// Nothing happens while one runs, and with an empty sentence.
    void showSentence(const QString &sentence, FileResult::State state);

signals:
    /// The user wants to know more.
    void resultsRequested();

private:
    QToolButton *addButton(const QString &name, const QString &text, const QString &hint);
    void showTools();
    void onJobStarted(const JobResultPtr &job);
    void onJobEnded(const JobResultPtr &job);
    void refresh();
    void abortAll();

    FileService &m_service;
    QToolButton *m_text;
    QProgressBar *m_bar;
    QToolButton *m_show;
    QToolButton *m_abort;
    std::vector<JobResultPtr> m_jobs; ///< since nothing ran
    int m_running = 0;
    QElapsedTimer m_clock; ///< since the first of them
};

} // namespace tnhost
