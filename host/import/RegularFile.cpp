#include "host/import/RegularFile.h"

#include <QtCore/QFile>

#include <algorithm>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace tnhost {

namespace {

constexpr qint64 pieceSize = 1 << 18; // stays in the processor's cache

} // namespace

RegularFile::RegularFile(const QString &path)
    : m_file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
{
    if (m_file < 0 || (::fstat(m_file, &m_facts) == 0 && S_ISREG(m_facts.st_mode)))
        return;
    ::close(m_file);
    m_file = -1;
}

RegularFile::~RegularFile()
{
    if (m_file >= 0)
        ::close(m_file);
}

bool RegularFile::read(qint64 offset, qint64 size,
                       const std::function<bool(const char *, qint64)> &take) const
{
    std::vector<char> piece(static_cast<std::size_t>(std::min(pieceSize, size)));
    while (size > 0) {
        const ssize_t count = ::pread(m_file, piece.data(),
                                      static_cast<std::size_t>(std::min(pieceSize, size)), offset);
        if (count <= 0 || !take(piece.data(), count))
            return false;
        offset += count;
        size -= count;
    }
    return true;
}

QByteArray RegularFile::read(qint64 offset, qint64 size) const
{
    QByteArray bytes;
    const bool isWhole = read(offset, size, [&bytes](const char *piece, qint64 count) {
        bytes.append(piece, static_cast<int>(count));
        return true;
    });
    return isWhole ? bytes : QByteArray();
}

} // namespace tnhost
