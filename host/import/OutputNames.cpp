#include "host/import/OutputNames.h"

#include "protocol/GlbLayout.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QtEndian>

#include <cerrno>
#include <cstdio> // renameat2
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace tnhost {

namespace {

// What this reads in the GUI thread; a larger head is taken for a stranger's.
constexpr quint32 maximalJsonLength = 16 << 20;

/// Whose output a converted file is, see OutputNames::idOf(); empty for all that is none.
QString sourceIdOf(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QString();
    namespace glb = tnprotocol::glb;
    const QByteArray head = file.read(glb::headerSize + glb::chunkHeaderSize);
    if (head.size() != glb::headerSize + glb::chunkHeaderSize)
        return QString();
    const auto word = [&head](qptrdiff offset) {
        return qFromLittleEndian<quint32>(head.constData() + offset);
    };
    const quint32 jsonLength = word(glb::headerSize);
    if (word(0) != glb::magic || word(glb::headerSize + 4) != glb::jsonChunk
        || jsonLength > maximalJsonLength)
        return QString();
    const QJsonObject root = QJsonDocument::fromJson(file.read(jsonLength)).object();
    const QJsonObject asset = root.value(QLatin1String("asset")).toObject();
    const QJsonObject extras = asset.value(QLatin1String("extras")).toObject();
    return extras.value(QLatin1String(glb::sourceId)).toString();
}

/// What the file systems take for a name, less what may come behind the base name here.
constexpr int longestBaseName = 255 - static_cast<int>(sizeof "-1000000.glb" - 1); // bytes of UTF-8

QString shortened(QString baseName)
{
    while (baseName.toUtf8().size() > longestBaseName)
        baseName.chop(QChar(baseName.back()).isLowSurrogate() ? 2 : 1);
    return baseName;
}

bool isOnDisk(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool isEarlierOutput(const OutputNames::Claim &claim)
{
    return !QFileInfo(claim.path).isSymLink()
        && sourceIdOf(claim.path) == OutputNames::idOf(claim.source);
}

/// Gives 0 or an error number: EEXIST when something stands there, whoever has put it there and in
/// whatever moment.
int moveToFreeName(const QByteArray &from, const QByteArray &to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // Some network file systems cannot do that in one go. The name is taken first, so that for a
    // moment an empty file stands there.
    const int file = ::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0)
        return errno;
    ::close(file);
    return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

} // namespace

QString OutputNames::idOf(const QString &source)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(source.toUtf8(), QCryptographicHash::Sha256).toHex());
}

void OutputNames::claim(Claim &claim)
{
    const QString shortName = shortened(claim.baseName);
    for (int number = 1;; ++number) {
        const QString name = number == 1
            ? shortName
            : QStringLiteral("%1-%2").arg(shortName, QString::number(number));
        claim.path = QDir(claim.directory).filePath(name + QStringLiteral(".glb"));
        if (m_claimed.contains(key(claim.path))
            || (isOnDisk(claim.path) && !isEarlierOutput(claim)))
            continue;
        m_claimed.insert(key(claim.path));
        return;
    }
}

bool OutputNames::publish(const QString &file, Claim &claim, QString *error)
{
    const QByteArray from = QFile::encodeName(file);
    int fault = EEXIST;
    while (fault == EEXIST) {
        const QByteArray to = QFile::encodeName(claim.path);
        fault = moveToFreeName(from, to);
        if (fault != EEXIST)
            break;
        if (isEarlierOutput(claim)) {
            fault = ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
            break;
        }
        release(claim);
        this->claim(claim);
    }
    if (fault != 0)
        *error = QString::fromLocal8Bit(std::strerror(fault));
    return fault == 0;
}

void OutputNames::release(const Claim &claim)
{
    m_claimed.remove(key(claim.path));
}

QString OutputNames::key(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = QDir(info.absolutePath()).canonicalPath();
    return (canonical.isEmpty() ? info.absolutePath() : canonical).toCaseFolded() + QLatin1Char('/')
        + info.fileName().toCaseFolded();
}

} // namespace tnhost
