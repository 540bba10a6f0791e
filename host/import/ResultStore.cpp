#include "host/import/ResultStore.h"

#include "host/import/FileHash.h"
#include "host/import/RegularFile.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QSaveFile>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryFile>
#include <QtCore/QtEndian>

#include <algorithm>
#include <cstdio>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>

namespace tnhost {

namespace {

constexpr int hashSize = 32;
constexpr int tailSize = 8 + hashSize;
constexpr qint64 maximalNotes = 64 << 20;
// Whoever writes an entry for so long is dead.
constexpr qint64 maximalAge = 3600; // s

const QString resultSuffix = QStringLiteral(".result");
const QString linesSuffix = QStringLiteral(".lines");
const QString unfinished = QStringLiteral("unfinished-");

QFileInfoList filesIn(const QString &folder, const QString &pattern)
{
    return QDir(folder).entryInfoList({pattern}, QDir::Files, QDir::Time | QDir::Reversed);
}

QByteArray lengthBytes(int length)
{
    QByteArray bytes(8, '\0');
    qToLittleEndian<qint64>(length, bytes.data());
    return bytes;
}

/// The length of an entry's notes; -1 when it is no entry.
qint64 notesLength(const RegularFile &entry)
{
    const QByteArray bytes = entry.isOpen() ? entry.read(entry.size() - tailSize, 8) : QByteArray();
    const qint64 length = bytes.isEmpty() ? -1 : qFromLittleEndian<qint64>(bytes.constData());
    return length <= std::min(maximalNotes, entry.size() - tailSize) ? length : -1;
}

/// Copies the first @p size bytes of an entry; whether the entry is what was once written.
bool copyChecked(const RegularFile &entry, const QByteArray &key, qint64 size, QFile &output)
{
    FileHash hash;
    hash.add(key);
    qint64 rest = size;
    entry.read(0, entry.size() - hashSize, [&](const char *bytes, qint64 count) {
        hash.add(bytes, count);
        // A disk that is full is no fault of the entry.
        output.write(bytes, std::min(rest, count));
        rest -= std::min(rest, count);
        return true;
    });
    return hash.result() == entry.read(entry.size() - hashSize, hashSize);
}

/// Notes the time of use, by which entries go.
void touch(const QString &path)
{
    ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), nullptr, 0);
}

} // namespace

ResultStore::ResultStore(const QString &folder, qint64 capacity)
    : m_folder(folder)
    , m_capacity(capacity)
{
}

std::optional<QByteArray>
ResultStore::take(const QByteArray &key, const QString &output,
                  const std::function<bool(const QByteArray &)> &accepts) const
{
    const QString name = path(key, resultSuffix);
    const RegularFile entry(name);
    if (!entry.isOpen())
        return std::nullopt;
    const qint64 length = notesLength(entry);
    const qint64 size = entry.size() - tailSize - length;
    const QByteArray notes = length < 0 ? QByteArray() : entry.read(size, length);
    if (length >= 0 && !accepts(notes))
        return std::nullopt;
    QFile file(output);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return std::nullopt;
    const bool isSound = length >= 0 && copyChecked(entry, key, size, file);
    if (isSound && file.error() == QFileDevice::NoError) {
        touch(name);
        return notes;
    }
    file.remove();
    if (!isSound)
        QFile::remove(name);
    return std::nullopt;
}

void ResultStore::keep(const QByteArray &key, const QString &file, const QByteArray &notes)
{
    if (QDir().mkpath(m_folder) && write(key, file, notes) && (m_bytes < 0 || m_bytes > m_capacity))
        prune();
}

bool ResultStore::write(const QByteArray &key, const QString &file, const QByteArray &notes)
{
    const RegularFile result(file);
    const qint64 size = result.size() + notes.size() + tailSize;
    QTemporaryFile entry(m_folder + QLatin1Char('/') + unfinished + QStringLiteral("XXXXXX"));
    if (!result.isOpen() || size > m_capacity || !entry.open())
        return false;
    FileHash hash;
    hash.add(key);
    const auto add = [&](const char *bytes, qint64 count) {
        hash.add(bytes, count);
        return entry.write(bytes, count) == count;
    };
    const QByteArray tail = notes + lengthBytes(notes.size());
    if (!result.read(0, result.size(), add) || !add(tail.constData(), tail.size())
        || entry.write(hash.result()) != hashSize || !entry.flush()
        || std::rename(QFile::encodeName(entry.fileName()).constData(),
                       QFile::encodeName(path(key, resultSuffix)).constData())
            != 0)
        return false;
    entry.setAutoRemove(false);
    if (m_bytes >= 0)
        m_bytes += size;
    return true;
}

void ResultStore::prune()
{
    const QDateTime oldest = QDateTime::currentDateTime().addSecs(-maximalAge);
    for (const QFileInfo &file : filesIn(m_folder, unfinished + QLatin1Char('*'))) {
        if (file.lastModified() < oldest)
            QFile::remove(file.filePath());
    }
    const QFileInfoList entries = filesIn(m_folder, QLatin1Char('*') + resultSuffix);
    qint64 bytes = 0;
    for (const QFileInfo &entry : entries)
        bytes += entry.size();
    // Some room, so that not each entry that comes sends one away.
    const qint64 wanted = bytes > m_capacity ? m_capacity / 10 * 9 : m_capacity;
    for (const QFileInfo &entry : entries) {
        if (bytes <= wanted)
            break;
        QFile::remove(entry.filePath());
        bytes -= entry.size();
    }
    m_bytes = bytes;
}

QString ResultStore::clear()
{
    int results = 0;
    qint64 bytes = 0;
    for (const QFileInfo &entry : filesIn(m_folder, QLatin1Char('*') + resultSuffix)) {
        if (!QFile::remove(entry.filePath()))
            continue;
        ++results;
        bytes += entry.size();
    }
    m_bytes = -1;
    return QStringLiteral("Earlier results removed: %1, %2.")
        .arg(QString::number(results), QLocale::c().formattedDataSize(bytes));
}

QStringList ResultStore::lines(const QByteArray &name) const
{
    QFile file(path(name, linesSuffix));
    return file.open(QIODevice::ReadOnly)
        ? QString::fromUtf8(file.read(maximalNotes)).split(QLatin1Char('\n'), Qt::SkipEmptyParts)
        : QStringList();
}

void ResultStore::setLines(const QByteArray &name, const QStringList &lines) const
{
    QSaveFile file(path(name, linesSuffix));
    if (QDir().mkpath(m_folder) && file.open(QIODevice::WriteOnly)) {
        file.write(lines.join(QLatin1Char('\n')).toUtf8());
        file.commit();
    }
}

QString ResultStore::usualFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + QStringLiteral("/tnhost/results");
}

QString ResultStore::path(const QByteArray &key, const QString &suffix) const
{
    return m_folder + QLatin1Char('/') + QString::fromLatin1(key.toHex()) + suffix;
}

} // namespace tnhost
