#include "host/app/ImportStatus.h"

#include "host/import/ImportLog.h"

#include <algorithm>

namespace tnhost {

ImportStatus::ImportStatus(const ImportLog &log, QWidget *parent)
    : QLabel(parent)
{
    connect(&log, &ImportLog::jobStarted, this, [this](const JobResultPtr &job) {
        m_jobs.push_back(job);
        refresh();
    });
    connect(&log, &ImportLog::stepTaken, this, &ImportStatus::refresh);
    connect(&log, &ImportLog::fileEnded, this, &ImportStatus::refresh);
    connect(&log, &ImportLog::jobEnded, this, [this](const JobResultPtr &job) {
        m_jobs.erase(std::remove(m_jobs.begin(), m_jobs.end(), job), m_jobs.end());
        refresh();
    });
}

void ImportStatus::refresh()
{
    quint64 percentSum = 0;
    std::size_t files = 0;
    for (const JobResultPtr &job : m_jobs) {
        percentSum += job->percentSum;
        files += job->files.size();
    }
    setText(m_jobs.empty() ? QString()
                           : tr("Importing … %1 %").arg(percentSum / std::max<quint64>(1, files)));
}

} // namespace tnhost
