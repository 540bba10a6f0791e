#include "host/app/ImportStatus.h"

#include "platform/tnFileIOService.h"

#include <algorithm>

namespace tnhost {

ImportStatus::ImportStatus(const tnFileIOService &service, QWidget *parent)
    : QLabel(parent)
{
    connect(&service, &tnFileIOService::startingImport, this,
            [this](quint64 job, unsigned int fileCount) {
                m_jobs[job].files = std::max(1U, fileCount);
                refresh();
            });
    connect(&service, &tnFileIOService::childFileImportAdded, this,
            [this](quint64 job, const QString &, const QString &child) {
                m_jobs[job].parts.insert(child);
            });
    connect(&service, &tnFileIOService::fileConversionProgressChanged, this,
            &ImportStatus::onConversionProgress);
    connect(&service, &tnFileIOService::fileConversionFinished, this,
            [this](quint64 job, const QString &path) { m_jobs[job].converting.remove(path); });
    connect(&service, &tnFileIOService::importProgressChanged, this,
            [this](quint64 job, unsigned int value) {
                m_jobs[job].ended = value;
                refresh();
            });
    connect(&service, &tnFileIOService::importFinished, this, [this](quint64 job) {
        m_jobs.erase(job);
        refresh();
    });
}

void ImportStatus::onConversionProgress(quint64 job, const QString &path, unsigned int percent)
{
    Job &state = m_jobs[job];
    if (state.parts.contains(path))
        return;
    state.converting[path] = std::min(100U, percent);
    refresh();
}

void ImportStatus::refresh()
{
    double done = 0.0;
    double files = 0.0;
    for (auto &[id, job] : m_jobs) {
        unsigned int converting = 0;
        for (const unsigned int percent : qAsConst(job.converting))
            converting += percent;
        job.shown =
            std::max(job.shown, std::min(100.0, job.ended + double(converting) / job.files));
        done += job.shown * job.files;
        files += job.files;
    }
    setText(m_jobs.empty() ? QString() : tr("Importing … %1 %").arg(int(done / files)));
}

} // namespace tnhost
