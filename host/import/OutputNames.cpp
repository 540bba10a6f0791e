#include "host/import/OutputNames.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QtEndian>

namespace tnhost {

namespace {

// A glTF binary: 12 bytes of header, then chunks of length, type and content, JSON first.
constexpr quint32 glbMagic = 0x46546C67;
constexpr quint32 jsonChunk = 0x4E4F534A;
constexpr int headLength = 20;
// What this reads in the GUI thread; a larger head is taken for a stranger's.
constexpr quint32 maximalJsonLength = 16 << 20;

/// The file that a converted file was made from; empty for all that is no converted file.
QString sourceOf(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray head = file.read(headLength);
    if (head.size() != headLength)
        return QString();
    const auto word = [&head](qptrdiff index) {
        return qFromLittleEndian<quint32>(head.constData() + index * 4);
    };
    if (word(0) != glbMagic || word(4) != jsonChunk || word(3) > maximalJsonLength)
        return QString();
    const QJsonObject root = QJsonDocument::fromJson(file.read(word(3))).object();
    const QJsonObject asset = root.value(QLatin1String("asset")).toObject();
    const QJsonObject extras = asset.value(QLatin1String("extras")).toObject();
    return extras.value(QLatin1String("source")).toString();
}

/// What the file systems take for a name, less what may come behind the base name here.
constexpr int longestBaseName = 255 - int(sizeof "-1000000.glb.part" - 1); // bytes of UTF-8

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

} // namespace

QString OutputNames::claim(const QString &directory, const QString &baseName, const QString &source)
{
    const QString shortName = shortened(baseName);
    for (int number = 1;; ++number) {
        const QString name = number == 1
            ? shortName
            : QStringLiteral("%1-%2").arg(shortName, QString::number(number));
        const QString path = QDir(directory).filePath(name + QStringLiteral(".glb"));
        if (m_claimed.contains(key(path)))
            continue;
        // The half-written file of another program would be overwritten as well.
        if (isOnDisk(path + QStringLiteral(".part")))
            continue;
        if (isOnDisk(path) && (QFileInfo(path).isSymLink() || sourceOf(path) != source))
            continue;
        m_claimed.insert(key(path));
        return path;
    }
}

void OutputNames::release(const QString &path)
{
    m_claimed.remove(key(path));
}

QString OutputNames::key(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = QDir(info.absolutePath()).canonicalPath();
    return (canonical.isEmpty() ? info.absolutePath() : canonical).toCaseFolded() + QLatin1Char('/')
        + info.fileName().toCaseFolded();
}

} // namespace tnhost
