#include "host/headless/JobFollower.h"

#include "host/services/FileService.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace tnhost {

JobFollower::JobFollower(FileService &service, Printer print)
    : m_service(service)
    , m_print(std::move(print))
{
    connect(&service.log(), &ImportLog::jobStarted, this, &JobFollower::onJobStarted);
    connect(&service.log(), &ImportLog::stepTaken, this, &JobFollower::onStep);
    connect(&service.log(), &ImportLog::jobEnded, this, &JobFollower::onJobEnded);
}

void JobFollower::plan(const std::vector<FileCollector::File> &files)
{
    m_files.reserve(files.size());
    for (const FileCollector::File &file : files) {
        FileResult result;
        result.path = file.path;
        result.type = m_service.fileType(file.path);
        File &planned = append(result, m_files.size() + 1, files.size());
        if (file.problem.isEmpty())
            m_planned.insert(file.path, m_files.size() - 1);
        else
            fail(planned, file.problem);
    }
}

void JobFollower::failWaiting(const QString &reason)
{
    for (File &file : m_files) {
        if (!file.job && file.planned.isOpen())
            fail(file, reason);
    }
}

void JobFollower::abortAll()
{
    for (const auto &[id, files] : m_running)
        m_service.abortImport(id);
}

std::vector<FileResult> JobFollower::results() const
{
    std::vector<FileResult> results;
    results.reserve(m_files.size());
    for (const File &file : m_files)
        results.push_back(file.result());
    return results;
}

bool JobFollower::haveAllSucceeded() const
{
    return std::all_of(m_files.begin(), m_files.end(), [](const File &file) {
        return file.result().state == FileResult::State::Succeeded;
    });
}

void JobFollower::onJobStarted(const JobResultPtr &job)
{
    ++m_startedJobs;
    std::vector<std::size_t> &places = m_running[job->id];
    for (std::size_t i = 0; i < job->files.size(); ++i) {
        const auto planned = m_planned.find(job->files[i].path);
        if (planned == m_planned.end()) {
            append(job->files[i], i + 1, job->files.size());
            places.push_back(m_files.size() - 1);
        } else {
            places.push_back(*planned);
            m_planned.erase(planned);
        }
        File &file = m_files[places.back()];
        file.job = job;
        file.position = i;
    }
}

void JobFollower::onStep(const JobResultPtr &job, std::size_t position, const QString &words)
{
    // A job that had begun before is not followed.
    const auto running = m_running.find(job->id);
    if (running != m_running.end())
        print(m_files[running->second[position]], words);
}

void JobFollower::onJobEnded(const JobResultPtr &job)
{
    if (m_running.erase(job->id) > 0)
        emit jobEnded();
}

JobFollower::File &JobFollower::append(const FileResult &result, std::size_t number,
                                       std::size_t total)
{
    File file;
    file.name = QFileInfo(result.path).fileName();
    file.number = static_cast<int>(number);
    file.total = static_cast<int>(total);
    file.planned = result;
    m_files.push_back(file);
    return m_files.back();
}

void JobFollower::fail(File &file, const QString &reason)
{
    file.planned.state = FileResult::State::Failed;
    file.planned.message = reason;
    print(file, reason);
}

void JobFollower::print(File &file, const QString &words)
{
    if (words == file.lastStep)
        return;
    file.lastStep = words;
    m_print(QStringLiteral("[%1/%2] %3: %4")
                .arg(QString::number(file.number), QString::number(file.total), file.name, words));
}

} // namespace tnhost
