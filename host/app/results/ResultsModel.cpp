#include "host/app/results/ResultsModel.h"

#include "host/import/ImportLog.h"
#include "host/services/HostIcons.h"

namespace tnhost {

namespace {

using State = FileResult::State;

constexpr int announceInterval = 200; // ms
/// The internal id of files; that of a part is the row of its file and one more.
constexpr quintptr topLevel = 0;

int fileRow(const QModelIndex &index)
{
    return index.internalId() == topLevel ? index.row() : static_cast<int>(index.internalId() - 1);
}

} // namespace

ResultsModel::ResultsModel(const ImportLog &log, QObject *parent)
    : QAbstractItemModel(parent)
{
    for (const State state : {State::Pending, State::Running, State::Succeeded, State::Failed,
                              State::Incomplete, State::Aborted})
        m_icons.push_back(
            HostIcons::icon(QStringLiteral("State") + QLatin1String(FileResult::word(state))));
    m_delay.setSingleShot(true);
    m_delay.setInterval(announceInterval);
    connect(&m_delay, &QTimer::timeout, this, &ResultsModel::announceChanges);
    connect(&log, &ImportLog::jobStarted, this, &ResultsModel::onJobStarted);
    connect(&log, &ImportLog::stepTaken, this, &ResultsModel::onStep);
    connect(&log, &ImportLog::fileEnded, this, &ResultsModel::onStep);
    connect(&log, &ImportLog::jobEnded, this, &ResultsModel::onJobEnded);
}

ResultRow ResultsModel::row(const QModelIndex &index) const
{
    const int top = fileRow(index);
    const bool isOver = m_jobs[m_files[static_cast<std::size_t>(top)].job].isOver;
    const FileResult &file = fileResult(top);
    if (index.internalId() == topLevel)
        return {file, nullptr, isOver};
    return {file.parts[static_cast<std::size_t>(index.row())], &file, isOver};
}

QModelIndexList ResultsModel::unsuccessful(const QModelIndexList &among) const
{
    std::set<int> rows;
    for (const QModelIndex &index : among)
        rows.insert(fileRow(index));
    QModelIndexList result;
    for (const int each : rows) {
        const QModelIndex file = index(each, 0);
        const ResultRow found = row(file);
        if (found.isUnsuccessful() && m_lastRows.value(found.result.path) == each)
            result << file;
    }
    return result;
}

QModelIndexList ResultsModel::files() const
{
    QModelIndexList all;
    for (int each = 0; each < rowCount(); ++each)
        all << index(each, 0);
    return all;
}

QModelIndex ResultsModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column,
                       parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : topLevel);
}

QModelIndex ResultsModel::parent(const QModelIndex &child) const
{
    return !child.isValid() || child.internalId() == topLevel
        ? QModelIndex()
        : createIndex(fileRow(child), 0, topLevel);
}

int ResultsModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_files.size());
    return parent.column() > 0 || parent.internalId() != topLevel
        ? 0
        : m_files[static_cast<std::size_t>(parent.row())].shownParts;
}

int ResultsModel::columnCount(const QModelIndex &) const
{
    return static_cast<int>(ResultColumns::all().size());
}

QVariant ResultsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const ResultColumn &column = ResultColumns::all()[static_cast<std::size_t>(index.column())];
    switch (role) {
    case Qt::DisplayRole:
        return column.shown(row(index));
    case Qt::ToolTipRole:
        return column.hint ? column.hint(row(index)) : QVariant();
    case Qt::TextAlignmentRole:
        return column.isNumber ? static_cast<int>(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::DecorationRole:
        return index.column() == 0 ? m_icons[static_cast<std::size_t>(row(index).result.state)]
                                   : QVariant();
    default:
        return {};
    }
}

QVariant ResultsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    const ResultColumn &column = ResultColumns::all()[static_cast<std::size_t>(section)];
    if (role == Qt::TextAlignmentRole && column.isNumber)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter); // as the numbers below
    return role == Qt::DisplayRole ? ResultColumns::title(column) : QVariant();
}

void ResultsModel::onJobStarted(const JobResultPtr &result)
{
    if (result->files.empty())
        return;
    const int first = rowCount();
    const int count = static_cast<int>(result->files.size());
    beginInsertRows({}, first, first + count - 1);
    m_jobsById[result->id] = m_jobs.size();
    m_files.resize(m_files.size() + result->files.size(), File{m_jobs.size(), 0});
    m_jobs.push_back({result, first, false});
    for (int i = 0; i < count; ++i)
        m_lastRows[result->files[static_cast<std::size_t>(i)].path] = first + i;
    endInsertRows();
}

void ResultsModel::onStep(const JobResultPtr &result, std::size_t position)
{
    const auto job = m_jobsById.find(result->id);
    if (job == m_jobsById.end())
        return;
    const int row = m_jobs[job->second].firstRow + static_cast<int>(position);
    File &file = m_files[static_cast<std::size_t>(row)];
    const int parts = static_cast<int>(fileResult(row).parts.size());
    if (parts > file.shownParts) {
        beginInsertRows(index(row, 0), file.shownParts, parts - 1);
        file.shownParts = parts;
        endInsertRows();
    }
    markChanged(row);
}

void ResultsModel::onJobEnded(const JobResultPtr &result)
{
    const auto found = m_jobsById.find(result->id);
    if (found == m_jobsById.end())
        return;
    Job &job = m_jobs[found->second];
    job.isOver = true;
    for (std::size_t i = 0; i < result->files.size(); ++i) {
        if (result->files[i].isOpen())
            markChanged(job.firstRow + static_cast<int>(i));
    }
    announceChanges();
}

void ResultsModel::markChanged(int row)
{
    m_changed.insert(row);
    if (!m_delay.isActive())
        m_delay.start();
}

void ResultsModel::announceChanges()
{
    const std::set<int> rows = std::exchange(m_changed, {});
    if (rows.empty())
        return;
    const int lastColumn = columnCount() - 1;
    // All at once, as each announcement makes a sorted view sort.
    emit dataChanged(index(*rows.begin(), 0), index(*rows.rbegin(), lastColumn));
    for (const int each : rows) {
        const QModelIndex file = index(each, 0);
        if (const int parts = rowCount(file))
            emit dataChanged(index(0, 0, file), index(parts - 1, lastColumn, file));
    }
}

const FileResult &ResultsModel::fileResult(int row) const
{
    const Job &job = m_jobs[m_files[static_cast<std::size_t>(row)].job];
    return job.result->files[static_cast<std::size_t>(row - job.firstRow)];
}

} // namespace tnhost
