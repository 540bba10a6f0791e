#pragma once

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtWidgets/QLabel>

#include <map>

class tnFileIOService;

namespace tnhost {

/// Says how far the imports are, all running jobs together; empty when there is none. The service
/// must outlive it.
class ImportStatus : public QLabel {
    Q_OBJECT

public:
    explicit ImportStatus(const tnFileIOService &service, QWidget *parent = nullptr);

private:
    /// What is known of a running job; all numbers are percent.
    struct Job {
        unsigned int files = 1;
        unsigned int ended = 0; ///< the files that have come to their end, of all files
        QHash<QString, unsigned int> converting;
        QSet<QString> parts; ///< count with their assembly only
        double shown = 0.0; ///< never falls, though converted files wait to be loaded
    };

    void onConversionProgress(quint64 job, const QString &path, unsigned int percent);
    void refresh();

    std::map<quint64, Job> m_jobs;
};

} // namespace tnhost
