#include "records/tnCADImportFile.h"

#include "module/getService.h"
#include "platform/tnFileIOService.h"

#include <QtCore/QDateTime>

#include <array>

namespace {

/// In the order of ImportState's values.
constexpr std::array<const char *, 7> stateNames{
    QT_TRANSLATE_NOOP("tnCADImportFile", "Pending"),
    QT_TRANSLATE_NOOP("tnCADImportFile", "Importing"),
    QT_TRANSLATE_NOOP("tnCADImportFile", "Loading"),
    QT_TRANSLATE_NOOP("tnCADImportFile", "Failed"),
    QT_TRANSLATE_NOOP("tnCADImportFile", "Succeeded"),
    QT_TRANSLATE_NOOP("tnCADImportFile", "Incomplete"),
    QT_TRANSLATE_NOOP("tnCADImportFile", "Aborted"),
};

} // namespace

tnCADImportFile::tnCADImportFile(const QString &path)
    : m_path(path)
{
    const QFileInfo info(path);
    m_fileName = info.fileName();
    readDiskFacts(info);

    auto *service = getService<tnFileIOService>();
    m_suffix = service->fileSuffix(path);
    if (!hasSharedSuffix())
        m_fileType = service->fileType(path);
}

tnCADImportFile::~tnCADImportFile() = default;

void tnCADImportFile::readDiskFacts(const QFileInfo &info)
{
    // Only the tool tip makes a text of the date: the local time takes longer to find than all else
    // about a file, which many thousands of files would make people wait for.
    m_size = info.size(); // asks the file system for all facts, exists() for this one alone
    m_diskFacts = m_size > 0 || info.exists() ? info : QFileInfo();
}

QString tnCADImportFile::sizeText() const
{
    if (m_size == 0)
        return tr("Unknown");
    const qint64 wholeKiloBytes = m_size / 1024;
    const auto kiloBytes = static_cast<double>(wholeKiloBytes);
    const double megaBytes = kiloBytes * 0.0009765625;
    return megaBytes > 1.0 ? QString::number(megaBytes, 'f', 1) + QLatin1String("MB")
                           : QString::number(kiloBytes, 'f', 1) + QLatin1String("kB");
}

bool tnCADImportFile::hasSharedSuffix() const
{
    return m_suffix.compare(QLatin1String("prt"), Qt::CaseInsensitive) == 0
        || m_suffix.compare(QLatin1String("asm"), Qt::CaseInsensitive) == 0;
}

void tnCADImportFile::setState(ImportState state)
{
    m_state = state;
    if (state != ImportState::Importing) {
        m_percent = 0;
        m_message = QString();
    }
    readDiskFacts(QFileInfo(m_path));
}

bool tnCADImportFile::isRunning() const
{
    return m_state == ImportState::Importing || m_state == ImportState::Loading;
}

bool tnCADImportFile::isImportable() const
{
    return m_state == ImportState::Pending || m_state == ImportState::Failed
        || m_state == ImportState::Aborted;
}

bool tnCADImportFile::isValidState(int state)
{
    return static_cast<unsigned int>(state) < stateNames.size();
}

void tnCADImportFile::setProgress(unsigned int percent, const QString &message)
{
    m_percent = percent;
    m_message = message;
}

QString tnCADImportFile::stateText() const
{
    if (m_state == ImportState::Importing) {
        // One call with all arguments: a message may hold a "%1" of its own.
        if (m_percent != 0)
            return QStringLiteral("%1% %2").arg(QString::number(m_percent), m_message);
        if (!m_message.isEmpty())
            return m_message;
    }
    return tr(stateNames.at(static_cast<std::size_t>(m_state)));
}

QString tnCADImportFile::toolTip() const
{
    // Row by row, each in one call: what a path holds must never be taken for a place marker.
    const auto row = [](const QString &label, const QString &value) {
        return QStringLiteral("<tr><td><b>%1: </b></td><td>%2</td></tr>").arg(label, value);
    };
    return QLatin1String("<table>") + row(tr("Path"), m_path) + row(tr("File"), m_fileName)
        + row(tr("Type"), tnCADFileTypes::displayNameOrUndefined(m_fileType))
        + row(tr("Size"), QString::number(m_size))
        + row(tr("Last Modified"), m_diskFacts.lastModified().toString(Qt::TextDate))
        + QLatin1String("</table>");
}

const std::weak_ptr<tnCADImportFile> &tnCADImportFile::child(int index) const
{
    static const std::weak_ptr<tnCADImportFile> none;
    const auto position = static_cast<std::size_t>(index);
    return index >= 0 && position < m_children.size() ? m_children[position] : none;
}
