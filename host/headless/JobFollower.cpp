#include "host/headless/JobFollower.h"

#include "platform/tnFileIOService.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <array>
#include <utility>

namespace tnhost {

using tnCADFileTypes::JobState;
using State = FileResult::State;
using Service = tnFileIOService;

namespace {

struct Outcome {
    State state;
    const char *text;
};

/// By the values of JobState.
constexpr std::array<Outcome, 4> outcomes{{{State::Succeeded, "finished"},
                                           {State::Failed, "failed"},
                                           {State::Aborted, "aborted"},
                                           {State::Incomplete, "incomplete, parts are missing"}}};

const Outcome &outcomeOf(JobState state)
{
    const auto position = static_cast<std::size_t>(state);
    return position < outcomes.size() ? outcomes[position] : outcomes[JobState::Failure];
}

QString textOf(JobState state)
{
    return QString::fromLatin1(outcomeOf(state).text);
}

bool isOutput(JobState state)
{
    return state == JobState::Success || state == JobState::Incomplete;
}

bool isOpen(const FileResult &result)
{
    return result.state == State::Pending || result.state == State::Running;
}

QString typeName(tnCADFileTypes::FileType type)
{
    const auto position = static_cast<std::size_t>(type);
    const auto &facts = tnCADFileTypes::fileTypeFacts;
    return position < facts.size() ? QString::fromLatin1(facts[position].name) : QString();
}

} // namespace

JobFollower::JobFollower(tnFileIOService &service, Printer print)
    : m_service(service)
    , m_print(std::move(print))
{
    connectJobs();
    connectConversion();
    connectLoading();
}

// What is told of a job that had begun before, or that has ended, is nobody's here.

template <typename... Told, typename Action>
void JobFollower::follow(void (tnFileIOService::*signal)(quint64, Told...), Action action)
{
    connect(&m_service, signal, this, [this, action](quint64 id, Told... told) {
        const auto job = m_jobs.find(id);
        if (job != m_jobs.end())
            action(*job, told...);
    });
}

void JobFollower::connectJobs()
{
    connect(&m_service, &Service::startingImport, this, [this](quint64 job, unsigned int count) {
        ++m_startedJobs;
        m_jobs[job].total = static_cast<int>(count);
    });
    connect(&m_service, &Service::importFinished, this, &JobFollower::onJobEnded);
    follow(&Service::childFileImportAdded,
           [](Job &job, const QString &parent, const QString &part) {
               job.assemblies[part] = job.assemblies.value(parent, parent);
               job.announcedPart = part;
           });
}

void JobFollower::connectConversion()
{
    follow(&Service::fileConversionStarted,
           [this](Job &job, const QString &path) { onConversionStarted(job, path); });
    follow(&Service::fileConversionProgressChanged,
           [this](Job &job, const QString &path, unsigned int percent, const QString &message) {
               tell(job, path, QStringLiteral("%1 % %2").arg(percent).arg(message).trimmed());
           });
    follow(&Service::fileConversionFailed,
           [](Job &job, const QString &path, const QString &message) {
               job.lastEnd = {path, JobState::Failure, 0.0, message};
           });
    follow(&Service::fileConversionFinished,
           [](Job &job, const QString &path, JobState state, double seconds) {
               const ConversionEnd &last = job.lastEnd;
               const QString message = last.path == path ? last.message : QString();
               job.lastEnd = {path, state, seconds, message};
           });
    follow(
        &Service::childFileImportFinished,
        [this](Job &job, const QString &, const QString &part) { onConversionEnded(job, part); });
    follow(&Service::conversionFinished,
           [this](Job &job, double) { onConversionEnded(job, QString()); });
}

void JobFollower::connectLoading()
{
    follow(&Service::fileAddedToLoadQueue, [this](Job &job, const QString &path) {
        fileOf(job, path).result.state = State::Running;
    });
    follow(&Service::fileLoadingStarted,
           [this](Job &job, const QString &path) { tell(job, path, QStringLiteral("loading")); });
    follow(&Service::fileAddedToScene, [this](Job &job, const QString &path, const tndNode &node) {
        File &file = fileOf(job, path);
        file.isInScene = true;
        step(file, QStringLiteral("loaded, node %1").arg(node.id()));
    });
    follow(&Service::fileLoadingFailed,
           [this](Job &job, const QString &path, const QString &message) {
               tellFailure(job, path, message);
           });
    follow(&Service::fileLoadingFinished, [this](Job &job, const QString &path, JobState state) {
        onLoadingFinished(job, path, state);
    });
}

void JobFollower::plan(const QStringList &files)
{
    for (const QString &path : files) {
        m_planned.insert(path, append(path));
        m_files.back().total = files.size();
    }
}

void JobFollower::fail(int position, const QString &reason)
{
    File &file = m_files.at(static_cast<std::size_t>(position));
    m_planned.remove(file.result.path);
    file.result.state = State::Failed;
    file.result.message = reason;
    step(file, reason);
}

void JobFollower::failOpen(const QString &reason)
{
    for (std::size_t i = 0; i < m_files.size(); ++i) {
        if (isOpen(m_files[i].result))
            fail(static_cast<int>(i), reason);
    }
}

void JobFollower::abortAll()
{
    m_isAborting = true;
    for (const quint64 job : m_jobs.keys())
        m_service.abortImport(job);
}

std::vector<FileResult> JobFollower::results() const
{
    std::vector<FileResult> results;
    results.reserve(m_files.size());
    for (const File &file : m_files)
        results.push_back(file.result);
    return results;
}

bool JobFollower::haveAllSucceeded() const
{
    return m_unreported == 0 && std::all_of(m_files.begin(), m_files.end(), [](const File &file) {
               return file.result.state == State::Succeeded;
           });
}

void JobFollower::onConversionStarted(Job &job, const QString &path)
{
    const QString text = QStringLiteral("conversion started");
    if (path == std::exchange(job.announcedPart, QString())) {
        File &assembly = fileOf(job, job.assemblies.value(path));
        step(assembly, QFileInfo(path).fileName() + QStringLiteral(": ") + text);
        return;
    }
    File &file = fileOf(job, path);
    file.result.state = State::Running;
    file.clock.start();
    step(file, text);
}

/// Without a part, a file's own conversion has ended.
void JobFollower::onConversionEnded(Job &job, const QString &part)
{
    const ConversionEnd last = std::exchange(job.lastEnd, ConversionEnd());
    if (last.path.isEmpty() || (!part.isEmpty() && part != last.path))
        return;
    File &file = fileOf(job, part.isEmpty() ? last.path : job.assemblies.value(part));
    const QString prefix =
        part.isEmpty() ? QString() : QFileInfo(part).fileName() + QStringLiteral(": ");
    if (!last.message.isEmpty()) {
        step(file, prefix + last.message);
        file.result.message = prefix + last.message;
    }
    step(file,
         prefix
             + QStringLiteral("conversion %1 after %2 s")
                   .arg(textOf(last.state), QString::number(last.seconds, 'f', 2)));
    // What is to be loaded is queued for it at once, and then runs on.
    if (part.isEmpty())
        end(file, last.state);
}

void JobFollower::onLoadingFinished(Job &job, const QString &path, JobState state)
{
    if (state != JobState::Success)
        tell(job, path, QStringLiteral("loading %1").arg(textOf(state)));
    const auto position = job.files.constFind(path);
    if (position == job.files.constEnd())
        return;
    // A part of the same path does not get into the scene by itself, so it cannot end its file
    // well; and if it ends it badly, the file's own end has the last word.
    File &file = m_files[static_cast<std::size_t>(*position)];
    if (isOutput(state) == file.isInScene && (file.isInScene || isOpen(file.result)))
        end(file, state);
}

void JobFollower::onJobEnded(quint64 id)
{
    const Job job = m_jobs.take(id);
    for (const int position : job.files) {
        File &file = m_files[static_cast<std::size_t>(position)];
        if (!isOpen(file.result))
            continue;
        end(file, m_isAborting ? JobState::JobAborted : JobState::Failure);
        if (!m_isAborting)
            file.result.message = QStringLiteral("the import ended without a result");
    }
    // Planned files are in the results anyway.
    if (m_planned.isEmpty())
        m_unreported += std::max(0, job.total - job.files.size());
    emit jobEnded();
}

int JobFollower::append(const QString &path)
{
    File file;
    file.result.path = path;
    file.result.type = typeName(m_service.fileType(path));
    m_files.push_back(file);
    const int position = static_cast<int>(m_files.size()) - 1;
    m_files.back().number = position + 1;
    return position;
}

JobFollower::File &JobFollower::fileOf(Job &job, const QString &path)
{
    auto found = job.files.constFind(path);
    if (found == job.files.constEnd()) {
        const auto planned = m_planned.find(path);
        int position = 0;
        if (planned != m_planned.end()) {
            position = *planned;
            m_planned.erase(planned);
        } else {
            position = append(path);
            m_files.back().number = job.files.size() + 1;
            m_files.back().total = job.total;
        }
        found = job.files.insert(path, position);
    }
    return m_files[static_cast<std::size_t>(*found)];
}

bool JobFollower::isPart(const Job &job, const QString &path) const
{
    if (!job.assemblies.contains(path))
        return false;
    // A path that is both is taken for the file while that is at work.
    const auto own = job.files.constFind(path);
    return own == job.files.constEnd()
        || m_files[static_cast<std::size_t>(*own)].result.state != State::Running;
}

void JobFollower::tell(Job &job, const QString &path, const QString &text)
{
    if (isPart(job, path))
        step(fileOf(job, job.assemblies.value(path)),
             QFileInfo(path).fileName() + QStringLiteral(": ") + text);
    else
        step(fileOf(job, path), text);
}

void JobFollower::tellFailure(Job &job, const QString &path, const QString &message)
{
    tell(job, path, message);
    if (!isPart(job, path))
        fileOf(job, path).result.message = message;
}

void JobFollower::step(File &file, const QString &text)
{
    if (text == file.lastStep)
        return;
    file.lastStep = text;
    m_print(QStringLiteral("[%1/%2] %3: %4")
                .arg(file.number)
                .arg(file.total)
                .arg(QFileInfo(file.result.path).fileName(), text));
}

void JobFollower::end(File &file, JobState state)
{
    file.result.state = outcomeOf(state).state;
    if (file.clock.isValid())
        file.result.seconds = static_cast<double>(file.clock.elapsed()) / 1000.0;
    if (state == JobState::Success)
        file.result.message.clear();
    else if (state == JobState::Incomplete && file.result.message.isEmpty())
        file.result.message = QStringLiteral("parts are missing");
}

} // namespace tnhost
