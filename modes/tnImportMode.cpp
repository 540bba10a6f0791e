#include "modes/tnImportMode.h"

#include "dialog/tnCADImportDialog.h"
#include "filelist/tnCADImportFileModel.h"
#include "logbook/logbookPath.h"
#include "logbook/tnTextFormater.h"
#include "logbook/tnXMLFormater.h"
#include "module/getService.h"
#include "platform/tnFileIOService.h"
#include "platform/tnScenegraphService.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <array>
#include <iterator>

namespace {

using tnCADFileTypes::JobState;

/// What becomes of a record, by JobState.
constexpr std::array<ImportState, 4> endStates{ImportState::Succeeded, ImportState::Failed,
                                               ImportState::Aborted, ImportState::Incomplete};

/// A service newer than this program may report a state that it does not know: that is no success.
ImportState endState(JobState state)
{
    const auto position = static_cast<std::size_t>(state);
    return position < endStates.size() ? endStates[position] : ImportState::Failed;
}

// The logbook's texts are not translated: they are read by programs and by support.

QString withSeconds(const char *text, double seconds)
{
    return QString::fromLatin1(text).arg(QString::number(seconds, 'g', 6));
}

QString conversionText(JobState state, double seconds)
{
    switch (state) {
    case tnCADFileTypes::Success:
        return withSeconds("Conversion successfully ended in %1 seconds.", seconds);
    case tnCADFileTypes::JobAborted:
        return QStringLiteral("Conversion Aborted.");
    default:
        return QStringLiteral("Conversion failed.");
    }
}

} // namespace

tnImportMode::tnImportMode(tnCADImportDialog *dialog)
    : m_service(getService<tnFileIOService>())
    , m_dialog(dialog)
{
}

tnImportMode::~tnImportMode() = default;

void tnImportMode::activate()
{
    Q_CHECK_PTR(m_service);
    Q_CHECK_PTR(m_dialog);
    connectJob();
    connectConversion();
    connectLoading();
    connectProgress();
}

void tnImportMode::deactivate()
{
    QObject::disconnect(m_service, nullptr, this, nullptr);
    if (m_dialog)
        fileModel()->stopAnimation(); // the end of a running batch is not heard any more
    reset();
}

void tnImportMode::start(const QStringList &files)
{
    reset();
    Q_CHECK_PTR(m_service);
    Q_CHECK_PTR(m_dialog);
    m_dialog->writeSettingsToService();
    fileModel()->startAnimation();
    const bool load = loadsIntoScene();
    const bool remove = removesConvertedFiles();
    const QString directory = m_dialog->_output_dir->text();
    m_jobId = m_service->loadFiles(files, targetNode(), directory, load, remove, false);
}

void tnImportMode::reimport(const tndNode &node)
{
    reset();
    Q_CHECK_PTR(m_service);
    Q_CHECK_PTR(m_dialog);
    fileModel()->startAnimation();
    m_jobId = m_service->reimportFile(node, removesConvertedFiles());
}

bool tnImportMode::removesConvertedFiles() const
{
    return false;
}

bool tnImportMode::loadsIntoScene() const
{
    return true;
}

// Only the end of a job is compared with the job at hand. The steps of a file count whoever has
// started its job: a row is to show what happens to its file.

void tnImportMode::connectJob()
{
    connect(m_service, &tnFileIOService::fileConversionFailed, this,
            [this, model = fileModel()](quint64, const QString &path, const QString &message) {
                addLogEntry(path, message);
                model->setFileState(path, ImportState::Failed);
            });
    connect(m_service, &tnFileIOService::conversionFinished, this,
            [this](quint64, double seconds) { m_conversionSeconds += seconds; });
    connect(m_service, &tnFileIOService::importFinished, this, [this](quint64 job, double seconds) {
        if (job == m_jobId)
            finishBatch(seconds);
    });
}

void tnImportMode::connectConversion()
{
    connect(m_service, &tnFileIOService::fileConversionStarted, this,
            [this, model = fileModel()](quint64, const QString &path) {
                addLogEntry(path, QStringLiteral("Conversion started"));
                model->setFileState(path, ImportState::Importing);
            });
    connect(
        m_service, &tnFileIOService::fileConversionFinished, this,
        [this, model = fileModel()](quint64, const QString &path, JobState state, double seconds) {
            addLogEntry(path, conversionText(state, seconds));
            // What is to be loaded stays Importing until the load takes it on.
            if (!loadsIntoScene() || state != tnCADFileTypes::Success)
                model->setFileState(path, endState(state));
        });
    connect(m_service, &tnFileIOService::fileConversionProgressChanged, this,
            [this, model = fileModel()](quint64, const QString &path, unsigned int percent,
                                        const QString &message) {
                addLogEntry(path, message);
                model->setFileProgress(path, percent, message);
            });
    connect(m_service, &tnFileIOService::childrenFileConversionFinished, this,
            [this](quint64, const QString &path, double seconds) {
                addLogEntry(path, withSeconds("Parts conversion duration: %1 seconds.", seconds));
                m_conversionSeconds += seconds;
            });
}

void tnImportMode::connectLoading()
{
    connect(m_service, &tnFileIOService::fileLoadingStarted, this,
            [this, model = fileModel()](quint64, const QString &path) {
                addLogEntry(path, QStringLiteral("File load started"));
                model->setFileState(path, ImportState::Loading);
            });
    connect(m_service, &tnFileIOService::fileLoadingFinished, this,
            [this, model = fileModel()](quint64, const QString &path, JobState state) {
                addLogEntry(path, QStringLiteral("File load ended."));
                model->setFileState(path, endState(state));
            });
    connect(m_service, &tnFileIOService::fileLoadingFailed, this,
            [this](quint64, const QString &path, const QString &message) {
                addLogEntry(path, message); // the state comes with fileLoadingFinished
            });
    connect(m_service, &tnFileIOService::fileAddedToScene, this,
            [model = fileModel()](quint64, const QString &path, const tndNode &node) {
                model->setFileNode(path, node);
            });
    connect(m_service, &tnFileIOService::fileAddedToLoadQueue, this,
            [model = fileModel()](quint64, const QString &path) {
                model->setFileProgress(path, 0, tr("File added to load queue"));
            });
}

void tnImportMode::connectProgress()
{
    connect(m_service, &tnFileIOService::importProgressChanged, this,
            [this](quint64, unsigned int value) {
                m_dialog->_progress->setValue(static_cast<int>(value));
            });
}

void tnImportMode::finishBatch(double seconds)
{
    addLogEntry({}, withSeconds("Total import duration: %1 seconds.", seconds));
    if (m_conversionSeconds > 0.0)
        addLogEntry({}, withSeconds("Total conversion duration: %1 seconds.", m_conversionSeconds));
    fileModel()->stopAnimation();
    tnTextFormater asText;
    writeLogbook(logbookPath(QStringLiteral(".txt")), asText);
    tnXMLFormater asXml;
    writeLogbook(logbookPath(QStringLiteral(".xml")), asXml);
}

void tnImportMode::reset()
{
    m_logbook.clear();
    m_jobId = 0;
    m_conversionSeconds = 0.0;
    if (m_dialog)
        m_dialog->_progress->setValue(0);
}

tnCADImportFileModel *tnImportMode::fileModel() const
{
    return m_dialog->tableView->fileModel();
}

/// Where the files go: what the dialog was told, else what the user has selected, else the root.
tndNode tnImportMode::targetNode() const
{
    const tndNode given = m_dialog->targetNode();
    if (!given.isNull())
        return given;
    tnScenegraphService *scene = tnScenegraphService::the();
    const auto selected = scene->selectedNodes(true);
    return selected.empty() ? scene->rootNode() : selected.front();
}

void tnImportMode::addLogEntry(const QString &file, const QString &message)
{
    std::string time;
    if (!file.isEmpty())
        time = QDateTime::currentDateTime().toString(Qt::TextDate).toStdString();
    removeRepeatedEntries(m_logbook.emplace(
        file.toStdString(), std::make_pair(std::move(time), message.toStdString())));
}

/// A step is reported over and over: kept until the end of a batch of many files, its repeats would
/// take most of the memory, and a long pause to be removed.
void tnImportMode::removeRepeatedEntries(tnLogTable::iterator added)
{
    if (added == m_logbook.begin())
        return;
    const auto previous = std::prev(added);
    // The time is left out: the later entry tells until when the message held.
    if (previous->first == added->first && previous->second.second == added->second.second)
        m_logbook.erase(previous);
}

void tnImportMode::writeLogbook(const QString &path, tnLogFormater &formatter) const
{
    const QString text = formatter.format(m_logbook);
    if (text.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Text))
        return;
    // In the code page of the system, which other programs expect of a text file. The stream keeps
    // a copy of what it is given until that is written, so it gets some lines at a time.
    QTextStream stream(&file);
    constexpr int someLines = 1 << 14;
    for (int begin = 0, end = 0; begin < text.size(); begin = end) {
        end = text.indexOf(QLatin1Char('\n'), begin + someLines) + 1;
        if (end == 0)
            end = text.size();
        stream << text.midRef(begin, end - begin);
    }
}
