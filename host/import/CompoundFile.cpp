#include "host/import/CompoundFile.h"

#include <QtCore/QtEndian>

#include <optional>

namespace tnhost {

namespace {

// Offsets within the header of 512 bytes.
constexpr int headerSize = 512;
constexpr int sectorShiftOffset = 30;
constexpr int firstDirectorySectorOffset = 48;
constexpr int firstDifatSectorOffset = 68;
constexpr int headerDifatOffset = 76;
constexpr quint32 headerDifatCount = 109;

// One entry of the directory.
constexpr int entrySize = 128;
constexpr int nameBytes = 64;
constexpr int nameLengthOffset = 64;
constexpr int typeOffset = 66;
constexpr char storageType = 1;
constexpr char streamType = 2;

// No part file has more; a damaged one may go round in circles.
constexpr int maximalDirectorySectors = 1024;
constexpr quint32 maximalDifatSectors = 256;

template <typename Integer>
Integer number(const QByteArray &bytes, int offset)
{
    return qFromLittleEndian<Integer>(bytes.constData() + offset);
}

/// Finds its way through the sectors of one file.
class Sectors {
public:
    Sectors(QIODevice &device, const QByteArray &header, int shift)
        : m_device(device)
        , m_header(header)
        , m_size(1 << shift)
    {
    }

    /// A whole sector, or nothing where the file is too short; the marks that end a chain of
    /// sectors are numbers beyond any file.
    QByteArray read(quint32 sector)
    {
        // The header takes the place of a first sector, so sector 0 is the second one.
        const qint64 offset = (static_cast<qint64>(sector) + 1) * m_size;
        if (offset + m_size > m_device.size() || !m_device.seek(offset))
            return QByteArray();
        const QByteArray bytes = m_device.read(m_size);
        return bytes.size() == m_size ? bytes : QByteArray();
    }

    /// The sector that follows in the same chain.
    std::optional<quint32> next(quint32 sector)
    {
        const quint32 perSector = static_cast<quint32>(m_size) / 4;
        const std::optional<quint32> table = allocationSector(sector / perSector);
        if (!table)
            return std::nullopt;
        if (m_tableSector != *table) {
            m_table = read(*table);
            m_tableSector = *table;
        }
        if (m_table.isEmpty())
            return std::nullopt;
        return number<quint32>(m_table, static_cast<int>(sector % perSector) * 4);
    }

private:
    /// Where the index-th sector of the allocation table lies: the header knows the first ones, a
    /// chain of sectors of its own the others.
    std::optional<quint32> allocationSector(quint32 index)
    {
        if (index < headerDifatCount)
            return number<quint32>(m_header, headerDifatOffset + static_cast<int>(index) * 4);
        const quint32 perSector = static_cast<quint32>(m_size) / 4 - 1;
        const quint32 position = index - headerDifatCount;
        if (position / perSector >= maximalDifatSectors)
            return std::nullopt;
        quint32 sector = number<quint32>(m_header, firstDifatSectorOffset);
        for (quint32 step = position / perSector; step > 0; --step) {
            const QByteArray bytes = read(sector);
            if (bytes.isEmpty())
                return std::nullopt;
            sector = number<quint32>(bytes, static_cast<int>(perSector) * 4);
        }
        const QByteArray bytes = read(sector);
        if (bytes.isEmpty())
            return std::nullopt;
        return number<quint32>(bytes, static_cast<int>(position % perSector) * 4);
    }

    QIODevice &m_device;
    const QByteArray m_header;
    const int m_size;
    QByteArray m_table; ///< the sector of the allocation table that was read last
    std::optional<quint32> m_tableSector;
};

QString entryName(const QByteArray &sector, int offset)
{
    const char type = sector.at(offset + typeOffset);
    if (type != storageType && type != streamType)
        return QString();
    // In bytes, the closing zero included.
    const int length = qMin<int>(number<quint16>(sector, offset + nameLengthOffset), nameBytes);
    QString name;
    for (int at = 0; at + 2 < length; at += 2)
        name += QChar(number<quint16>(sector, offset + at));
    return name;
}

} // namespace

const QByteArray &CompoundFile::signature()
{
    static const QByteArray bytes("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    return bytes;
}

QStringList CompoundFile::entryNames(QIODevice &device)
{
    QStringList names;
    if (!device.seek(0))
        return names;
    const QByteArray header = device.read(headerSize);
    if (header.size() != headerSize || !header.startsWith(signature()))
        return names;
    const int shift = number<quint16>(header, sectorShiftOffset);
    if (shift != 9 && shift != 12)
        return names;

    Sectors sectors(device, header, shift);
    std::optional<quint32> sector = number<quint32>(header, firstDirectorySectorOffset);
    for (int count = 0; sector && count < maximalDirectorySectors; ++count) {
        const QByteArray bytes = sectors.read(*sector);
        if (bytes.isEmpty())
            break;
        for (int offset = 0; offset < bytes.size(); offset += entrySize) {
            const QString name = entryName(bytes, offset);
            if (!name.isEmpty())
                names << name;
        }
        sector = sectors.next(*sector);
    }
    return names;
}

} // namespace tnhost
