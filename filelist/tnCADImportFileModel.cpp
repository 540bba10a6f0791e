#include "filelist/tnCADImportFileModel.h"

#include "filelist/KnownPaths.h"
#include "module/getPulse.h"
#include "module/getService.h"
#include "platform/tnFileIOService.h"
#include "platform/tnPulseInterface.h"
#include "ressources/ressources.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtGui/QFont>

#include <array>
#include <optional>
#include <utility>

namespace {

/// From so many on, what each row costs a listener counts more than a fresh start.
constexpr std::size_t manyRows = 200;

constexpr std::array<const char *, tnCADImportFileModel::ColumnCount> columnTitles{
    QT_TRANSLATE_NOOP("tnCADImportFileModel", "File"),
    QT_TRANSLATE_NOOP("tnCADImportFileModel", "Type"),
    QT_TRANSLATE_NOOP("tnCADImportFileModel", "Size"),
    QT_TRANSLATE_NOOP("tnCADImportFileModel", "State"),
};

/// The icon of the static look of running rows; the first to be loaded.
QIcon loadRunIcon()
{
    initRessources();
    return QIcon(QStringLiteral(":/ressources/ImportRun.svg"));
}

/// The icons of the states, by value; those of running rows are the model's. An icon keeps what it
/// has rendered, so all requests share one set. It is never destroyed: the end of the process is
/// too late for icons, their application has gone by then.
const QIcon &restingIcon(ImportState state)
{
    static const auto &icons = *new std::array<QIcon, 7>{
        QIcon(QStringLiteral(":/ressources/ImportAdd.svg")),
        QIcon(),
        QIcon(),
        QIcon(QStringLiteral(":/ressources/ImportFailed.svg")),
        QIcon(QStringLiteral(":/ressources/ImportSucceeded.svg")),
        QIcon(QStringLiteral(":/ressources/ImportIncomplete.svg")),
        QIcon(QStringLiteral(":/ressources/ImportFailed.svg")),
    };
    return icons.at(static_cast<std::size_t>(state));
}

/// Whether the assembly is among the record's parent, that one's parent and so on.
bool isPartOf(const tnCADImportFile &file, const tnCADImportFile *assembly)
{
    for (auto parent = file.parent().lock(); parent; parent = parent->parent().lock()) {
        if (parent.get() == assembly)
            return true;
    }
    return false;
}

bool isCounted(const tnCADImportFile &file, ImportState state, bool skipChildren)
{
    return file.state() == state && !(skipChildren && file.hasParent());
}

bool isFinished(const std::weak_ptr<tnCADImportFile> &link)
{
    const auto child = link.lock();
    return !child || child->state() == ImportState::Succeeded;
}

bool areChildrenFinished(const tnCADImportFile &file)
{
    const int count = static_cast<int>(file.childCount());
    for (int i = 0; i < count; ++i) {
        if (!isFinished(file.child(i)))
            return false;
    }
    return true;
}

} // namespace

/// Announces an operation on many rows for as long as it lives.
class tnCADImportFileModel::Bulk {
public:
    Bulk(tnCADImportFileModel &model, std::size_t rows)
        : m_model(model)
        , m_isLarge(rows >= manyRows)
    {
        if (m_isLarge && m_model.m_runningBulks++ == 0 && m_model.m_bulkListener)
            m_model.m_bulkListener->beginBulk();
    }
    ~Bulk()
    {
        if (m_isLarge && --m_model.m_runningBulks == 0 && m_model.m_bulkListener)
            m_model.m_bulkListener->endBulk();
    }
    Q_DISABLE_COPY_MOVE(Bulk)

private:
    tnCADImportFileModel &m_model;
    const bool m_isLarge;
};

tnCADImportFileModel::tnCADImportFileModel(QObject *parent)
    : QAbstractTableModel(parent)
    , m_runningIcon(loadRunIcon())
    , m_busyAnimation(QStringLiteral(":/ressources/busy.gif"))
{
    connect(&m_busyAnimation, &QMovie::frameChanged, this, &tnCADImportFileModel::onNextFrame);
    connect(getService<tnFileIOService>(), &tnFileIOService::fileTypeReceived, this,
            &tnCADImportFileModel::receiveFileType);
}

tnCADImportFileModel::~tnCADImportFileModel() = default;

void tnCADImportFileModel::setBulkListener(BulkListener *listener)
{
    BulkListener *const last = std::exchange(m_bulkListener, listener);
    if (m_runningBulks == 0)
        return;
    if (last)
        last->endBulk();
    if (listener)
        listener->beginBulk();
}

int tnCADImportFileModel::rowCount(const QModelIndex &) const
{
    return m_rows.size();
}

int tnCADImportFileModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QVariant tnCADImportFileModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const int column = index.column();
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignVCenter
                                | (column == SizeColumn ? Qt::AlignRight : Qt::AlignLeft));

    const tnCADImportFile *file = recordAt(index.row());
    if (!file)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return displayText(*file, column);
    case Qt::DecorationRole:
        if (column != StateColumn)
            return {};
        return file->isRunning() ? m_runningIcon : restingIcon(file->state());
    case Qt::ToolTipRole:
        return file->toolTip();
    case Qt::FontRole:
        if (file->hasParent()) {
            QFont font;
            font.setStyle(QFont::StyleItalic);
            return font;
        }
        return {};
    case SortRole:
        return sortKey(*file, column);
    default:
        return {};
    }
}

QVariant tnCADImportFileModel::displayText(const tnCADImportFile &file, int column) const
{
    switch (column) {
    case FileColumn:
        return file.hasParent() ? QLatin1String("      ") + file.fileName() : file.fileName();
    case TypeColumn:
        return tnCADFileTypes::displayNameOrUndefined(file.fileType());
    case SizeColumn:
        return file.sizeText();
    case StateColumn:
        return file.stateText();
    default:
        return {};
    }
}

QVariant tnCADImportFileModel::sortKey(const tnCADImportFile &file, int column) const
{
    // Up to the whole assembly: parts of parts stay with it as well.
    if (const auto parent = file.parent().lock())
        return sortKey(*parent, column);
    switch (column) {
    case FileColumn:
        return file.fileName();
    case TypeColumn:
        return tnCADFileTypes::displayNameOrUndefined(file.fileType());
    case SizeColumn:
        return file.size();
    case StateColumn:
        return static_cast<int>(file.state());
    default:
        return {};
    }
}

QVariant tnCADImportFileModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0
        || section >= ColumnCount)
        return {};
    return tr(columnTitles.at(static_cast<std::size_t>(section)));
}

Qt::ItemFlags tnCADImportFileModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    const tnCADImportFile *file = recordAt(index.row());
    if (file && file->hasParent())
        flags &= ~Qt::ItemIsSelectable;
    return flags;
}

void tnCADImportFileModel::addFiles(const QStringList &paths)
{
    KnownPaths known(m_rows, paths.size());
    std::optional<Bulk> bulk; // from the first new file on
    for (int i = 0; i < paths.size(); ++i) {
        if (known.contains(paths[i]))
            continue;
        if (!bulk)
            bulk.emplace(*this, static_cast<std::size_t>(paths.size() - i));
        const int row = rowCount();
        beginInsertRows({}, row, row);
        const auto file = std::make_shared<tnCADImportFile>(paths[i]);
        m_rows.append(file);
        requestFileType(*file);
        endInsertRows();
    }
    if (!bulk)
        return;
    bulk.reset();
    emit changed();
}

bool tnCADImportFileModel::addChildFiles(const QStringList &paths, const QString &parentPath)
{
    const int parentRow = m_rows.rowOf(parentPath);
    if (parentRow < 0)
        return false;
    if (!paths.isEmpty()) {
        const RecordList::Record parent = m_rows.at(parentRow);
        int row = parentRow + 1;
        beginInsertRows({}, row, row + paths.size() - 1);
        for (const QString &path : paths) {
            const auto child = std::make_shared<tnCADImportFile>(path);
            child->setParent(parent);
            parent->addChild(child);
            m_rows.insert(row, child);
            ++row;
            requestFileType(*child);
        }
        endInsertRows();
    }
    emit changed();
    return true;
}

void tnCADImportFileModel::requestFileType(const tnCADImportFile &file)
{
    if (file.hasSharedSuffix())
        getService<tnFileIOService>()->requestFileType(file.path());
}

void tnCADImportFileModel::receiveFileType(const QString &path, tnCADFileTypes::FileType type)
{
    const int row = m_rows.rowOf(path);
    if (row < 0)
        return;
    const RecordList::Record file = m_rows.at(row);
    file->setFileType(type);
    const QPointer<tnCADImportFileModel> self(this);
    emit changed();
    // A listener may have moved the row or taken it away, and the model with it.
    if (const int now = self ? m_rows.rowOf(file.get(), row) : -1; now >= 0)
        announceCell(now, TypeColumn);
}

void tnCADImportFileModel::removeFiles(std::set<int> &rows)
{
    // What the set gains lies behind the row at hand, so the walk meets it.
    for (const int row : rows) {
        for (int part = row + 1, end = endOfParts(row); part < end; ++part)
            rows.insert(part);
    }

    // With their rows, where to look first: listeners may move them in between.
    std::vector<std::pair<int, std::weak_ptr<tnCADImportFile>>> files;
    files.reserve(rows.size());
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        if (recordAt(*row))
            files.emplace_back(*row, m_rows.at(*row));
    }
    if (files.empty())
        return;
    {
        const Bulk bulk(*this, files.size());
        int moved = 0;
        for (const auto &[oldRow, file] : files) {
            const int row = m_rows.rowOf(file.lock().get(), oldRow + moved);
            if (row < 0)
                continue;
            moved = row - oldRow;
            beginRemoveRows({}, row, row);
            m_rows.remove(row);
            endRemoveRows();
        }
        m_rows.closeGap();
    }
    emit changed();
}

void tnCADImportFileModel::removeFilesInState(ImportState state, bool skipChildren)
{
    std::set<int> rows;
    for (int row = 0; row < rowCount(); ++row) {
        if (isCounted(*recordAt(row), state, skipChildren))
            rows.insert(rows.end(), row);
    }
    removeFiles(rows);
}

void tnCADImportFileModel::clear()
{
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

bool tnCADImportFileModel::isEmpty() const
{
    return rowCount() == 0;
}

QStringList tnCADImportFileModel::fileNames(bool skipChildren) const
{
    QStringList names;
    for (int row = 0; const tnCADImportFile *file = recordAt(row); ++row) {
        if (!skipChildren || !file->hasParent())
            names << file->path();
    }
    return names;
}

void tnCADImportFileModel::collectFileTypes(std::set<tnCADFileTypes::FileType> &types) const
{
    const auto &baseCad = tnCADFileTypes::baseCadTypes();
    auto last = tnCADFileTypes::Undefined; // long lists are mostly of one type
    for (int row = 0; const tnCADImportFile *file = recordAt(row); ++row) {
        const auto type = file->fileType();
        if (type != tnCADFileTypes::Undefined && type != last)
            types.insert(baseCad.count(type) ? tnCADFileTypes::BCAD : type);
        last = type;
    }
}

QStringList tnCADImportFileModel::importableFiles(const std::vector<int> &rows) const
{
    QStringList paths;
    for (const int row : rows) {
        const tnCADImportFile *file = recordAt(row);
        if (file && !file->hasParent() && file->isImportable())
            paths << file->path();
    }
    return paths;
}

int tnCADImportFileModel::countFilesInState(ImportState state, bool skipChildren) const
{
    int count = 0;
    for (int row = 0; const tnCADImportFile *file = recordAt(row); ++row)
        count += isCounted(*file, state, skipChildren) ? 1 : 0;
    return count;
}

int tnCADImportFileModel::stateOfRow(int row) const
{
    const tnCADImportFile *file = recordAt(row);
    return file ? static_cast<int>(file->state()) : -1;
}

int tnCADImportFileModel::endOfParts(int row) const
{
    // The link of a part to its parent decides: the parent's list keeps the links of parts that
    // have gone, so its length says nothing of the rows below.
    int end = row + 1;
    const tnCADImportFile *file = recordAt(row);
    if (!file || !file->hasChildren())
        return end;
    for (const auto *part = recordAt(end); part && isPartOf(*part, file); part = recordAt(end))
        ++end;
    return end;
}

tndNode tnCADImportFileModel::nodeOfRow(int row) const
{
    const tnCADImportFile *file = recordAt(row);
    return file ? file->node() : tndNode();
}

QString tnCADImportFileModel::directoryOfRow(int row) const
{
    const tnCADImportFile *file = recordAt(row);
    return file ? QFileInfo(file->path()).absoluteDir().absolutePath() : QString();
}

void tnCADImportFileModel::setFileState(const QString &path, ImportState state)
{
    if (!tnCADImportFile::isValidState(static_cast<int>(state)))
        return;
    const int row = m_rows.rowOf(path);
    if (row < 0)
        return;
    m_rows.at(row)->setState(state);
    announceCell(row, StateColumn);
}

void tnCADImportFileModel::setFileProgress(const QString &path, unsigned int percent,
                                           const QString &message)
{
    const int row = m_rows.rowOf(path);
    if (row < 0)
        return;
    m_rows.at(row)->setProgress(percent, message);
    announceCell(row, StateColumn);
    getPulse()->notifyActivity();
}

void tnCADImportFileModel::setFileNode(const QString &path, const tndNode &node)
{
    const int row = m_rows.rowOf(path);
    if (row >= 0)
        m_rows.at(row)->setNode(node);
}

void tnCADImportFileModel::startAnimation()
{
    if (m_busyAnimation.isValid())
        m_busyAnimation.start();
}

void tnCADImportFileModel::stopAnimation()
{
    if (m_busyAnimation.isValid())
        m_busyAnimation.stop();
}

void tnCADImportFileModel::onNextFrame()
{
    QIcon frame(m_busyAnimation.currentPixmap());
    m_runningIcon.swap(frame);
    for (int row = 0; const tnCADImportFile *file = recordAt(row); ++row) {
        if (file->isRunning())
            announceCell(row, StateColumn, {Qt::DecorationRole});
    }
}

void tnCADImportFileModel::promoteCompletedParents()
{
    // By number: a listener may change the table in the middle of the walk.
    for (int row = 0; const tnCADImportFile *file = recordAt(row); ++row) {
        if (file->hasChildren() && file->state() == ImportState::Incomplete
            && areChildrenFinished(*file))
            setFileState(file->path(), ImportState::Succeeded);
    }
}

/// Null for a row out of range.
const tnCADImportFile *tnCADImportFileModel::recordAt(int row) const
{
    return row >= 0 && row < rowCount() ? m_rows.at(row).get() : nullptr;
}

void tnCADImportFileModel::announceCell(int row, Column column, const QVector<int> &roles)
{
    const QModelIndex cell = index(row, column);
    emit dataChanged(cell, cell, roles);
}
